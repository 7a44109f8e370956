/// Documents in parts in memory.
#pragma once

#include "platform/document_parts.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

class FakeDocumentParts : public DocumentParts, private UserDefaults {
public:
    struct State {
        std::map<std::string, DefaultsValue, std::less<>> values;
        std::map<std::string, std::string, std::less<>> frames;
        std::map<std::string, std::map<std::int32_t, std::string>, std::less<>> lists;
        bool operator==(const State&) const = default;
    };
    State state;
    std::optional<DefaultsError> failure;  // of every write
    int writes = 0;
    std::size_t bytesOfLastWrite = 0;  // of the texts

    /// The whole document under a key; empty when there is none.
    std::string document(std::string_view key) const { return data(key).value_or(Data{}).bytes; }

    const UserDefaults& defaults() const override { return *this; }

    std::optional<std::string> frame(std::string_view key) const override {
        const auto found = state.frames.find(key);
        return found == state.frames.end() ? std::nullopt : std::optional(found->second);
    }

    std::vector<Part> list(std::string_view name) const override {
        std::vector<Part> parts;
        if (const auto found = state.lists.find(name); found != state.lists.end()) {
            for (const auto& [position, text] : found->second) parts.push_back({position, text});
        }
        return parts;
    }

    DefaultsResult write(const std::vector<PartsChange>& changes) override {
        if (failure) return std::unexpected(*failure);
        const State before = state;
        bytesOfLastWrite = 0;
        for (const PartsChange& change : changes) {
            const bool isMade = std::visit([this](const auto& made) { return make(made); }, change);
            if (isMade) continue;
            state = before;
            return std::unexpected(DefaultsError{"refused"});
        }
        ++writes;
        return {};
    }

private:
    std::optional<DefaultsValue> value(std::string_view key) const override {
        if (const auto found = frame(key)) {
            return Data{wholeDocument(*found, [this](std::string_view name) { return list(name); })};
        }
        const auto found = state.values.find(key);
        return found == state.values.end() ? std::nullopt : std::optional(found->second);
    }

    bool make(const SetFrame& change) {
        state.values.erase(change.key);
        state.frames.erase(change.key);
        if (change.frame) state.frames.emplace(change.key, *change.frame);
        bytesOfLastWrite += change.frame.value_or("").size();
        return true;
    }
    bool make(const AddPart& change) {
        auto& list = state.lists[change.list];
        const auto front = list.empty() ? 0 : list.begin()->first - 1;
        bytesOfLastWrite += change.text.size();
        return list.emplace(change.position.value_or(front), change.text).second;
    }
    bool make(const ReplacePart& change) {
        auto& list = state.lists[change.list];
        const auto found = list.find(change.position);
        if (found == list.end() || found->second != change.expected) return false;
        list.erase(found);
        return !change.replacement || list.emplace(change.position, *change.replacement).second;
    }
    bool make(const RemoveList& change) {
        state.lists.erase(change.list);
        return true;
    }
};

}  // namespace pedvar
