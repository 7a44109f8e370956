#include "apps/cli/watch/watcher.h"

#include "apps/cli/companion.h"
#include "apps/cli/engagement.h"
#include "apps/cli/gpx_file.h"
#include "apps/cli/health.h"
#include "apps/cli/insights.h"
#include "apps/cli/kernel_files.h"
#include "apps/cli/water.h"
#include "core/reflection.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace pedvar {
namespace {

// Writers write more than once: what follows is done once for all that comes within this time.
constexpr Seconds settlingTime{0.5};

constexpr std::chrono::days week{7}, oneDay{1};

/// What others write. What widgets read is made here, so news of it is no news.
constexpr std::array<std::string_view, 3> watchedFiles{"health.sqlite", "health.sqlite-wal", "defaults.sqlite"};

}  // namespace

CommandResult<WatchedManagers> watchedManagers(Application& application) {
    const auto companion = application.companion();
    if (!companion) return std::unexpected(companion.error());
    const auto health = application.health();
    const auto insights = application.insights();
    const auto achievements = application.achievements();
    const auto water = application.water();
    if (!health || !insights || !achievements || !water) {
        return std::unexpected(CommandError{ErrorKind::failed, application.text()("The data cannot be opened.")});
    }
    return WatchedManagers{**health, **insights, **achievements, **water, application.engagement()};
}

Watcher::Watcher(Application& application, const WatchedManagers& managers, UserNotifications& notifications,
                 Readiness& readiness, Beginning beginning)
    : application_(application),
      managers_(managers),
      readiness_(readiness),
      counter_(kernelFiles()),
      ingestion_(application.loop(), application.clock(), application.locale(), counter_, managers.health.store,
                 application.defaults()),
      teller_(application.clock(), application.settings(), application.defaults(), application.catalogue(),
              application.locale(), notifications, application.log()),
      prompts_(application, managers.engagement.rating, managers.engagement.updates, managers.insights.recap,
               notifications),
      goalProgressed_(managers.health.goalNews.progressed.observe([this](std::int64_t steps, std::int64_t goal) {
          static_cast<void>(application_.catalogue());  // its language may have been changed
          teller_.goalProgressed(steps, goal);
      })),
      ingestionProblem_(ingestion_.problem.observe([this](const std::optional<std::string>& problem) {
          if (problem) application_.log().log(logSubsystem, "Steps", LogLevel::error, *problem);
      })),
      notificationsAvailable_(notifications.observeAvailability([this] { tryAgain(); })),
      alarm_(readiness, [this] { tryAgain(); }),
      ended_(application.loop()),
      refreshes_(application.loop(), [this] { return refresh(); }),
      tasks_(application.loop()) {
    if (beginning == Beginning::continued) openedOn_ = application.today();
}

Task<Watcher::Ending> Watcher::run() {
    watchFiles();
    if (counter_.isAvailable()) ingestion_.start();
    refreshes_.request();
    const Ending ending = co_await ended_;
    co_await refreshes_.finished();
    co_return ending;
}

void Watcher::end(Ending ending) {
    ended_.resolver()(ending);
}

void Watcher::watchFiles() {
    const auto watch = [this](const std::filesystem::path& folder, auto handler) {
        auto opened = FolderWatch::open(readiness_, folder, FolderWatch::Change::anyWrite, std::move(handler));
        if (opened) return std::move(*opened);
        application_.log().log(logSubsystem, "Watch", LogLevel::error,
                               "Changes are not noticed: " + opened.error());
        return std::unique_ptr<FolderWatch>();
    };
    dataWatch_ = watch(application_.folder(),
                       [this](const std::vector<std::string>& names) { somethingWasWritten(names); });
    const auto file = zoneFile();
    if (!file) return;
    zoneWatch_ = watch(file->parent_path(), [this, name = file->filename().string()](const auto& names) {
        const bool isNews = names.empty() || std::ranges::find(names, name) != names.end();
        // Who replaces a file may remove it first.
        if (isNews) zoneChanged_ = application_.loop().after(settlingTime, [this] { lookAtZone(); });
    });
    lookAtZone();  // which may have changed before it was watched
}

void Watcher::somethingWasWritten(const std::vector<std::string>& names) {
    const bool isNews = names.empty() || std::ranges::find_first_of(names, watchedFiles) != names.end();
    if (!isNews || changed_) return;
    changed_ = application_.loop().after(settlingTime, [this] {
        changed_.cancel();
        refreshes_.request();
    });
}

void Watcher::lookAtZone() {
    if (processZone().rules->name() != application_.zone().name()) end(Ending::zoneChanged);
}

void Watcher::followDropFolder() {
    const std::filesystem::path wanted = application_.linuxSettings().dropFolder.text();
    if (dropFolder_ && dropFolder_->folder() == wanted) return dropFolder_->follow();
    dropFolder_.reset();
    if (wanted.empty()) return;
    const auto importing = [folder = application_.folder()](const std::filesystem::path& file) {
        std::vector<std::string> words{"/proc/self/exe", "import", "--data", folder.string(), file.string()};
        if (isGPXFile(file.string())) words.insert(words.begin() + 2, {"--as", activityTypeOf(file)});
        return words;
    };
    dropFolder_ =
        std::make_unique<DropFolder>(application_.loop(), readiness_, wanted, importing, application_.log());
}

void Watcher::tryAgain() {
    teller_.tryAgain();
    refreshes_.request();
}

Task<> Watcher::refresh() {
    followDropFolder();
    const auto refreshed = co_await application_.refreshing();
    if (!refreshed) {
        application_.log().log(logSubsystem, "Watch", LogLevel::error, refreshed.error().message.inEnglish());
    }
    const DayStanding now = co_await standing();
    teller_.consider(now);
    prompts_.offerWithheld();
    if (openedOn_ != application_.today()) open();
    alarm_.set(nextNotificationMoment(application_.calendar(), application_.clock().now()));
}

void Watcher::open() {
    openedOn_ = application_.today();
    prompts_.offerAgain();
    managers_.engagement.rating.appDidOpen();
    tasks_.spawn([](AppUpdateManager& updates) -> Task<> {
        static_cast<void>(co_await updates.checkAtLaunch());
    }(managers_.engagement.updates));
}

Task<DayStanding> Watcher::standing() {
    DayStanding standing{.streak = managers_.health.manager.currentStreak};
    const Calendar calendar = application_.calendar();
    const Day weekStart = calendar.weekStart(application_.today());
    ActivityReads& reads = managers_.health.manager.reads();
    const auto steps =
        co_await reads.fetchDailySteps(weekStart - week, weekStart - oneDay, calendar, QueryPriority::normal);
    if (steps) standing.lastWeekSteps = std::accumulate(steps->begin(), steps->end(), std::int64_t{0});
    standing.water = co_await waterStanding();
    const AchievementTexts texts = application_.achievementTexts();
    for (const Achievement& badge : *managers_.achievements.achievements) {
        if (badge.isUnlocked) {
            standing.badges.push_back({std::string(caseName(badge.key)), texts.title(badge.key)});
        }
    }
    co_return standing;
}

Task<std::optional<WaterStanding>> Watcher::waterStanding() const {
    // Who never notes what they drink wants no reminders either.
    HydrationManager& water = managers_.water.manager;
    if (!application_.linuxSettings().waterReminders) co_return std::nullopt;
    const Date now = application_.clock().now();
    const Interval lastWeek{now - week, now};
    const auto drinks = co_await water.fetchDrinks(lastWeek);
    if (drinks.empty()) co_return std::nullopt;
    const VolumeUnit preferred = application_.settings().preferences().volumeUnit;
    const VolumeUnit unit = water.settings().volumeUnit.value_or(preferred);
    const Screen screen = application_.screen();
    co_return WaterStanding{.isGoalMet = water.todayMilliliters >= water.goalMilliliters,
                            .drunk = screen.figures.volume(water.todayMilliliters, unit),
                            .goal = screen.figures.volume(water.goalMilliliters, unit)};
}

}  // namespace pedvar
