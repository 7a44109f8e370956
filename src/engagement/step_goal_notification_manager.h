/// What the person is told of their day.
#pragma once

#include "core/executor.h"
#include "engagement/notification_schedule.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/number_format.h"
#include "platform/platform_log.h"
#include "platform/step_goal_notifications.h"
#include "platform/text_catalogue.h"
#include "platform/user_defaults.h"
#include "platform/user_notifications.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Today's water, the amounts as the person reads them.
struct WaterStanding {
    bool isGoalMet = false;
    std::string drunk;
    std::string goal;
};

/// A badge that the person has.
struct UnlockedBadge {
    std::string key;
    std::string title;
};

/// How things stand beside today's steps.
struct DayStanding {
    std::int64_t streak = 0;              // days in a row up to today, or yesterday while today's goal is not met
    std::int64_t lastWeekSteps = 0;       // of the seven days before this week
    std::optional<WaterStanding> water;   // none for who does not want to be reminded
    std::vector<UnlockedBadge> badges{};  // all of them
};

/// Decides what the person is told, by the switches of the preferences. What was shown is stored, so that no other
/// process tells it again. What cannot be shown waits for `tryAgain`, so that each failure costs two writes and no
/// more. Lives on the main executor.
class StepGoalNotificationManager : public StepGoalNotifications {
public:
    static constexpr double closeShare = 0.8;  // of the goal

    /// `notifications` answers nothing any more once the manager is gone.
    StepGoalNotificationManager(const Clock& clock, const SettingsStore& settings, DefaultsDomains& defaults,
                                const TextCatalogue& texts, const Locale& locale, UserNotifications& notifications,
                                PlatformLog& log);

    /// Tells of the goal, met or nearly.
    void goalProgressed(std::int64_t todaySteps, std::int64_t dailyGoal) override;

    /// Tells of everything else whose time has come. Steps are those of the last progress, if that was today.
    void consider(const DayStanding& standing);

    /// Lets `consider` and progress tell what could not be shown.
    void tryAgain() { unheard_.clear(); }

private:
    struct Progress {
        Day day;
        std::int64_t steps;
        std::int64_t goal;
    };

    void considerSteps(const Progress& progress, const DayStanding& standing);
    void considerWeek(const DayStanding& standing);
    void considerWater(const WaterStanding& water);
    void considerBadges(const std::vector<UnlockedBadge>& badges);

    bool isWanted(bool UserPreferences::* toggle) const;
    /// Whether `kind` may be shown now, was not shown in this period of it, and does not wait for `tryAgain`.
    bool isDue(NotificationKind kind) const;
    /// The first day of the present period of `kind`: today, or the beginning of the week.
    Day period(NotificationKind kind) const;
    /// Stores that it was shown, with `more`, and shows it; neither where one of the two fails.
    void show(NotificationKind kind, std::string title, std::string body, std::vector<DefaultsChange> more = {});
    bool store(const std::vector<DefaultsChange>& changes);

    std::string number(std::int64_t value) const { return numbers().number(value); }
    /// Those of the language that the preferences name now.
    NumberFormat numbers() const;
    std::string stepsToGo(const Progress& progress) const;
    Day today() const { return settings_.calendar().day(clock_.now()); }

    const Clock& clock_;
    const SettingsStore& settings_;
    DefaultsDomains& defaults_;
    const TextCatalogue& texts_;
    const Locale& locale_;
    UserNotifications& notifications_;
    PlatformLog& log_;
    std::optional<Progress> progress_;
    std::set<NotificationKind> unheard_;  // those that could not be shown
};

}  // namespace pedvar
