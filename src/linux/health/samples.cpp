#include "linux/health/samples.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pedvar {
namespace {

constexpr std::array<std::string_view, 6> kindNames{"own", "watch", "band", "phone", "application", "hand-typed"};

constexpr double farthest = 1e15;  // milliseconds

}  // namespace

std::string_view nameOf(SourceKind kind) {
    return kindNames[static_cast<std::size_t>(kind)];
}

std::optional<SourceKind> sourceKindNamed(std::string_view name) {
    const auto found = std::ranges::find(kindNames, name);
    if (found == kindNames.end()) return std::nullopt;
    return static_cast<SourceKind>(found - kindNames.begin());
}

Milliseconds millisecondsOf(Date date) {
    return std::llround(std::clamp(date.time_since_epoch().count() * 1000, -farthest, farthest));
}

Date dateOfMilliseconds(Milliseconds milliseconds) {
    return Date{Seconds{static_cast<double>(milliseconds) / 1000}};
}

}  // namespace pedvar
