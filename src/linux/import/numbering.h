/// Numbers for things that are named again and again.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace pedvar {

/// Gives equal things equal numbers, from 0 on.
template <class Thing>
class Numbering {
public:
    /// The number of `thing`, which is appended to `fresh` when it is new. None when there are more things than
    /// any document has.
    std::optional<std::int32_t> number(const Thing& thing, std::vector<Thing>& fresh) {
        if (const auto found = numbers_.find(thing); found != numbers_.end()) return found->second;
        if (numbers_.size() == most) return std::nullopt;
        fresh.push_back(thing);
        return numbers_.emplace(thing, static_cast<std::int32_t>(numbers_.size())).first->second;
    }

private:
    static constexpr std::size_t most = 5000;  // keeps memory bounded; phones name a few hundred

    std::map<Thing, std::int32_t> numbers_;
};

}  // namespace pedvar
