#include "platform/language_habits.h"

#include <algorithm>
#include <array>

namespace pedvar {
namespace {

struct Territory {
    std::string_view language;
    std::string_view name;
    LanguageHabits habits;
};

constexpr int sunday = 1;
constexpr int monday = 2;
constexpr LanguageHabits american{".", ",", true, sunday};
constexpr LanguageHabits british{".", ",", false, monday};
constexpr LanguageHabits southern{".", ",", false, sunday};
constexpr LanguageHabits german{",", ".", false, monday};
constexpr LanguageHabits swiss{".", "’", false, monday};

/// As the C library has them. The first one of a language holds for its territories that are not listed.
constexpr std::array territories = std::to_array<Territory>({
    {"en", "US", american},
    {"en", "CA", american},
    {"en", "HK", american},
    {"en", "IN", american},
    {"en", "PH", american},
    {"en", "GB", british},
    {"en", "IE", british},
    {"en", "NG", british},
    {"en", "AU", southern},
    {"en", "IL", southern},
    {"en", "NZ", southern},
    {"en", "SG", southern},
    {"en", "ZA", southern},
    {"en", "DK", german},
    {"de", "DE", german},
    {"de", "CH", swiss},
    {"de", "LI", swiss},
});

}  // namespace

std::optional<LanguageHabits> habitsOf(std::string_view language) {
    language = language.substr(0, language.find_first_of(".@"));
    const std::size_t end = std::min(language.find_first_of("_-"), language.size());
    const std::string_view territory = language.substr(std::min(end + 1, language.size()));
    language = language.substr(0, end);
    const auto isSpoken = [&](const Territory& each) { return each.language == language; };
    const auto isThere = [&](const Territory& each) { return isSpoken(each) && each.name == territory; };
    auto found = std::ranges::find_if(territories, isThere);
    if (found == territories.end()) found = std::ranges::find_if(territories, isSpoken);
    return found == territories.end() ? std::nullopt : std::optional(found->habits);
}

}  // namespace pedvar
