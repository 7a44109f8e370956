/// A health store for tests, and the slow count that its sums are held against.
#pragma once

#include "linux/health/health_administration.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_writer.h"
#include "linux/health/sqlite_health_store.h"
#include "support/fake_zone.h"
#include "support/temporary_folder.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

inline constexpr std::int64_t minute = 60, hour = 3600, day = 86400;  // seconds

/// Whole seconds since 2001-01-01 UTC.
struct TestSample {
    std::int32_t source;
    std::int64_t start;
    std::int64_t duration;
    double value;
    auto operator<=>(const TestSample&) const = default;
};

inline Date at(std::int64_t second) {
    return Date{Seconds{second}};
}

/// Counts second by second what each sample counts with. `order` has the sources by priority.
class SlowCount {
public:
    SlowCount(std::vector<TestSample> samples, const std::vector<std::int32_t>& order)
        : samples_(std::move(samples)), counted_(samples_.size()) {
        if (samples_.empty()) return;
        first_ = std::ranges::min(samples_, {}, &TestSample::start).start;
        std::int64_t last = first_;
        for (const TestSample& sample : samples_) last = std::max(last, sample.start + sample.duration);
        covered_.assign(static_cast<std::size_t>(last - first_ + 1), 'n');
        for (const bool isLong : {false, true}) {
            for (const std::int32_t source : order) countRank(source, isLong);
        }
    }

    /// The sum of the samples that start in [from, to); none without samples.
    std::optional<double> sum(std::int64_t from, std::int64_t to) const {
        std::optional<double> sum;
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            if (samples_[i].start < from || samples_[i].start >= to) continue;
            if (samples_[i].duration <= 4 * hour || to - from >= 22 * hour) sum = sum.value_or(0) + counted_[i];
        }
        return sum;
    }

private:
    void countRank(std::int32_t source, bool isLong) {
        const auto isOfRank = [&](const TestSample& sample) {
            return sample.source == source && (sample.duration > 4 * hour) == isLong;
        };
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            if (!isOfRank(samples_[i])) continue;
            const std::int64_t length = std::max<std::int64_t>(samples_[i].duration, 1);  // an instant is a second
            const char* const begin = covered_.data() + (samples_[i].start - first_);
            counted_[i] = samples_[i].value * static_cast<double>(std::count(begin, begin + length, 'n')) /
                          static_cast<double>(length);
        }
        for (const TestSample& sample : samples_) {
            char* const begin = covered_.data() + (sample.start - first_);
            if (isOfRank(sample)) std::fill(begin, begin + sample.duration, 'y');
        }
    }

    std::vector<TestSample> samples_;
    std::vector<double> counted_;  // by sample
    std::int64_t first_ = 0;
    std::string covered_;  // 'y' or 'n', by second since the first
};

/// Hands a question over with a handler, and waits for the answer.
template <class Answer, class Ask>
HKResult<Answer> answerTo(Ask ask) {
    std::promise<HKResult<Answer>> promise;
    ask(HKHandler<Answer>([&promise](HKResult<Answer> answer) { promise.set_value(std::move(answer)); }));
    return promise.get_future().get();
}

class HealthStoreFixture {
public:
    TemporaryFolder folder;
    HealthDatabase database{folder / "health.sqlite"};
    SampleWriter writer{database};
    HealthAdministration administration{database};
    VirtualTime time;
    FakeZone zone{std::chrono::minutes(0)};
    SqliteHealthStore store{time, database, zone};

    std::int32_t source(SourceKind kind, std::string name) {
        return *writer.source({.kind = kind, .name = std::move(name), .hardware = ""});
    }

    std::vector<SampleRow> rows(const std::vector<TestSample>& samples,
                                std::string_view type = HKQuantityTypeIdentifierStepCount,
                                std::string_view unit = "count") {
        std::vector<SampleRow> rows;
        for (const auto& [source, start, duration, value] : samples) {
            rows.push_back({*writer.series(type, unit), source, start * 1000, duration * 1000, value});
        }
        return rows;
    }
    /// Those that have changed since the last call.
    ChangedDays changedDays() {
        ChangedDays days;
        REQUIRE(administration.settleChangedDays([&days](const ChangedDays& changed) {
            days = changed;
            return true;
        }));
        return days;
    }
    std::int64_t add(const std::vector<TestSample>& samples) { return writer.write(rows(samples))->samplesAdded; }

    HKResult<HKStatistics> statistics(HKPredicate predicate, HKStatisticsOptions options,
                                      std::string type = HKQuantityTypeIdentifierStepCount) {
        return answerTo<HKStatistics>([&](HKHandler<HKStatistics> handler) {
            store.execute(HKStatisticsQuery{{type}, predicate, options, std::move(handler)});
        });
    }

    std::optional<double> sum(std::int64_t from, std::int64_t to) {
        const auto found =
            statistics({at(from), at(to), HKQueryOptions::strictStartDate}, HKStatisticsOptions::cumulativeSum);
        REQUIRE(found);
        return found->sum ? std::optional(found->sum->doubleValue(HKUnit::count())) : std::nullopt;
    }

    /// Sums of a collection; NaN where an interval has none.
    static constexpr double none = std::numeric_limits<double>::quiet_NaN();

    std::vector<double> collection(SqliteHealthStore& asked, Date anchor, Date end, DateComponents step) {
        const auto found = answerTo<std::vector<HKStatistics>>([&](HKHandler<std::vector<HKStatistics>> handler) {
            asked.execute(HKStatisticsCollectionQuery{{HKQuantityTypeIdentifierStepCount},
                                                      {anchor, end, HKQueryOptions::strictStartDate},
                                                      HKStatisticsOptions::cumulativeSum,
                                                      anchor,
                                                      step,
                                                      std::move(handler)});
        });
        REQUIRE(found);
        std::vector<double> sums;
        for (const HKStatistics& each : *found)
            sums.push_back(each.sum ? each.sum->doubleValue(HKUnit::count()) : none);
        return sums;
    }
};

}  // namespace pedvar
