/// What the hydration widget reads.
#pragma once

#include "hydration/hydration_settings.h"
#include "platform/clock.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"
#include "platform/widget_center.h"

namespace pedvar {

/// The one writer of the shared suite's values of water. Lives on the main executor. While the suite is closed
/// nothing is written.
class HydrationAppGroup {
public:
    HydrationAppGroup(DefaultsDomains& defaults, const Clock& clock, WidgetCenter& widgets, PlatformLog& log)
        : defaults_(defaults), clock_(clock), widgets_(widgets), log_(log) {}

    /// The shared suite; none when it cannot be opened.
    const UserDefaults* userDefaults() const { return defaults_.shared(); }

    /// Writes today's figures and the settings, then reloads the widgets. A total below 0 is written as 0, a goal
    /// below 1 as 1; containers that JSON cannot express are not written.
    void updateWidgetSnapshot(double todayMilliliters, double goalMilliliters, const HydrationSettings& settings);

    /// The last single amount; 0 without one.
    double lastAmountMilliliters() const;
    void saveLastAmount(double milliliters);

private:
    void write(const std::vector<DefaultsChange>& changes);

    DefaultsDomains& defaults_;
    const Clock& clock_;
    WidgetCenter& widgets_;
    PlatformLog& log_;
};

}  // namespace pedvar
