/// Steps of a counter on their way into the health store.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "core/record.h"
#include "platform/clock.h"
#include "platform/health_store.h"
#include "platform/locale.h"
#include "platform/step_counter.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// Steps that were taken at some time between two moments.
struct StepSpan {
    Date start;
    Date end;
    std::int64_t steps = 0;

    using Fields = FieldList<&StepSpan::start, &StepSpan::end, &StepSpan::steps>;
    bool operator==(const StepSpan&) const = default;
};
static_assert(isComplete<StepSpan>);

/// Shared by time, whole steps to each of the days.
std::vector<StepSpan> sharedByDays(const StepSpan& span, const Calendar& calendar);

/// How far a counter has been taken into the store.
struct StepIngestionState {
    std::string epoch;  // of the last reading
    std::int64_t reading = 0;
    double age = 0;                  // seconds that the machine had been on
    std::vector<StepSpan> pending;   // to be stored, or stored and not known to be
    std::vector<StepSpan> setAside;  // more steps than anybody takes, the latest ones

    using Fields = FieldList<&StepIngestionState::epoch, &StepIngestionState::reading, &StepIngestionState::age,
                             &StepIngestionState::pending, &StepIngestionState::setAside>;
    bool operator==(const StepIngestionState&) const = default;
};
static_assert(isComplete<StepIngestionState>);

inline constexpr const char* stepIngestionKey = "stepIngestion";

/// Writes what the counter counts from reading to reading into the health store, as steps of Pedvar's. There is
/// one for each person at any time, in all processes. Lives on the main executor.
///
/// Steps taken while no process read the counter count when the next one does; a reboot loses those that nobody
/// has read. How long they took is told by the machine's age, whatever its clock is set to meanwhile. Nothing
/// counts twice, wherever a process ends: what is to be stored is noted together with the reading that it brings
/// the count to, and storing the same sample again adds nothing.
class StepIngestion {
public:
    static constexpr Seconds interval{60};

    /// Keeps the references.
    StepIngestion(MainExecutor& executor, const Clock& clock, const Locale& locale, StepCounter& counter,
                  HKHealthStore& healthStore, DefaultsDomains& defaults);

    /// Why steps do not get into the store now, for people; none when they do.
    Published<std::optional<std::string>> problem;

    /// Reads the counter now and once in every interval.
    void start();
    /// Reads the counter, and ends when what it has counted is stored, or there is a `problem`.
    Task<> ingest();

private:
    Task<> keepIngesting();
    void load();
    void take(const StepReading& reading);
    DefaultsResult saveState();

    MainExecutor& executor_;
    const Clock& clock_;
    const Locale& locale_;
    StepCounter& counter_;
    HKHealthStore& healthStore_;
    DefaultsDomains& defaults_;
    bool isLoaded_ = false;
    bool hasUnreadable_ = false;               // what is stored could not be understood, and is to be kept
    std::optional<StepIngestionState> state_;  // none before the first reading of all
    std::optional<StepIngestionState> saved_;
    TaskScope tasks_;
};

}  // namespace pedvar
