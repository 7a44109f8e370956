/// The offer to look back at the month that has ended.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/health_store.h"
#include "platform/phrase.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"

#include <optional>
#include <string>

namespace pedvar {

/// Offers the recap once a month: from the first check after the month has turned until the person views or
/// dismisses it. The first month of use offers none, and neither does a month without steps. Lives on the main
/// executor.
class MonthlyRecapManager {
public:
    static constexpr double popupDelaySeconds = 1;

    MonthlyRecapManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                        const SettingsStore& settings, DefaultsDomains& defaults, PlatformLog& log);

    Published<bool> shouldShowPopup;
    Published<bool> pendingTrendsMonthNavigation;      // the trends screen is to open `pendingRecapMonth`
    Published<std::optional<Date>> pendingRecapMonth;  // start of the month
    Published<Date> recapMonthStart;                   // of the month that the pop-up is about

    /// Shows the pop-up after a short delay if a recap is due.
    Task<> checkForRecap();
    /// The month whose recap is due. Writes nothing.
    Task<std::optional<std::chrono::year_month>> fetchDueMonth();
    /// The steps of the month that starts at `forMonthStarting`; 0 when they cannot be read.
    Task<double> stepCount(Date forMonthStarting);

    void viewRecap();
    void dismissRecap();

    /// "March", with the year when it is not the current one.
    Phrase monthName() const;

private:
    bool isOffered() const { return shouldShowPopup || popupWorkItem_; }
    Day today() const { return settings_.calendar().day(clock_.now()); }
    std::optional<std::string> lastShownMonth() const;
    void markHandled();

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    const SettingsStore& settings_;
    DefaultsDomains& defaults_;
    PlatformLog& log_;
    Timer popupWorkItem_;
};

}  // namespace pedvar
