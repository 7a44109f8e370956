#include "recording/activity_type.h"

#include "core/reflection.h"

#include <iterator>

namespace pedvar {

namespace {

struct Traits {
    std::string_view displayName;
    std::string_view symbolName;
    int calorieFactor;  // kilocalories per kilometre
};

/// In the order of the cases.
// i18n: texts
constexpr Traits traits[] = {
    {"Walking", "figure.walk", 50},
    {"Running", "figure.run", 80},
    {"Hiking", "figure.hiking", 60},
    {"Cycling", "bicycle", 40},
};
// i18n: end
static_assert(std::size(traits) == caseNames<ActivityType>.size());

}  // namespace

std::string_view displayName(ActivityType type) {
    return traits[caseIndex(type)].displayName;
}
std::string_view symbolName(ActivityType type) {
    return traits[caseIndex(type)].symbolName;
}
int calorieFactor(ActivityType type) {
    return traits[caseIndex(type)].calorieFactor;
}

}  // namespace pedvar
