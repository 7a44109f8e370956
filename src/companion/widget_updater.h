/// Keeps the widgets up to date.
#pragma once

#include "companion/app_group_manager.h"
#include "companion/preferences_sync.h"
#include "core/coalesced_work.h"
#include "health/health_kit_manager.h"
#include "platform/cloud_settings.h"
#include "platform/watch_link.h"
#include "platform/widget_center.h"

namespace pedvar {

/// Writes today's values, streaks and the last seven days to the shared suite after each refresh of the manager,
/// then reloads the widgets. One update at a time: refreshes during an update lead to exactly one more.
class WidgetUpdater {
public:
    WidgetUpdater(MainExecutor& executor, HealthKitManager& health, SettingsStore& settings,
                  AppGroupManager& group, PreferencesSync& preferencesSync, CloudSettings& cloud, WatchLink& watch,
                  WidgetCenter& widgets);

    /// `co_await updater.finished()`: returns once no update is running or asked for.
    Task<> finished() { return updates_.finished(); }

private:
    Task<> update();

    HealthKitManager& health_;
    SettingsStore& settings_;
    AppGroupManager& group_;
    PreferencesSync& preferencesSync_;
    CloudSettings& cloud_;
    WatchLink& watch_;
    WidgetCenter& widgets_;
    CoalescedWork updates_;
    Subscription refreshed_;
};

}  // namespace pedvar
