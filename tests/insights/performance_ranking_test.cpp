#include "insights/performance_ranking.h"

#include <doctest/doctest.h>

#include <limits>
#include <random>

using namespace pedvar;

namespace {

constexpr auto most = std::numeric_limits<std::int64_t>::max();

RankingTier tierAt(std::int64_t steps, std::int64_t age) {
    return tier(percentile(steps, age));
}

}  // namespace

TEST_CASE("percentiles change at the steps of the table, divided by the factor of the age") {
    const std::array<std::int64_t, 14> first{100,  500,  1000,   1500,   2500,   4000,   5500,
                                             7000, 8500, 10'000, 12'000, 14'000, 16'000, 20'000};
    const std::array percentiles{1, 3, 6, 10, 20, 35, 50, 62, 72, 80, 87, 92, 95, 97, 99};
    for (std::size_t i = 0; i < first.size(); ++i) {
        CHECK(percentile(first[i] - 1, 40) == percentiles[i]);
        CHECK(percentile(first[i], 40) == percentiles[i + 1]);
    }
    CHECK(percentile(most, 40) == 99);
    CHECK(percentile(-most, 40) == 1);
    CHECK(percentile(10'000, 25) == 80);
    CHECK(percentile(20'000, 25) == 97);
    CHECK(percentile(10'000, 70) == 92);
    for (const int lowest : {99, 95, 85, 70, 40, 20}) CHECK(tier(lowest) < tier(lowest - 1));
}

TEST_CASE("each tier's threshold reaches its tier at every age, one step less does not") {
    for (std::int64_t age = -1; age <= 130; ++age) {
        REQUIRE(ageFactor(age) == (age < 0 ? 1 : age < 30 ? 1.1 : age < 50 ? 1 : age < 65 ? 0.9 : 0.8));
        for (auto tier = std::optional(RankingTier::belowAverage); tier; tier = nextTier(*tier)) {
            REQUIRE(tierAt(threshold(*tier, age), age) == tier);
            REQUIRE(tierAt(threshold(*tier, age) - 1, age) > tier);
        }
    }
}

TEST_CASE("percentile and tier never fall when steps rise") {
    std::mt19937_64 random(85);
    for (int round = 0; round < 20'000; ++round) {
        const auto age = static_cast<std::int64_t>(random() % 120);
        const auto fewer = static_cast<std::int64_t>(random() % 26'000);
        const auto more = fewer + static_cast<std::int64_t>(random() % (round % 2 == 0 ? 3 : 9000));
        REQUIRE(percentile(fewer, age) <= percentile(more, age));
        REQUIRE(tierAt(fewer, age) >= tierAt(more, age));
    }
}

TEST_CASE("a ranking holds what the card shows") {
    CHECK(performanceRanking(10'000, 25) == PerformanceRanking{10'000,
                                                               25,
                                                               1.1,
                                                               80,
                                                               20,
                                                               RankingTier::aboveAverage,
                                                               RankingTier::excellent,
                                                               1000,
                                                               10'000 / 11'000.0,
                                                               {22'000, 15'400, 11'000, 7700, 4400, 1650, 0}});
    const PerformanceRanking top = performanceRanking(16'000, 70);
    CHECK(!top.nextTier);
    CHECK(!top.stepsToGo);
    CHECK(top.progress == 1);
    const PerformanceRanking none = performanceRanking(-most - 1, rankingAge({}));
    CHECK(none.topPercent == 99);
    CHECK(none.stepsToGo == 1500);
    CHECK(none.progress == 0);
    CHECK(progress(5, 0) == 0);
    CHECK(progress(5, 4) == 1);
}
