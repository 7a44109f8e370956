#include "health/step_ingestion.h"

#include "core/record_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pedvar {

namespace {

constexpr double fastestCadence = 5;  // steps a second; sprinters stay just below

// Counters tell some steps late and all at once, so that two readings in a row say nothing of the cadence.
constexpr Seconds shortestSpan{10};

constexpr std::size_t mostSetAside = 100;  // spans; who has more has another trouble than lost steps

// A reading without steps is kept this often, so that steps after a kill are not spread over a whole night.
constexpr Seconds longestUnsaved{900};

}  // namespace

std::vector<StepSpan> sharedByDays(const StepSpan& span, const Calendar& calendar) {
    std::vector<StepSpan> shares;
    std::int64_t given = 0;
    for (Date from = span.start; from < span.end;) {
        const Date until = std::min(span.end, calendar.interval(calendar.day(from)).end);
        const double share = (until - span.start) / (span.end - span.start);
        const std::int64_t due = std::llround(static_cast<double>(span.steps) * share);
        if (due > given) shares.push_back({from, until, due - given});
        given = due;
        from = until;
    }
    return shares;
}

StepIngestion::StepIngestion(MainExecutor& executor, const Clock& clock, const Locale& locale,
                             StepCounter& counter, HKHealthStore& healthStore, DefaultsDomains& defaults)
    : executor_(executor),
      clock_(clock),
      locale_(locale),
      counter_(counter),
      healthStore_(healthStore),
      defaults_(defaults),
      tasks_(executor) {}

void StepIngestion::start() {
    tasks_.spawn(keepIngesting());
}

Task<> StepIngestion::keepIngesting() {
    bool goesOn = true;
    while (goesOn) {
        co_await ingest();
        goesOn = co_await sleepFor(interval);
    }
}

Task<> StepIngestion::ingest() {
    load();
    const auto reading = counter_.read();
    if (!reading) {
        problem = reading.error().localizedDescription.inEnglish();
        co_return;
    }
    take(*reading);
    if (const DefaultsResult saved = saveState(); !saved) {
        problem = saved.error().message.inEnglish();
        co_return;
    }
    std::vector<HKQuantitySample> samples;
    for (const StepSpan& span : state_->pending) {
        samples.push_back({{HKQuantityTypeIdentifierStepCount},
                           HKQuantity(HKUnit::count(), static_cast<double>(span.steps)),
                           span.start,
                           span.end});
    }
    if (!samples.empty()) {
        const std::vector<StepSpan> stored = state_->pending;
        Completion<HKResult<void>> answer(executor_);
        healthStore_.save(std::move(samples), answer.resolver());
        const HKResult<void> result = co_await answer;
        if (!result) {
            problem = result.error().localizedDescription;
            co_return;
        }
        const auto isStored = [&](const StepSpan& span) {
            return std::ranges::find(stored, span) != stored.end();
        };
        std::erase_if(state_->pending, isStored);
    }
    problem = std::nullopt;
}

void StepIngestion::load() {
    if (std::exchange(isLoaded_, true)) return;
    const auto stored = defaults_.standard().data(stepIngestionKey);
    if (!stored) return;
    state_ = readJson<StepIngestionState>(stored->bytes);
    hasUnreadable_ = !state_;
    saved_ = state_;
}

/// The first reading of all says nothing of when its steps were taken.
void StepIngestion::take(const StepReading& reading) {
    const Date now = clock_.now();
    const auto age = reading.age.count();
    if (!state_) state_ = StepIngestionState{.epoch = reading.epoch, .reading = reading.steps, .age = age};
    const std::int64_t steps = stepsBetween({state_->reading, state_->epoch}, reading);
    const bool isOfSameBoot = state_->epoch == reading.epoch && state_->age <= age;
    const Seconds duration(isOfSameBoot ? age - state_->age : age);
    const StepSpan span{now - std::max(duration, shortestSpan), now, steps};
    if (steps > 0 && static_cast<double>(steps) > fastestCadence * (span.end - span.start).count()) {
        state_->setAside.push_back(span);
        if (state_->setAside.size() > mostSetAside) state_->setAside.erase(state_->setAside.begin());
    } else if (steps > 0) {
        const Calendar calendar(locale_.zone(), locale_.firstWeekday());
        const auto shares = sharedByDays(span, calendar);
        state_->pending.insert(state_->pending.end(), shares.begin(), shares.end());
    }
    state_->epoch = reading.epoch;
    state_->reading = reading.steps;
    state_->age = age;
}

/// Nothing but a higher age is saved from time to time only.
DefaultsResult StepIngestion::saveState() {
    if (saved_ && Seconds(state_->age - saved_->age) < longestUnsaved) {
        StepIngestionState atSavedAge = *state_;
        atSavedAge.age = saved_->age;
        if (atSavedAge == *saved_) return {};
    }
    std::vector<DefaultsChange> changes;
    if (hasUnreadable_) {
        if (auto kept = setAside(defaults_.standard(), stepIngestionKey)) changes.push_back(std::move(*kept));
    }
    const auto text = encodeJson(*state_);
    if (!text) return std::unexpected(DefaultsError{Phrase("the steps cannot be written as JSON")});
    changes.push_back({&defaults_.standard(), stepIngestionKey, Data{*text}});
    const DefaultsResult saved = defaults_.write(changes);
    if (saved) {
        hasUnreadable_ = false;
        saved_ = state_;
    }
    return saved;
}

}  // namespace pedvar
