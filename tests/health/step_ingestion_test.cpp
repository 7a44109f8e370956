#include "health/step_ingestion.h"

#include "support/fake_defaults.h"
#include "support/fake_health_store.h"
#include "support/fake_locale.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;
using std::chrono::May;
using std::chrono::year;

namespace {

class FakeStepCounter : public StepCounter {
public:
    explicit FakeStepCounter(const VirtualTime& time) : time_(time) {}

    std::expected<StepReading, CMError> reading = StepReading{1'000, "first boot"};

    bool isAvailable() const override { return true; }
    CMAuthorizationStatus authorizationStatus() const override { return CMAuthorizationStatus::authorized; }
    std::expected<StepReading, CMError> read() override {
        auto answer = reading;
        if (answer) answer->age = time_.elapsed() - booted_;
        return answer;
    }
    /// The machine has been on for `age` by now.
    void reboot(std::int64_t steps, Seconds age) {
        reading = StepReading{steps, "second boot"};
        booted_ = time_.elapsed() - age;
    }

private:
    const VirtualTime& time_;
    Seconds booted_{-3600};
};

/// A watcher, which can be killed and started again, on the evening of 1 May in a zone two hours ahead.
class Watching {
public:
    Watching() { restart(); }

    void restart() {
        ingestion.reset();
        ingestion.emplace(time, time, locale, counter, store, defaults);
        ingestion->start();
        time.settle();
    }
    void steps(std::int64_t taken) { counter.reading->steps += taken; }
    /// Steps by day of the month, as a store counts them that keeps the same sample once.
    std::map<unsigned, double> stepsByDay() const {
        std::map<std::pair<Date, Date>, double> samples;
        for (const HKQuantitySample& sample : store.samples) {
            CHECK(sample.type.identifier == HKQuantityTypeIdentifierStepCount);
            samples[{sample.start, sample.end}] = sample.quantity.doubleValue(HKUnit::count());
        }
        std::map<unsigned, double> days;
        const Calendar calendar(zone, 2);
        for (const auto& [span, count] : samples) {
            const std::chrono::year_month_day day(calendar.day(span.first));
            days[static_cast<unsigned>(day.day())] += count;
        }
        return days;
    }

    using Days = std::map<unsigned, double>;

    VirtualTime time{utc(year(2026) / May / 1, 20h)};
    FakeZone zone{2h};
    FakeLocale locale{zone};
    FakeStepCounter counter{time};
    FakeHealthStore store{zone};
    std::vector<std::string> trace;
    FakeDefaults defaults{trace};
    std::optional<StepIngestion> ingestion;
};

}  // namespace

TEST_CASE_FIXTURE(Watching, "what the counter counts is stored for the time between two readings") {
    CHECK(store.samples.empty());
    steps(80);
    time.advance(60s);
    REQUIRE(store.samples.size() == 1);
    CHECK(store.samples[0].start == time.now() - 60s);
    CHECK(store.samples[0].end == time.now());
    time.advance(10min);
    CHECK(store.samples.size() == 1);
    steps(20);
    time.advance(60s);
    CHECK(stepsByDay() == Days{{1, 100}});
}

TEST_CASE_FIXTURE(Watching, "steps across midnight are shared by time, and none is lost in the sharing") {
    time.advance(119min);
    steps(10);
    restart();
    ingestion.reset();
    steps(101);
    time.advance(4min);
    restart();
    CHECK(stepsByDay() == Days{{1, 10 + 25}, {2, 76}});
    ingestion.reset();
    steps(7);
    time.advance(72h);
    restart();
    CHECK(stepsByDay()[2] + stepsByDay()[3] + stepsByDay()[4] + stepsByDay()[5] == 76 + 7);
}

TEST_CASE_FIXTURE(Watching, "more steps than anybody takes are set aside, and counting goes on behind them") {
    steps(301);
    time.advance(60s);
    CHECK(store.samples.empty());
    CHECK(defaults.document(stepIngestionKey).contains(R"("steps":301)"));
    steps(300);
    time.advance(60s);
    CHECK(stepsByDay() == Days{{1, 300}});
    counter.reading->steps = 4'000'000'000;
    time.advance(60s);
    counter.reading->steps = 1'700;  // and back, which looks like a counter that has begun anew
    time.advance(60s);
    steps(10);
    time.advance(60s);
    CHECK(stepsByDay() == Days{{1, 310}});
}

TEST_CASE_FIXTURE(Watching, "restarts count what came meanwhile once, and reboots what the new boot has counted") {
    steps(50);
    time.advance(60s);
    steps(30);
    restart();
    restart();
    CHECK(stepsByDay() == Days{{1, 80}});
    ingestion.reset();
    time.advance(3h);  // past midnight, before which the new boot has counted nothing
    SUBCASE("lower than before") {
        counter.reboot(40, 10min);
        restart();
        CHECK(stepsByDay() == Days{{1, 80}, {2, 40}});
    }
    SUBCASE("higher than before") {
        counter.reboot(5'000, 50min);
        restart();
        CHECK(stepsByDay() == Days{{1, 80}, {2, 5'000}});
    }
}

TEST_CASE_FIXTURE(Watching, "an end between the two stores neither loses nor doubles steps") {
    steps(50);
    SUBCASE("before the samples are stored") {
        store.writeError = HKError{"disk", 1, "no space left"};
        time.advance(60s);
        CHECK(ingestion->problem.value() == "no space left");
        store.writeError.reset();
    }
    SUBCASE("after they are stored, which nobody has noted") {
        time.advance(60s);
        CHECK(defaults.document(stepIngestionKey).contains(R"("pending":[{)"));
    }
    steps(5);
    time.advance(30s);
    restart();
    CHECK(stepsByDay() == Days{{1, 55}});
    CHECK(!ingestion->problem->has_value());
    time.advance(60s);
    CHECK(defaults.document(stepIngestionKey).contains(R"("pending":[])"));
}

TEST_CASE_FIXTURE(Watching, "nothing is stored that is not noted") {
    defaults.failure = DefaultsError{"read-only"};
    steps(50);
    time.advance(5min);
    CHECK(store.samples.empty());
    CHECK(ingestion->problem.value() == "read-only");
    SUBCASE("it is stored when it can be noted") {
        defaults.failure.reset();
        time.advance(60s);
    }
    SUBCASE("or when another process can") {
        defaults.failure.reset();
        restart();
    }
    CHECK(stepsByDay() == Days{{1, 50}});
}

TEST_CASE_FIXTURE(Watching, "a counter that cannot be read is named, and its steps count afterwards") {
    counter.reading = std::unexpected(CMError{"in_steps_input: Permission denied"});
    time.advance(60s);
    CHECK(ingestion->problem.value() == "in_steps_input: Permission denied");
    counter.reading = StepReading{1'030, "first boot"};
    time.advance(60s);
    CHECK(!ingestion->problem->has_value());
    CHECK(stepsByDay() == Days{{1, 30}});
}

TEST_CASE_FIXTURE(Watching, "a clock that is set brings no step to another day, loses none and doubles none") {
    steps(110);
    time.advance(60s);
    for (const auto change : {-1h, +1h, +24h}) {
        time.setClock(time.now() + change);
        steps(110);
        time.advance(60s);
    }
    CHECK(stepsByDay() == Days{{1, 330}, {2, 110}});
    ingestion.reset();
    time.setClock(time.now() - 24h);
    steps(110);
    time.advance(60s);
    restart();
    CHECK(stepsByDay() == Days{{1, 440}, {2, 110}});
}

TEST_CASE_FIXTURE(Watching, "what an idle counter costs is a write in a quarter of an hour") {
    trace.clear();
    time.advance(1h);
    CHECK(trace.size() <= 4);
}

TEST_CASE_FIXTURE(Watching, "a count of earlier that cannot be understood is kept, and counting begins anew") {
    ingestion.reset();
    defaults.setDocument(stepIngestionKey, "{\"reading\":");
    restart();
    steps(12);
    time.advance(60s);
    CHECK(stepsByDay() == Days{{1, 12}});
    CHECK(defaults.document(std::string(stepIngestionKey) + ".unreadable") == "{\"reading\":");
}
