#include "recording/jump_watch.h"

#include <algorithm>
#include <cstddef>

namespace pedvar {

namespace {

constexpr std::size_t witnesses = 10;

}  // namespace

bool JumpWatch::agreesOnNewPlace(const EarthPosition& rejected) {
    rejected_.push_back(rejected);
    if (rejected_.size() > witnesses) rejected_.pop_front();
    if (rejected_.size() < witnesses) return false;
    return std::ranges::all_of(rejected_, [this](const EarthPosition& one) {
        return std::ranges::all_of(
            rejected_, [&](const EarthPosition& other) { return distance(one, other) <= jumpThreshold; });
    });
}

}  // namespace pedvar
