/// A health store in memory.
#pragma once

#include "core/calendar.h"
#include "core/executor.h"
#include "platform/stored_workouts.h"

#include <algorithm>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// Adds up samples where they start, without regard to overlap. Answers at once, or holds its answers back until
/// the test asks for them.
class FakeHealthStore : public HKHealthStore {
public:
    explicit FakeHealthStore(const ZoneRules& zone) : calendar_(zone, 1) {}

    std::vector<HKQuantitySample> samples;
    std::vector<StoredWorkout> workouts;
    std::map<std::string, HKError> failures;  // of every query on a type
    bool isHolding = false;
    std::vector<std::string> asked;  // the types of all queries so far
    HKAuthorizationRequestStatus status = HKAuthorizationRequestStatus::unnecessary;
    std::optional<HKError> authorizationError;
    std::optional<HKError> writeError;
    int authorizationRequests = 0;
    Event<> samplesAdded;
    std::map<std::string, DerivedDocument> derived;

    void add(const char* type, HKUnit unit, double value, Date start, HKSource source = {}, Seconds length = {}) {
        samples.push_back({{type}, HKQuantity(unit, value), start, start + length, std::move(source)});
    }
    void addSteps(double count, Date start) {
        add(HKQuantityTypeIdentifierStepCount, HKUnit::count(), count, start);
    }

    std::size_t running() const { return held_.size(); }
    void answer(std::size_t index = 0) {
        Job job = std::move(held_.at(index));
        held_.erase(held_.begin() + static_cast<std::ptrdiff_t>(index));
        job();
    }

    void execute(HKStatisticsQuery query) override {
        auto statistics = sumUp(query.quantityType, query.quantitySamplePredicate);
        reply(query.quantityType, std::move(query.completionHandler), std::move(statistics));
    }
    void execute(HKStatisticsCollectionQuery query) override {
        std::vector<HKStatistics> intervals;
        const Date end = query.quantitySamplePredicate.end;
        Interval next = intervalFrom(query.anchorDate, query.intervalComponents);
        for (; next.start < end; next = intervalFrom(next.end, query.intervalComponents)) {
            HKPredicate predicate = query.quantitySamplePredicate;
            predicate.start = next.start;
            predicate.end = next.end;
            intervals.push_back(sumUp(query.quantityType, predicate));
        }
        reply(query.quantityType, std::move(query.initialResultsHandler), std::move(intervals));
    }
    void execute(HKSampleQuery query) override {
        auto found = matching(query.sampleType, query.predicate);
        std::ranges::sort(found, {}, &HKQuantitySample::start);
        const bool isByEnd =
            query.sort == HKSampleSort::endDateAscending || query.sort == HKSampleSort::endDateDescending;
        if (isByEnd) std::ranges::sort(found, {}, &HKQuantitySample::end);
        const bool isDescending =
            query.sort == HKSampleSort::startDateDescending || query.sort == HKSampleSort::endDateDescending;
        if (isDescending) std::ranges::reverse(found);
        while (query.limit > 0 && found.size() > query.limit) found.pop_back();
        reply(query.sampleType, std::move(query.resultsHandler), std::move(found));
    }

    void execute(HKWorkoutQuery query) override {
        std::vector<StoredWorkout> found;
        for (const StoredWorkout& workout : workouts) {
            if (workout.start < query.interval.end && workout.end > query.interval.start) found.push_back(workout);
        }
        std::ranges::sort(found, {}, &StoredWorkout::start);
        reply({HKWorkoutTypeIdentifier}, std::move(query.resultsHandler), std::move(found));
    }
    void execute(HKWorkoutRouteQuery query) override {
        reply({HKWorkoutRouteTypeIdentifier}, std::move(query.resultsHandler), std::vector<StoredRoute>());
    }

    void getRequestStatusForAuthorization(const HKTypeSets&,
                                          HKHandler<HKAuthorizationRequestStatus> completion) override {
        completion(status);
    }
    void requestAuthorization(const HKTypeSets&, HKHandler<void> completion) override {
        ++authorizationRequests;
        authorizationError ? completion(std::unexpected(*authorizationError)) : completion({});
    }
    void recall(std::string key, HKQuantityType, HKHandler<RecalledText> completion) override {
        const auto found = derived.find(key);
        completion(RecalledText{found == derived.end() ? std::nullopt : std::optional(found->second.text), 0});
    }
    void keep(DerivedDocument document, std::int64_t, HKHandler<void> completion) override {
        derived[document.key] = document;
        completion({});
    }
    void save(std::vector<HKQuantitySample> saved, HKHandler<void> completion) override {
        if (writeError) return completion(std::unexpected(*writeError));
        for (HKQuantitySample& sample : saved) {
            sample.source = {1, "Pedvar", true};
            samples.push_back(std::move(sample));
        }
        completion({});
    }
    void deleteSamples(std::vector<HKQuantitySample> deleted, HKHandler<void> completion) override {
        if (writeError) return completion(std::unexpected(*writeError));
        std::erase_if(samples, [&](const HKQuantitySample& sample) {
            return sample.source.isOwn && std::ranges::any_of(deleted, [&](const HKQuantitySample& other) {
                       return other.type == sample.type && other.start == sample.start;
                   });
        });
        completion({});
    }
    void enableBackgroundDelivery(const HKQuantityType&, HKUpdateFrequency, HKHandler<void> completion) override {
        authorizationError ? completion(std::unexpected(*authorizationError)) : completion({});
    }
    Subscription observeNewSamples(const HKQuantityType&, std::move_only_function<void()> observer) override {
        return samplesAdded.observe(std::move(observer));
    }

private:
    template <class T>
    void reply(const HKQuantityType& type, HKHandler<T> handler, T value) {
        asked.push_back(type.identifier);
        const auto failure = failures.find(type.identifier);
        HKResult<T> result = std::move(value);
        if (failure != failures.end()) result = std::unexpected(failure->second);
        held_.push_back([handler = std::move(handler), result = std::move(result)]() mutable { handler(result); });
        if (!isHolding) answer(held_.size() - 1);
    }

    std::vector<HKQuantitySample> matching(const HKQuantityType& type, const HKPredicate& predicate) const {
        std::vector<HKQuantitySample> found;
        for (const HKQuantitySample& sample : samples) {
            const bool startsInside = Interval{predicate.start, predicate.end}.contains(sample.start);
            const bool isStrict = predicate.options == HKQueryOptions::strictStartDate;
            const bool reachesInside = !isStrict && sample.start < predicate.end && predicate.start < sample.end;
            const bool isOfSource =
                predicate.sources.empty() || std::ranges::count(predicate.sources, sample.source) > 0;
            if (sample.type == type && (startsInside || reachesInside) && isOfSource) found.push_back(sample);
        }
        return found;
    }

    HKStatistics sumUp(const HKQuantityType& type, const HKPredicate& predicate) const {
        HKStatistics statistics{{predicate.start, predicate.end}};
        for (const HKQuantitySample& sample : matching(type, predicate)) {
            statistics.sum = statistics.sum ? plus(*statistics.sum, sample.quantity) : sample.quantity;
            auto& bySource = statistics.sumBySource;
            const auto of = std::ranges::find(bySource, sample.source, &std::pair<HKSource, HKQuantity>::first);
            if (of == bySource.end()) {
                bySource.emplace_back(sample.source, sample.quantity);
            } else {
                of->second = plus(of->second, sample.quantity);
            }
        }
        return statistics;
    }

    static HKQuantity plus(const HKQuantity& a, const HKQuantity& b) {
        const HKUnit kept{"", a.dimension()};
        return {kept, a.doubleValue(kept) + b.doubleValue(kept)};
    }

    /// The clock's next interval: whole days, or the hour of the clock that `from` stands in.
    Interval intervalFrom(Date from, DateComponents length) const {
        const Day day = calendar_.day(from);
        if (length.day > 0) return {from, calendar_.start(day + std::chrono::days(length.day))};
        int hour =
            static_cast<int>(std::chrono::floor<std::chrono::hours>(calendar_.localTime(from) - day).count());
        while (calendar_.hour(day, hour).end <= from) ++hour;
        return {from, calendar_.hour(day, hour).end};
    }

    Calendar calendar_;
    std::deque<Job> held_;
};

}  // namespace pedvar
