/// Carries what the person chooses to widgets, watch and cloud.
#pragma once

#include "companion/app_group_manager.h"
#include "health/settings_store.h"
#include "platform/cloud_settings.h"
#include "platform/widget_center.h"

#include <cstdint>
#include <functional>

namespace pedvar {

/// Lives on the main executor. Widgets are reloaded only when something that they show has changed.
class PreferencesSync {
public:
    PreferencesSync(SettingsStore& settings, AppGroupManager& group, CloudSettings& cloud, WidgetCenter& widgets)
        : settings_(settings), group_(group), cloud_(cloud), widgets_(widgets) {}

    /// Brings cloud and shared suite up to the stored preferences.
    void sync();

    /// Lets `edit` change the preferences, and stores them everywhere.
    DefaultsResult changePreferences(const std::function<void(UserPreferences&)>& edit);
    /// Sets the goal from `today` on everywhere. `goal` is valid.
    DefaultsResult setDailyGoal(std::int64_t goal, Day today);

private:
    SettingsStore& settings_;
    AppGroupManager& group_;
    CloudSettings& cloud_;
    WidgetCenter& widgets_;
};

}  // namespace pedvar
