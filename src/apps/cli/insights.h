/// What the days mean.
#pragma once

#include "apps/cli/health.h"
#include "insights/calendar_metric_store.h"
#include "insights/monthly_recap_manager.h"
#include "insights/step_pace_baseline_store.h"

namespace pedvar {

/// What the managers of insights are built from.
struct InsightsSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    DefaultsDomains& defaults;
    const JsonParser& json;
    SettingsStore& settings;
    PlatformLog& log;
    Health& health;
    StepPaceBaselineStore::Keeping keeping;
};

struct Insights {
    explicit Insights(const InsightsSurroundings& with)
        : pace(with.executor, with.clock, with.settings, with.defaults, with.json, with.log, with.keeping),
          calendar(with.executor, with.clock, with.settings, with.health.manager.reads()),
          recap(with.executor, with.clock, with.health.store, with.settings, with.defaults, with.log) {}

    StepPaceBaselineStore pace;
    CalendarMetricStore calendar;
    MonthlyRecapManager recap;
};

}  // namespace pedvar
