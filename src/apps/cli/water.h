/// What goes with drinking.
#pragma once

#include "hydration/hydration_manager.h"
#include "linux/system/system_random.h"

#include <optional>

namespace pedvar {

/// What the manager of drinks is built from.
struct WaterSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    HKHealthStore& healthStore;
    ActivityReads& reads;
    DefaultsDomains& defaults;
    const SettingsStore& settings;
    PlatformLog& log;
    WidgetCenter& widgets;
    std::optional<Date> horizon;  // what lies behind it is not looked at
};

/// The objects from the widget's values up to the manager, in the order in which they need each other.
class Water {
public:
    explicit Water(const WaterSurroundings& with)
        : group(with.defaults, with.clock, with.widgets, with.log),
          manager(with.executor, with.clock, with.healthStore, with.reads, with.defaults, with.settings, random_,
                  group, with.horizon) {}

private:
    SystemRandom random_;

public:
    HydrationAppGroup group;
    HydrationManager manager;
};

}  // namespace pedvar
