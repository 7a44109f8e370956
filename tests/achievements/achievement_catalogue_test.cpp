#include "achievements/achievement_catalogue.h"
#include "linux/system/absent_services.h"
#include "support/fake_locale.h"
#include "support/fake_zone.h"

#include <doctest/doctest.h>

#include <map>

namespace pedvar {
namespace {

using Key = Achievement::Key;

/// Titles in capitals, as a translation would replace them; sentences keep their places.
class Shouting : public TextCatalogue {
public:
    std::string text(std::string_view english) const override {
        if (english == "Walk {} in a day") return "{} AN EINEM TAG GEHEN";
        return std::string(english);
    }
};

struct Wording {
    Wording() { locale.system = MeasurementSystem::metric; }

    Achievement badge(Key key, std::int64_t progress = 0) const {
        Achievement found = catalogue().at(caseIndex(key));
        found.progress = progress;
        return found;
    }

    FakeZone zone{std::chrono::hours(1)};
    FakeLocale locale{zone};  // writes 1.234,5
    EnglishTexts english;
    AchievementTexts texts{english, locale};
};

TEST_CASE_FIXTURE(Wording, "the catalogue has 39 locked badges in the order of their keys, built anew alike") {
    const auto badges = catalogue();
    CHECK(badges.size() == 39);
    CHECK(badges == catalogue());
    std::map<std::string, int> uses;
    for (std::size_t i = 0; i < badges.size(); ++i) {
        CHECK(caseIndex(badges[i].key) == i);
        CHECK(!badges[i].isUnlocked);
        CHECK(!badges[i].unlockedDate);
        CHECK(badges[i].progress == 0);
        ++uses[badges[i].icon];
    }
    CHECK(uses.size() == 38);
    CHECK(uses["bolt.circle.fill"] == 2);
    const auto document = encodeJson(badge(Key::marathonMaster));
    CHECK(document ==
          "{\"key\":\"marathonMaster\",\"icon\":\"trophy.fill\",\"color\":{\"red\":1,\"green\":0.84,\"blue\":0,"
          "\"opacity\":1},\"category\":\"distance\",\"requirement\":42195,\"isUnlocked\":false,\"progress\":0}");
}

TEST_CASE_FIXTURE(Wording, "badges are worded in the person's unit, region and language") {
    using enum DistanceUnit;
    CHECK(texts.title(Key::explorer30K) == "30K Explorer");
    CHECK(texts.categoryTitle(Achievement::AchievementCategory::streaks) == "Streaks");
    CHECK(texts.description(badge(Key::halfMarathon), miles) == "Walk 13,1 mi in a day");
    CHECK(texts.description(badge(Key::marathonMaster), kilometers) == "Walk 42,2 km in a day");
    CHECK(texts.description(badge(Key::legend100K), kilometers) == "Walk 100 km in a day - Legendary!");
    CHECK(texts.description(badge(Key::centuryClub), miles) == "Take 100,000 steps in a week");
    CHECK(texts.formatDistance(5000, kilometers) == "5");
    CHECK(texts.formatDistance(5000, miles) == "3,1");

    CHECK(texts.remainingText(badge(Key::stepUp, 6000), miles) == "0 more to unlock");
    CHECK(texts.remainingText(badge(Key::stepUp, 1), miles) == "4.999 more to unlock");
    CHECK(texts.remainingText(badge(Key::walker5K, 900), kilometers) == "4,1 km more to unlock");

    using Reached = std::optional<std::pair<std::string, std::string>>;
    CHECK(texts.reachedValueText(badge(Key::consistencyKing, 3), miles) == Reached({"3", "Days"}));
    CHECK(texts.reachedValueText(badge(Key::centuryClub, 3), miles) == Reached({"3", "Steps"}));
    CHECK(texts.reachedValueText(badge(Key::yearWarrior, 1), miles) == Reached({"1", "Days"}));
    CHECK(texts.reachedValueText(badge(Key::walker5K, 2500), kilometers) == Reached({"2,5 km", "Distance"}));
    CHECK(!texts.reachedValueText(badge(Key::firstSteps, 0), miles));

    const Shouting shouting;
    CHECK(AchievementTexts(shouting, locale).description(badge(Key::walker5K), kilometers) ==
          "5 km AN EINEM TAG GEHEN");
}

}  // namespace
}  // namespace pedvar
