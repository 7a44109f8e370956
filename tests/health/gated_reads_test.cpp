#include "health/gated_reads.h"

#include "support/fake_health_store.h"
#include "support/fake_log.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

const HKQuantityType steps{HKQuantityTypeIdentifierStepCount};
const HKError locked{"com.example.health", 6, "The store is locked"};
const std::string failedLine =
    "HKDiag/error: HKDiag read FAILED HKQuantityTypeIdentifierStepCount com.example.health/6: The store is locked "
    "- "
    "identical failures suppressed for the rest of this launch";
const std::string gaveUpLine =
    "HKDiag/error: HKDiag read GAVE UP after 3 attempts HKQuantityTypeIdentifierStepCount - caller substitutes 0; "
    "further give-ups for this type suppressed this launch";

double sumOf(const HKStatistics& statistics) {
    return statistics.sum ? statistics.sum->doubleValue(HKUnit::count()) : 0;
}

struct Reads {
    VirtualTime time;
    FakeZone zone{0min};
    FakeHealthStore store{zone};
    FakeLog log;
    HealthDiagnostics diagnostics{log};
    GatedReads reads{time, store, diagnostics};
    std::vector<std::optional<double>> results;
    TaskScope scope{time};

    CancellableTask read() { return scope.spawn(fetch()); }

private:
    Task<> fetch() {
        const HKPredicate predicate{Date{}, Date{24h}};
        const auto result = co_await reads.fetchGatedStatistics(
            steps, predicate, HKStatisticsOptions::cumulativeSum, QueryPriority::normal, sumOf);
        results.push_back(result);
    }
};

}  // namespace

TEST_CASE_FIXTURE(Reads, "a failed read is tried three times, 200 ms apart, then gives up") {
    store.failures.emplace(steps.identifier, locked);
    read();
    time.settle();
    CHECK(store.asked.size() == 1);
    CHECK(reads.activeQueryCount() == 0);  // the pause holds no slot
    time.advance(199ms);
    CHECK(store.asked.size() == 1);
    time.advance(1ms);
    CHECK(store.asked.size() == 2);
    time.advance(200ms);
    CHECK(store.asked.size() == 3);
    CHECK(results == std::vector<std::optional<double>>{std::nullopt});
    CHECK(log.lines == std::vector<std::string>{failedLine, gaveUpLine});
}

TEST_CASE_FIXTURE(Reads, "failures are logged once per type, domain and code, give-ups once per type") {
    store.failures.emplace(steps.identifier, locked);
    for (int day = 0; day < 3; ++day) read();
    time.advance(1s);
    store.failures.at(steps.identifier).code = 7;
    read();
    time.advance(1s);
    CHECK(results.size() == 4);
    std::string otherLine = failedLine;
    otherLine.replace(otherLine.find("/6:"), 3, "/7:");
    CHECK(log.lines == std::vector{failedLine, gaveUpLine, otherLine});
}

TEST_CASE_FIXTURE(Reads, "a read that succeeds in its last attempt has its value") {
    store.addSteps(42, Date{1h});
    store.failures.emplace(steps.identifier, locked);
    read();
    time.advance(399ms);
    store.failures.clear();
    time.advance(1ms);
    CHECK(results == std::vector<std::optional<double>>{42});
    CHECK(log.lines == std::vector<std::string>{failedLine});
}

TEST_CASE_FIXTURE(Reads, "a retry queues behind those who came meanwhile") {
    store.isHolding = true;
    store.failures.emplace(steps.identifier, locked);
    for (int i = 0; i < 7; ++i) read();
    time.settle();
    CHECK(store.running() == 6);
    store.answer();
    time.settle();
    CHECK(store.running() == 6);  // the slot went to the seventh
    time.advance(1s);
    CHECK(store.running() == 6);  // the first one waits for its second attempt
    store.answer();
    time.settle();
    CHECK(store.asked.size() == 8);
    CHECK(reads.activeQueryCount() == 6);
}

TEST_CASE_FIXTURE(Reads, "a cancelled read ends quietly with none, whether queued or in its pause") {
    store.isHolding = true;
    for (int i = 0; i < 6; ++i) read();
    auto queued = read();
    time.settle();
    queued.cancel();
    time.settle();
    CHECK(!queued.isFinished());  // it waits for its turn
    store.answer();
    time.settle();
    CHECK(queued.isFinished());
    CHECK(results.back() == std::nullopt);
    CHECK(store.asked.size() == 6);
    CHECK(reads.activeQueryCount() == 5);
    CHECK(log.lines.empty());

    store.failures.emplace(steps.identifier, locked);
    auto pausing = read();
    time.settle();
    store.answer(5);
    time.settle();
    read();  // all slots are taken, so that another attempt would have to wait
    time.settle();
    pausing.cancel();
    time.settle();
    CHECK(pausing.isFinished());
    CHECK(results.back() == std::nullopt);
    CHECK(log.lines == std::vector<std::string>{failedLine});
}

TEST_CASE_FIXTURE(Reads, "collections and samples are tried once") {
    store.failures.emplace(steps.identifier, locked);
    const HKPredicate day{Date{}, Date{24h}};
    CHECK(!time.run(reads.fetchCollection(steps, day, {.day = 1}, QueryPriority::normal)));
    CHECK(!time.run(reads.fetchSamples(steps, day, 1, HKSampleSort::none, QueryPriority::normal)));
    time.advance(1s);
    CHECK(store.asked.size() == 2);
    CHECK(log.lines == std::vector{failedLine});
}
