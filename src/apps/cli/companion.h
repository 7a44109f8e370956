/// What goes with a change of the data: the suite that widgets and watch read.
#pragma once

#include "companion/app_group_manager.h"
#include "companion/preferences_sync.h"
#include "companion/widget_updater.h"
#include "linux/system/absent_services.h"

namespace pedvar {

/// What the companion managers are built from.
struct CompanionSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    DefaultsDomains& defaults;
    SettingsStore& settings;
    PlatformLog& log;
    HealthKitManager& health;
    WidgetCenter& widgets;
};

/// The managers beside the health store, in the order in which they need each other.
class Companion {
public:
    explicit Companion(const CompanionSurroundings& with)
        : group_(with.defaults, with.clock, with.log),
          preferencesSync(with.settings, group_, cloud_, with.widgets),
          updater(with.executor, with.health, with.settings, group_, preferencesSync, cloud_, watch_,
                  with.widgets) {}

private:
    NoCloudSettings cloud_;
    NoWatchLink watch_;
    AppGroupManager group_;

public:
    PreferencesSync preferencesSync;
    WidgetUpdater updater;
};

}  // namespace pedvar
