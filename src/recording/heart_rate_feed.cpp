#include "recording/heart_rate_feed.h"

#include <utility>
#include <vector>

namespace pedvar {

HeartRateFeed::HeartRateFeed(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                             Handler handler)
    : executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      handler_(std::move(handler)),
      reading_(executor, [this] { return read(); }) {}

void HeartRateFeed::start(Date since) {
    since_ = since;
    newSamples_ =
        healthStore_.observeNewSamples({HKQuantityTypeIdentifierHeartRate}, [this] { reading_.request(); });
    reading_.request();
}

void HeartRateFeed::stop() {
    since_.reset();
    newSamples_ = {};
}

Task<> HeartRateFeed::read() {
    using Samples = std::vector<HKQuantitySample>;
    if (!since_) co_return;
    const Date since = *since_;
    Completion<HKResult<Samples>> answer(executor_);
    HKSampleQuery query{.sampleType = {HKQuantityTypeIdentifierHeartRate},
                        .predicate = {since, clock_.now() + Seconds{1}, HKQueryOptions::strictStartDate},
                        .sort = HKSampleSort::startDateAscending,
                        .resultsHandler = answer.resolver()};
    healthStore_.execute(std::move(query));
    const HKResult<Samples> samples = co_await answer;
    // What cannot be read is shown as it was; what belongs to an earlier recording is not shown.
    if (!samples || samples->empty() || since_ != since) co_return;
    double sum = 0;
    for (const HKQuantitySample& sample : *samples) sum += sample.quantity.doubleValue(HKUnit::countPerMinute());
    handler_({.current = samples->back().quantity.doubleValue(HKUnit::countPerMinute()),
              .average = sum / static_cast<double>(samples->size())});
}

}  // namespace pedvar
