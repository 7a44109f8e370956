#include "insights/calendar_metric_store.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr std::chrono::days oneDay{1};

}  // namespace

/// Marks keys whose read has started for as long as it lives.
class CalendarMetricStore::InFlight {
public:
    InFlight(std::set<DayKey>& marks, std::vector<DayKey> keys) : marks_(marks), keys_(std::move(keys)) {
        marks_.insert(keys_.begin(), keys_.end());
    }
    InFlight(InFlight&& other) noexcept : marks_(other.marks_), keys_(std::exchange(other.keys_, {})) {}
    InFlight& operator=(InFlight&&) = delete;
    ~InFlight() {
        for (const DayKey& key : keys_) marks_.erase(key);
    }

private:
    std::set<DayKey>& marks_;
    std::vector<DayKey> keys_;
};

CalendarMetricStore::CalendarMetricStore(MainExecutor& executor, const Clock& clock, const SettingsStore& settings,
                                         ActivityReads& reads)
    : clock_(clock), settings_(settings), reads_(reads), tasks_(executor) {}

std::optional<double> CalendarMetricStore::value(Day day, CalendarMetric metric) const {
    const auto ofMetric = values_.find(metric);
    if (ofMetric == values_.end()) return std::nullopt;
    const auto found = ofMetric->second.find(day);
    return found == ofMetric->second.end() ? std::nullopt : std::optional(found->second);
}

bool CalendarMetricStore::needsFetch(Day day, CalendarMetric metric, Day today) const {
    const DayKey key{metric, day};
    if (inFlight_.contains(key)) return false;
    if (!value(day, metric)) return true;
    if (day == today) {
        const auto last = lastTodayRead_.find(metric);
        // A read in the future is one from before the clock was set back.
        return last == lastTodayRead_.end() || std::chrono::abs(clock_.now() - last->second) > todayStaleness;
    }
    return day < today && unfinished_.contains(key);
}

CancellableTask CalendarMetricStore::load(const std::vector<Day>& days, CalendarMetric metric) {
    const Day today = settings_.calendar().day(clock_.now());
    std::set<Day> needed;
    for (const Day day : days) {
        if (day <= today && needsFetch(day, metric, today)) needed.insert(day);
    }
    std::vector<Run> runs;
    std::vector<DayKey> keys;
    for (const Day day : needed) {
        if (runs.empty() || runs.back().last + oneDay != day) runs.push_back({day, day});
        runs.back().last = day;
        keys.push_back({metric, day});
    }
    return tasks_.spawn(fetch(std::move(runs), metric, InFlight(inFlight_, std::move(keys))));
}

Task<> CalendarMetricStore::fetch(std::vector<Run> runs, CalendarMetric metric, InFlight) {
    for (const Run run : runs) {
        const Date moment = clock_.now();
        const auto totals = co_await reads_.fetchDayTotals(metric, run.first, run.last, settings_.calendar(),
                                                           QueryPriority::normal);
        if (totals) keep(run, metric, *totals, moment);
    }
}

void CalendarMetricStore::keep(Run run, CalendarMetric metric, const DayTotals& totals, Date moment) {
    const Day today = settings_.calendar().day(moment);
    Day day = run.first;
    for (const std::optional<double>& total : totals) {
        values_[metric][day] = total.value_or(0);
        if (day < today) {
            unfinished_.erase({metric, day});
        } else {
            unfinished_.insert({metric, day});
        }
        if (day == today) lastTodayRead_[metric] = moment;
        day += oneDay;
    }
    valuesChanged.notify();
}

}  // namespace pedvar
