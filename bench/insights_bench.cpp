/// The first baseline of a usual day, against one read of the same hours and the same saves.
///
/// insights_bench FOLDER: FOLDER is a data folder that was filled up to today.
#include "bench.h"

#include "apps/cli/health.h"
#include "health/health_kit_manager.h"
#include "insights/step_pace_baseline_store.h"
#include "linux/health/sqlite_health_store.h"
#include "linux/system/clocks.h"
#include "linux/system/event_loop.h"
#include "linux/system/glibc_locale.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/process_zone.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/system_log.h"
#include "support/temporary_folder.h"

using namespace pedvar;
using namespace pedvar::bench;

namespace {

Task<> ending(CancellableTask task) {
    co_await task.finished();
}

void measure(const std::filesystem::path& data) {
    const TemporaryFolder scratch;
    const ProcessZone zone = processZone();
    const GlibcLocale locale(*zone.rules);
    const SystemClock clock;
    const NlohmannJsonParser json;
    SystemLog log;
    EventLoop loop;
    SqliteDefaults defaults(scratch.path(), SqliteDefaults::Access::readWrite);
    SettingsStore settings(defaults, json, locale);
    HealthDatabase database(data / "health.sqlite");
    SqliteHealthStore store(loop, database, *zone.rules);
    HealthDiagnostics diagnostics(log);
    StepGoalNews notifications;
    HealthKitManager manager(loop, clock, store, settings, diagnostics, notifications);

    const Calendar calendar = settings.calendar();
    const Day yesterday = calendar.day(clock.now()) - std::chrono::days(1);
    std::vector<PaceDay> days;
    const auto seconds = inTurn(
        21, {[&] {
                 keep(savePaceDays(defaults, json, {}));
                 StepPaceBaselineStore pace(loop, clock, settings, defaults, json, log);
                 if (const auto reading = pace.refresh(manager)) loop.run(ending(*reading));
                 days = pace.days;
             },
             [&] {
                 keep(savePaceDays(defaults, json, {}));
                 keep(loop.run(manager.reads().fetchTimeWindowSteps(yesterday - std::chrono::days(27), yesterday,
                                                                    calendar, QueryPriority::normal)));
                 for (std::size_t count = 7; count <= days.size(); count += 7) {
                     keep(savePaceDays(defaults, json, {days.begin(), days.begin() + std::ptrdiff_t(count)}));
                 }
             }});
    row("first baseline / one read of its 672 hourly sums and its saves", seconds[0] / seconds[1], 2,
        milliseconds(seconds[0]) + " for " + std::to_string(days.size()) + " days");
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::fprintf(stderr, "usage: insights_bench FOLDER\n");
        return 2;
    }
    measure(words[1]);
}
