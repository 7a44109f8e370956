#include "linux/health_store_fixture.h"

#include <atomic>
#include <chrono>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

struct Queries : HealthStoreFixture {
    std::vector<std::int64_t> starts(HKSampleSort sort, std::size_t limit = 0,
                                     HKPredicate predicate = {at(-day), at(9 * day)}) {
        const auto found =
            answerTo<std::vector<HKQuantitySample>>([&](HKHandler<std::vector<HKQuantitySample>> handler) {
                store.execute(HKSampleQuery{
                    {HKQuantityTypeIdentifierStepCount}, predicate, limit, sort, std::move(handler)});
            });
        REQUIRE(found);
        std::vector<std::int64_t> starts;
        for (const HKQuantitySample& each : *found) {
            starts.push_back(static_cast<std::int64_t>(each.start.time_since_epoch().count()));
        }
        return starts;
    }

    HKAuthorizationRequestStatus status() {
        return *answerTo<HKAuthorizationRequestStatus>([&](HKHandler<HKAuthorizationRequestStatus> handler) {
            store.getRequestStatusForAuthorization({}, std::move(handler));
        });
    }

    HKResult<void> save(std::vector<HKQuantitySample> samples) {
        return answerTo<void>(
            [&](HKHandler<void> handler) { store.save(std::move(samples), std::move(handler)); });
    }
};

TEST_CASE_FIXTURE(Queries, "hours and days follow the clock where it is changed") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    std::vector<TestSample> samples;  // one step in each quarter hour
    for (std::int64_t start = 0; start < 4 * day; start += 15 * minute) samples.push_back({phone, start, 60, 1});
    add(samples);
    REQUIRE(writer.refreshTotals());
    // An hour ahead of UTC; forward at 01:00 UTC of the second day, back at 01:00 UTC of the third.
    const FakeZone changing(60min, {{at(day + hour), 120min}, {at(2 * day + hour), 60min}});
    SqliteHealthStore asked(time, database, changing);

    const Date shortDay = at(day - hour), longDay = at(2 * day - 2 * hour), nextDay = at(3 * day - hour);
    CHECK(collection(asked, shortDay, nextDay, {.day = 1}) == std::vector<double>{23 * 4, 25 * 4});
    const auto shortHours = collection(asked, shortDay, longDay, {.hour = 1});
    REQUIRE(shortHours.size() == 24);
    CHECK(std::isnan(shortHours[2]));
    CHECK(std::ranges::count(shortHours, 4) == 23);
    const auto longHours = collection(asked, longDay, nextDay, {.hour = 1});
    REQUIRE(longHours.size() == 24);
    CHECK(longHours[2] == 8);
    CHECK(std::ranges::count(longHours, 4) == 23);

    // Midnight does not exist on the second day: its first hour is empty.
    const FakeZone withoutMidnight(0min, {{at(day), 60min}});
    SqliteHealthStore other(time, database, withoutMidnight);
    const auto hours = collection(other, at(day), at(day + 3 * hour), {.hour = 1});
    REQUIRE(hours.size() == 4);
    CHECK(std::isnan(hours[0]));
    CHECK(hours[3] == 4);
}

TEST_CASE_FIXTURE(Queries, "a zone that is minutes off the quarter hours cuts them") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    add({{phone, day - 19 * minute, 60, 1},
         {phone, day - 21 * minute, 4 * minute, 40},
         {watch, day - 18 * minute, 60, 2}});
    REQUIRE(writer.refreshTotals());
    const FakeZone old(20min);  // midnight is at 23:40 UTC
    SqliteHealthStore asked(time, database, old);
    CHECK(collection(asked, at(-20 * minute), at(2 * day - 20 * minute), {.day = 1}) ==
          std::vector<double>{30, 3});
    CHECK(collection(asked, at(-20 * minute), at(day - 18 * minute), {.day = 1}) == std::vector<double>{30, 1});

    // What hides the first half of a quarter hour began on the day before.
    add({{watch, 2 * day - 2 * hour, 130 * minute, 5},
         {phone, 2 * day + 60, 60, 7},
         {phone, 2 * day + 720, 60, 1}});
    REQUIRE(writer.refreshTotals());
    CHECK(sum(2 * day, 2 * day + 5 * minute) == 0);
}

TEST_CASE_FIXTURE(Queries, "collections without whole intervals or with too many are refused") {
    for (const DateComponents step :
         {DateComponents{}, DateComponents{.day = 1, .hour = 1}, DateComponents{.day = -1}}) {
        const auto found = answerTo<std::vector<HKStatistics>>([&](HKHandler<std::vector<HKStatistics>> handler) {
            store.execute(HKStatisticsCollectionQuery{{}, {}, {}, {}, step, std::move(handler)});
        });
        CHECK(!found);
    }
    const auto endless = answerTo<std::vector<HKStatistics>>([&](HKHandler<std::vector<HKStatistics>> handler) {
        const HKPredicate always{at(0), at(std::int64_t{1} << 40)};
        store.execute(HKStatisticsCollectionQuery{{}, always, {}, at(0), {.hour = 1}, std::move(handler)});
    });
    CHECK(!endless);
}

TEST_CASE_FIXTURE(Queries, "samples come sorted, limited and as the predicate asks") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    add({{phone, 10, 5, 1}, {phone, 20, 1000, 1}, {watch, 30, 5, 1}, {phone, 40, 0, 1}, {phone, 50, 40, 1}});
    using enum HKSampleSort;
    CHECK(starts(none, 1).size() == 1);
    CHECK(starts(startDateAscending) == std::vector<std::int64_t>{10, 20, 30, 40, 50});
    CHECK(starts(startDateDescending, 2) == std::vector<std::int64_t>{50, 40});
    CHECK(starts(endDateAscending) == std::vector<std::int64_t>{10, 30, 40, 50, 20});
    CHECK(starts(endDateAscending, 2) == std::vector<std::int64_t>{10, 30});
    CHECK(starts(endDateDescending, 1) == std::vector<std::int64_t>{20});
    CHECK(starts(endDateDescending, 3) == std::vector<std::int64_t>{20, 50, 40});
    CHECK(starts(endDateDescending, 9) == std::vector<std::int64_t>{20, 50, 40, 30, 10});
    CHECK(starts(startDateAscending, 0, {at(30), at(50)}) == std::vector<std::int64_t>{20, 30, 40});
    CHECK(starts(startDateAscending, 0, {at(15), at(15)}).empty());
    CHECK(starts(startDateAscending, 0, {at(30), at(50), HKQueryOptions::strictStartDate}) ==
          std::vector<std::int64_t>{30, 40});
    CHECK(starts(endDateDescending, 1, {at(0), at(90), {}, {{.id = watch, .name = ""}}}) ==
          std::vector<std::int64_t>{30});
    CHECK(*administration.newestSample(HKQuantityTypeIdentifierStepCount) == at(1020));
    CHECK(!*administration.newestSample(HKQuantityTypeIdentifierHeartRate));
}

TEST_CASE_FIXTURE(Queries, "a sum is split by source, and can be asked of some sources or of all that overlaps") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    source(SourceKind::band, "Unused");
    add({{phone, 0, 600, 100}, {watch, 300, 600, 60}, {phone, -60, 120, 8}, {phone, -hour, 30 * hour, 3000}});
    const HKPredicate wholeDay{at(0), at(day), HKQueryOptions::strictStartDate};
    using enum HKStatisticsOptions;
    const auto split = statistics(wholeDay, cumulativeSum | separateBySource);
    REQUIRE(split->sumBySource.size() == 2);
    CHECK(split->sumBySource[0].first == HKSource{watch, "Watch", false});
    CHECK(split->sumBySource[0].second.doubleValue(HKUnit::count()) == 60);
    CHECK(split->sumBySource[1].second.doubleValue(HKUnit::count()) == 50);
    CHECK(split->sumQuantity()->doubleValue(HKUnit::count()) == 110);

    HKPredicate ofPhone = wholeDay;
    ofPhone.sources = {{.id = phone, .name = ""}};
    CHECK(statistics(ofPhone, cumulativeSum)->sum->doubleValue(HKUnit::count()) == 100);
    const HKPredicate overlapping{at(0), at(day)};
    const double rest = 3000 * (30. * hour - 960) / (30. * hour);  // of the long sample, covered for 960 s
    CHECK(statistics(overlapping, cumulativeSum)->sum->doubleValue(HKUnit::count()) ==
          doctest::Approx(118 + rest));
}

TEST_CASE_FIXTURE(Queries, "quantities that do not add up have an average and no sum") {
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    REQUIRE(writer.write(rows({{watch, 0, 0, 60}, {watch, 10, 0, 90}, {watch, 20, 0, 75}, {watch, day, 0, 1}},
                              HKQuantityTypeIdentifierHeartRate, "count/min")));
    const HKPredicate firstDay{at(0), at(day), HKQueryOptions::strictStartDate};
    const auto heart =
        statistics(firstDay, HKStatisticsOptions::discreteAverage, HKQuantityTypeIdentifierHeartRate);
    CHECK(heart->average->doubleValue(HKUnit::countPerMinute()) == 75);
    CHECK(heart->minimum->doubleValue(HKUnit::countPerMinute()) == 60);
    CHECK(heart->maximum->doubleValue(HKUnit::countPerMinute()) == 90);
    CHECK(!heart->sum);
    CHECK(!statistics(firstDay, HKStatisticsOptions::cumulativeSum, HKQuantityTypeIdentifierHeartRate));
}

TEST_CASE_FIXTURE(Queries, "a store that is not there is empty until something is saved") {
    CHECK(status() == HKAuthorizationRequestStatus::shouldRequest);
    CHECK(!sum(0, day));
    CHECK(starts(HKSampleSort::none).empty());
    CHECK(!*database.verify());
    CHECK(!std::filesystem::exists(database.path()));

    int tellings = 0;
    const auto onSteps = store.observeNewSamples({HKQuantityTypeIdentifierStepCount}, [&] { ++tellings; });
    const auto onHeart = store.observeNewSamples({HKQuantityTypeIdentifierHeartRate}, [&] { tellings += 100; });
    const HKQuantitySample steps{{HKQuantityTypeIdentifierStepCount}, {HKUnit::count(), 42}, at(10), at(20)};
    const HKQuantitySample height{{HKQuantityTypeIdentifierHeight}, {HKUnit::centimeter(), 180}, at(10), at(10)};
    REQUIRE(save({steps, height}));
    CHECK(tellings == 0);
    time.settle();
    CHECK(tellings == 1);
    CHECK(status() == HKAuthorizationRequestStatus::unnecessary);
    CHECK(sum(0, day) == 42);

    const auto found =
        answerTo<std::vector<HKQuantitySample>>([&](HKHandler<std::vector<HKQuantitySample>> handler) {
            store.execute(HKSampleQuery{{HKQuantityTypeIdentifierHeight},
                                        {at(0), at(day)},
                                        1,
                                        HKSampleSort::endDateDescending,
                                        std::move(handler)});
        });
    CHECK(found->at(0).quantity.doubleValue(HKUnit::centimeter()) == doctest::Approx(180));
    CHECK(found->at(0).source.isOwn);

    REQUIRE(save({steps}));  // once more
    time.settle();
    CHECK(tellings == 1);
    CHECK(sum(0, day) == 42);
}

TEST_CASE_FIXTURE(Queries, "one sample that is none keeps all from being stored") {
    const HKQuantitySample sound{{HKQuantityTypeIdentifierStepCount}, {HKUnit::count(), 1}, at(0), at(1)};
    const HKQuantitySample endless{{HKQuantityTypeIdentifierStepCount},
                                   {HKUnit::count(), std::numeric_limits<double>::infinity()},
                                   at(0),
                                   at(1)};
    const HKQuantitySample backwards{{HKQuantityTypeIdentifierStepCount}, {HKUnit::count(), 1}, at(1), at(0)};
    CHECK(!save({sound, endless}));
    CHECK(!save({sound, backwards}));
    CHECK(!sum(0, day));
}

TEST_CASE_FIXTURE(Queries, "readers go on while another connection writes, and see what was committed") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    add({{phone, 0, 60, 10}});
    CHECK(sum(0, day) == 10);
    auto other = database.connectForWriting();
    {
        Transaction transaction(*other, Transaction::Kind::write);
        other->run(
            "INSERT INTO samples (series, start, duration, source, value) SELECT series, 120000, 60000, source, 5 "
            "FROM samples");
        CHECK(sum(0, day) == 10);
        transaction.commit();
    }
    CHECK(sum(0, day) == 15);
}

TEST_CASE_FIXTURE(Queries, "what was asked is answered before the store ends") {
    std::atomic<int> answers = 0;
    {
        SqliteHealthStore ending(time, database, zone, {}, 3);
        for (int i = 0; i < 50; ++i) {
            ending.execute(HKStatisticsQuery{{}, {}, {}, [&](const HKResult<HKStatistics>&) { ++answers; }});
        }
    }
    CHECK(answers == 50);
}

}  // namespace
}  // namespace pedvar
