#include "insights/monthly_recap_manager.h"

#include "insights/monthly_recap.h"

#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view lastShownMonthKey = "monthlyRecapLastShownMonth";
constexpr std::chrono::months oneMonth{1};

}  // namespace

MonthlyRecapManager::MonthlyRecapManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                                         const SettingsStore& settings, DefaultsDomains& defaults,
                                         PlatformLog& log)
    : recapMonthStart(clock.now()),
      executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      settings_(settings),
      defaults_(defaults),
      log_(log) {}

Task<> MonthlyRecapManager::checkForRecap() {
    if (isOffered()) co_return;
    if (!lastShownMonth()) markHandled();
    const auto month = co_await fetchDueMonth();
    if (!month || isOffered()) co_return;
    recapMonthStart = settings_.calendar().start(firstDay(*month));
    popupWorkItem_ = executor_.after(Seconds(popupDelaySeconds), [this] {
        popupWorkItem_.cancel();
        shouldShowPopup = true;
    });
}

Task<std::optional<std::chrono::year_month>> MonthlyRecapManager::fetchDueMonth() {
    const std::chrono::year_month current = month(today());
    const auto last = lastShownMonth();
    if (!last || *last == monthKey(current)) co_return std::nullopt;
    const double steps = co_await stepCount(settings_.calendar().start(firstDay(current - oneMonth)));
    if (!(steps > 0)) co_return std::nullopt;
    co_return current - oneMonth;
}

Task<double> MonthlyRecapManager::stepCount(Date forMonthStarting) {
    const Calendar calendar = settings_.calendar();
    const Date end = calendar.start(firstDay(month(calendar.day(forMonthStarting)) + oneMonth));
    Completion<HKResult<HKStatistics>> answer(executor_);
    HKStatisticsQuery query{{HKQuantityTypeIdentifierStepCount},
                            {forMonthStarting, end, HKQueryOptions::strictStartDate},
                            HKStatisticsOptions::cumulativeSum,
                            answer.resolver()};
    healthStore_.execute(std::move(query));
    const auto statistics = co_await answer;
    const auto sum = statistics ? statistics->sumQuantity() : std::nullopt;
    const bool isCount = sum && sum->dimension() == Dimension::count;
    co_return isCount ? sum->doubleValue(HKUnit::count()) : 0;
}

void MonthlyRecapManager::viewRecap() {
    markHandled();
    shouldShowPopup = false;
    pendingRecapMonth = recapMonthStart.value();
    pendingTrendsMonthNavigation = true;
}

void MonthlyRecapManager::dismissRecap() {
    markHandled();
    shouldShowPopup = false;
}

Phrase MonthlyRecapManager::monthName() const {
    return pedvar::monthName(month(settings_.calendar().day(recapMonthStart)), today());
}

std::optional<std::string> MonthlyRecapManager::lastShownMonth() const {
    return defaults_.standard().text(lastShownMonthKey);
}

void MonthlyRecapManager::markHandled() {
    const auto result =
        defaults_.write({{&defaults_.standard(), std::string(lastShownMonthKey), monthKey(month(today()))}});
    if (!result) log_.log(logSubsystem, "MonthlyRecap", LogLevel::error, result.error().message.inEnglish());
}

}  // namespace pedvar
