/// Defaults in memory.
#pragma once

#include "platform/user_defaults.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

class FakeDomain : public UserDefaults {
public:
    std::map<std::string, DefaultsValue, std::less<>> values;

    std::optional<DefaultsValue> value(std::string_view key) const override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
};

/// Says in `trace` what is written where, one entry a key: "shared todaySteps".
class FakeDefaults : public DefaultsDomains {
public:
    explicit FakeDefaults(std::vector<std::string>& trace) : trace_(trace) {}

    FakeDomain standardDomain, sharedDomain;
    bool isSharedOpen = true;
    std::optional<DefaultsError> failure;  // of every write
    int transactions = 0;

    const UserDefaults& standard() const override { return standardDomain; }
    const UserDefaults* shared() const override { return isSharedOpen ? &sharedDomain : nullptr; }

    DefaultsResult write(const std::vector<DefaultsChange>& changes) override {
        if (failure) return std::unexpected(*failure);
        ++transactions;
        for (const DefaultsChange& change : changes) {
            const bool isShared = change.store == &sharedDomain;
            trace_.push_back((isShared ? "shared " : "standard ") + change.key);
            auto& values = (isShared ? sharedDomain : standardDomain).values;
            values.erase(change.key);
            if (change.value) values.emplace(change.key, *change.value);
        }
        return {};
    }

    DefaultsResult update(const std::function<std::vector<DefaultsChange>()>& plan) override {
        return write(plan());
    }

    /// A JSON document of the standard store, as text.
    std::string document(std::string_view key) const { return standardDomain.data(key).value_or(Data{}).bytes; }
    void setDocument(std::string_view key, std::string text) {
        standardDomain.values.insert_or_assign(std::string(key), Data{std::move(text)});
    }

private:
    std::vector<std::string>& trace_;
};

}  // namespace pedvar
