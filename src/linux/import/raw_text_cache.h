/// Remembering how raw texts were understood.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace pedvar {

/// What pairs of raw texts mean. Neighbours in an export share their texts, so the usual look-up is a comparison
/// with the pairs found last.
template <class Meaning>
class RawTextCache {
public:
    /// What `understand()` gave when the pair was met first. Stays valid until the next call.
    template <class Understand>
    Meaning& find(std::string_view first, std::string_view second, Understand understand) {
        for (const Recent& recent : recent_) {
            if (recent.meaning != nullptr && recent.first == first && recent.second == second)
                return *recent.meaning;
        }
        std::string key;
        key.append(first).append(1, '\0').append(second);
        auto found = meanings_.find(key);
        if (found == meanings_.end()) {
            if (meanings_.size() == mostPairs) {
                meanings_.clear();
                recent_.fill({});
            }
            found = meanings_.emplace(std::move(key), understand()).first;
        }
        const std::string_view kept = found->first;
        recent_[next_] = {kept.substr(0, first.size()), kept.substr(first.size() + 1), &found->second};
        next_ = (next_ + 1) % recent_.size();
        return found->second;
    }

private:
    struct Recent {
        std::string_view first;
        std::string_view second;
        Meaning* meaning = nullptr;
    };
    static constexpr std::size_t mostPairs = 4096;  // real devices make a few hundred; then it begins anew

    std::unordered_map<std::string, Meaning> meanings_;
    std::array<Recent, 4> recent_{};  // a phone, a watch, and who else writes between them
    std::size_t next_ = 0;
};

}  // namespace pedvar
