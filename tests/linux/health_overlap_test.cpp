#include "linux/health_store_fixture.h"

namespace pedvar {
namespace {

/// Sources that join in this order of priority.
struct Overlap : HealthStoreFixture {
    std::int32_t watch = source(SourceKind::watch, "Watch");
    std::int32_t phone = source(SourceKind::phone, "Phone");
    std::int32_t ring = source(SourceKind::application, "Ring");
    std::int32_t typed = source(SourceKind::handTyped, "Phone");
    std::vector<std::int32_t> order{watch, phone, ring, typed};

    /// Checks the sum of [from, to) while totals are stale and when they are made.
    void checkSum(const std::vector<TestSample>& samples, std::int64_t from, std::int64_t to, double expected) {
        CHECK(SlowCount(samples, order).sum(from, to).value_or(0) == doctest::Approx(expected));
        CHECK(sum(from, to).value_or(0) == doctest::Approx(expected));
        REQUIRE(writer.refreshTotals());
        CHECK(sum(from, to).value_or(0) == doctest::Approx(expected));
    }
};

TEST_CASE_FIXTURE(Overlap, "sources that overlap count once") {
    struct Case {
        const char* name;
        std::vector<TestSample> samples;
        double daySum;
    };
    std::vector<Case> cases{
        {"the watch covers all", {{phone, 100, 600, 100}, {watch, 0, 900, 120}}, 120},
        {"equal times", {{phone, 0, 600, 100}, {watch, 0, 600, 120}}, 120},
        {"half is covered", {{phone, 0, 600, 100}, {watch, 300, 600, 60}}, 110},
        {"the middle is covered",
         {{phone, 0, 600, 100}, {watch, 200, 100, 10}, {watch, 400, 100, 10}},
         20 + 400. / 6},
        {"an uncovered moment between two", {{phone, 0, 601, 601}, {watch, 0, 300, 1}, {watch, 301, 300, 1}}, 3},
        {"a third source fills what two leave",
         {{watch, 0, 300, 1}, {phone, 200, 200, 10}, {ring, 0, 500, 500}},
         106},
        {"one source overlaps itself", {{watch, 0, 600, 10}, {watch, 300, 600, 20}, {phone, 0, 900, 99}}, 30},
        {"a zero hides", {{watch, 0, 600, 0}, {phone, 0, 600, 50}}, 0},
        {"an instant within, at the start and at the end",
         {{watch, 300, 600, 5}, {phone, 500, 0, 10}, {phone, 300, 0, 100}, {phone, 900, 0, 1000}},
         1005},
        {"an instant hides nothing", {{watch, 300, 0, 5}, {phone, 0, 600, 10}, {phone, 300, 0, 20}}, 35},
        {"typed by hand is hidden by all", {{typed, 0, 600, 1000}, {ring, 0, 300, 10}}, 510},
        {"a summary of the day fills what is left",
         {{ring, 0, day, 8000}, {watch, 0, 4 * hour, 100}, {ring, 4 * hour, 2 * hour, 50}},
         150 + 6000},
        {"two summaries", {{ring, 0, 12 * hour, 1200}, {phone, 6 * hour, 18 * hour, 1800}}, 600 + 1800},
        {"a summary of days begins before another",
         {{phone, 0, 3 * day, 3000}, {watch, day - 2 * hour, 6 * hour, 60}, {ring, 20 * hour, 20 * hour, 40}},
         60 + 3000. * 66 / 72},
        {"before the first day of all",
         {{phone, -600, 1200, 100}, {watch, -300, 600, 1}, {watch, -day - 1, 0, 1000}},
         0},
    };
    std::int64_t base = 8000 * day;
    for (Case& each : cases) {
        CAPTURE(each.name);
        if (each.daySum == 0 && each.samples.back().start < 0) base = 0;  // moments are as they stand
        for (TestSample& sample : each.samples) sample.start += base;
        CHECK(add(each.samples) == static_cast<std::int64_t>(each.samples.size()));
        checkSum(each.samples, base, base + day, each.daySum);
        base += 10 * day;
    }
    CHECK(sum(-day, 0) == doctest::Approx(51));
    CHECK(sum(-2 * day, -day) == doctest::Approx(1000));
}

TEST_CASE_FIXTURE(Overlap, "the phone counts for the three hours in which the watch is off") {
    std::vector<TestSample> samples;
    for (std::int64_t start = 8 * hour; start < 20 * hour; start += 10 * minute) {
        if (start < 12 * hour || start >= 15 * hour) samples.push_back({watch, start, 10 * minute, 100});
        samples.push_back({phone, start, 10 * minute, 70});
    }
    add(samples);
    checkSum(samples, 0, day, 54 * 100 + 18 * 70);
    CHECK(sum(12 * hour, 13 * hour) == 420);
}

TEST_CASE_FIXTURE(Overlap, "a sample counts where it starts, also when midnight or a later sample cuts it") {
    const std::vector<TestSample> samples{
        {phone, day - 600, 1200, 100}, {watch, day + 6 * hour, 60, 1}, {watch, day, 600, 30}};
    add({samples[0]});
    REQUIRE(writer.refreshTotals());
    add({samples[1], samples[2]});
    checkSum(samples, 0, day, 50);
    checkSum(samples, day, 2 * day, 31);
}

TEST_CASE_FIXTURE(Overlap, "a summary of the day counts in days and in no shorter time") {
    add({{ring, 0, 24 * hour, 2400}, {watch, hour, hour, 10}});
    CHECK(sum(0, 22 * hour) == doctest::Approx(2310));
    CHECK(sum(0, 22 * hour - 1) == 10);
    CHECK(!sum(0, hour));
    const auto hours = collection(store, at(0), at(day), {.hour = 1});
    CHECK(std::ranges::count_if(hours, [](double each) { return !std::isnan(each); }) == 1);
    CHECK(collection(store, at(0), at(2 * day), {.day = 1}).front() == doctest::Approx(2310));
}

TEST_CASE_FIXTURE(Overlap, "no samples and samples of zero are told apart") {
    add({{watch, 0, 600, 0}});
    for (int pass = 0; pass < 2; ++pass) {
        CHECK(sum(0, day) == 0);
        CHECK(!sum(900, day));
        CHECK(!sum(-day, 0));
        REQUIRE(writer.refreshTotals());
    }
}

TEST_CASE_FIXTURE(Overlap, "the person's order decides, and new sources join those of their kind") {
    add({{watch, 0, 600, 100}, {phone, 0, 600, 70}});
    REQUIRE(writer.refreshTotals());
    REQUIRE(administration.setOrder(std::vector<std::string>{"Ring", "Phone (phone)"}));
    CHECK(sum(0, day) == 70);
    source(SourceKind::phone, "New phone");
    source(SourceKind::own, "Pedvar");
    std::vector<std::string> labels;
    const auto sources = administration.sources(HKQuantityTypeIdentifierStepCount);
    for (const SourceSummary& each : *sources) labels.push_back(each.label);
    CHECK(labels ==
          std::vector<std::string>{"Pedvar", "Ring", "Phone (phone)", "New phone", "Watch", "Phone (hand-typed)"});
}

}  // namespace
}  // namespace pedvar
