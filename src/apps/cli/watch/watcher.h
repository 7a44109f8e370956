/// The part of the program that stays.
#pragma once

#include "apps/cli/application.h"
#include "apps/cli/watch/drop_folder.h"
#include "apps/cli/watch/prompts.h"
#include "core/coalesced_work.h"
#include "engagement/step_goal_notification_manager.h"
#include "health/step_ingestion.h"
#include "linux/steps/iio_step_counter.h"
#include "linux/system/folder_watch.h"
#include "linux/system/readiness.h"
#include "linux/system/wall_clock_alarm.h"

#include <memory>
#include <optional>

namespace pedvar {

class Companion;
class Engagement;
class Health;
struct Insights;
class Water;

/// The managers that a watcher needs, all open.
struct WatchedManagers {
    Health& health;
    Insights& insights;
    AchievementsStore& achievements;
    Water& water;
    Engagement& engagement;
};
CommandResult<WatchedManagers> watchedManagers(Application& application);

/// Takes steps into the store, keeps everything that follows from the data up to date, whoever writes it, and
/// tells the person of their day. Sleeps until something happens or is due.
class Watcher {
public:
    enum class Ending {
        asked,        // by the person or the system
        zoneChanged,  // the machine has another time zone, so everything is to be built anew
    };
    /// Whether the person has just come, or the zone has changed under a watcher.
    enum class Beginning { opened, continued };

    /// Keeps the references.
    Watcher(Application& application, const WatchedManagers& managers, UserNotifications& notifications,
            Readiness& readiness, Beginning beginning);

    Task<Ending> run();
    /// Ends `run`.
    void end(Ending ending);

private:
    void watchFiles();
    void somethingWasWritten(const std::vector<std::string>& names);
    void lookAtZone();
    void followDropFolder();
    /// Tells what could not be told before.
    void tryAgain();
    Task<> refresh();
    Task<DayStanding> standing();
    Task<std::optional<WaterStanding>> waterStanding() const;
    /// The person has the application before them again: at the beginning, and on each new day.
    void open();

    Application& application_;
    WatchedManagers managers_;
    Readiness& readiness_;
    IIOStepCounter counter_;
    StepIngestion ingestion_;
    StepGoalNotificationManager teller_;
    Prompts prompts_;
    Subscription goalProgressed_, ingestionProblem_, notificationsAvailable_;
    WallClockAlarm alarm_;
    std::unique_ptr<FolderWatch> dataWatch_, zoneWatch_;
    std::unique_ptr<DropFolder> dropFolder_;
    std::optional<Day> openedOn_;
    Timer changed_, zoneChanged_;
    Completion<Ending> ended_;
    CoalescedWork refreshes_;
    TaskScope tasks_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
