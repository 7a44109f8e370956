#include "engagement/step_goal_notification_manager.h"

#include "core/reflection.h"
#include "platform/language_habits.h"
#include "platform/phrase.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr std::chrono::days oneDay{1};
constexpr double daysOfWeek = 7;
constexpr std::string_view toldBadgesKey = "toldBadges";

std::string markKey(NotificationKind kind) {
    return "notificationShown." + std::string(caseName(kind));
}

constexpr NotificationKind waterKinds[] = {NotificationKind::morningWater, NotificationKind::noonWater,
                                           NotificationKind::afternoonWater, NotificationKind::eveningWater};

}  // namespace

StepGoalNotificationManager::StepGoalNotificationManager(const Clock& clock, const SettingsStore& settings,
                                                         DefaultsDomains& defaults, const TextCatalogue& texts,
                                                         const Locale& locale, UserNotifications& notifications,
                                                         PlatformLog& log)
    : clock_(clock),
      settings_(settings),
      defaults_(defaults),
      texts_(texts),
      locale_(locale),
      notifications_(notifications),
      log_(log) {}

void StepGoalNotificationManager::goalProgressed(std::int64_t todaySteps, std::int64_t dailyGoal) {
    progress_ = Progress{today(), todaySteps, dailyGoal};
    const bool isMet = todaySteps >= dailyGoal;
    if (isMet && isWanted(&UserPreferences::goalAchievedAlertEnabled) && isDue(NotificationKind::goalAchieved)) {
        const Phrase body{"Steps today: {0}. Your goal was {1}.", {number(todaySteps), number(dailyGoal)}};
        show(NotificationKind::goalAchieved, texts_.text("Goal achieved"), body.in(texts_));
    }
    const bool isClose = static_cast<double>(todaySteps) >= closeShare * static_cast<double>(dailyGoal);
    if (!isMet && isClose && isWanted(&UserPreferences::closeToGoalReminderEnabled) &&
        isDue(NotificationKind::closeToGoal)) {
        show(NotificationKind::closeToGoal, texts_.text("Close to your goal"), stepsToGo(*progress_));
    }
}

void StepGoalNotificationManager::consider(const DayStanding& standing) {
    if (progress_ && progress_->day == today()) considerSteps(*progress_, standing);
    considerWeek(standing);
    if (standing.water) considerWater(*standing.water);
    considerBadges(standing.badges);
}

void StepGoalNotificationManager::considerSteps(const Progress& progress, const DayStanding& standing) {
    const bool hasStreak = standing.streak > 0;
    if (isWanted(&UserPreferences::morningMotivationEnabled) && isDue(NotificationKind::morningMotivation)) {
        const Phrase goal{"Today's goal: {} steps.", {number(progress.goal)}};
        const Phrase streak{"Today's goal: {0} steps. Days in a row so far: {1}.",
                            {number(progress.goal), number(standing.streak)}};
        show(NotificationKind::morningMotivation, texts_.text("Good morning"),
             (hasStreak ? streak : goal).in(texts_));
    }
    if (progress.steps >= progress.goal) return;
    if (isWanted(&UserPreferences::eveningReminderEnabled) && isDue(NotificationKind::eveningReminder)) {
        show(NotificationKind::eveningReminder, texts_.text("How about a walk?"), stepsToGo(progress));
    }
    if (hasStreak && isWanted(&UserPreferences::streakProtectionEnabled) &&
        isDue(NotificationKind::streakInDanger)) {
        const Phrase body{
            "Days in a row so far: {0}. Still to go today: {1} of {2} steps.",
            {number(standing.streak), number(progress.goal - progress.steps), number(progress.goal)}};
        show(NotificationKind::streakInDanger, texts_.text("Your streak is in danger"), body.in(texts_));
    }
}

void StepGoalNotificationManager::considerWeek(const DayStanding& standing) {
    if (standing.lastWeekSteps <= 0) return;
    if (!isWanted(&UserPreferences::weeklyRecapEnabled) || !isDue(NotificationKind::weeklyRecap)) return;
    const Phrase body{"Steps last week: {0}, on average {1} a day.",
                      {number(standing.lastWeekSteps),
                       numbers().number(static_cast<double>(standing.lastWeekSteps) / daysOfWeek, 0)}};
    show(NotificationKind::weeklyRecap, texts_.text("Your week"), body.in(texts_));
}

void StepGoalNotificationManager::considerWater(const WaterStanding& water) {
    if (water.isGoalMet || !settings_.preferences().notificationsEnabled) return;
    const auto kind = std::ranges::find_if(waterKinds, [this](NotificationKind each) { return isDue(each); });
    if (kind == std::end(waterKinds)) return;
    const Phrase body{"Water so far today: {0} of {1}.", {water.drunk, water.goal}};
    show(*kind, texts_.text("Time to drink"), body.in(texts_));
}

void StepGoalNotificationManager::considerBadges(const std::vector<UnlockedBadge>& badges) {
    std::vector<std::string> keys;
    for (const UnlockedBadge& badge : badges) keys.push_back(badge.key);
    const DefaultsChange remember{&defaults_.standard(), std::string(toldBadgesKey), Data{*encodeJson(keys)}};
    const auto stored = defaults_.standard().data(toldBadgesKey);
    const auto told = stored ? settings_.decode<std::vector<std::string>>(stored->bytes) : std::nullopt;
    if (!told) {  // those that were there before anybody could tell of them
        store({remember});
        return;
    }
    std::string titles;
    int count = 0;
    for (const UnlockedBadge& badge : badges) {
        if (std::ranges::find(*told, badge.key) != told->end()) continue;
        titles += (++count > 1 ? ", " : "") + badge.title;
    }
    if (count == 0 || !settings_.preferences().notificationsEnabled || !isDue(NotificationKind::newBadges)) return;
    show(NotificationKind::newBadges, count > 1 ? texts_.text("New badges") : texts_.text("New badge"),
         std::move(titles), {remember});
}

std::string StepGoalNotificationManager::stepsToGo(const Progress& progress) const {
    const Phrase text{"Still to go: {0} of {1} steps.",
                      {number(progress.goal - progress.steps), number(progress.goal)}};
    return text.in(texts_);
}

NumberFormat StepGoalNotificationManager::numbers() const {
    return NumberFormat(LanguageLocale(locale_, names(settings_.preferences().appLanguage).code));
}

bool StepGoalNotificationManager::isWanted(bool UserPreferences::* toggle) const {
    const UserPreferences preferences = settings_.preferences();
    return preferences.notificationsEnabled && preferences.*toggle;
}

bool StepGoalNotificationManager::isDue(NotificationKind kind) const {
    if (unheard_.contains(kind)) return false;
    const Calendar calendar = settings_.calendar();
    const Date now = clock_.now();
    if (!isItsTime(kind, calendar.localTime(now) - LocalTime(calendar.day(now)))) return false;
    const auto mark = defaults_.standard().text(markKey(kind));
    const auto shown = mark ? parseDay(*mark) : std::nullopt;
    // Who travels west lives a day again.
    return !shown || (*shown != period(kind) && *shown != today() + oneDay);
}

Day StepGoalNotificationManager::period(NotificationKind kind) const {
    return kind == NotificationKind::weeklyRecap ? settings_.calendar().weekStart(today()) : today();
}

void StepGoalNotificationManager::show(NotificationKind kind, std::string title, std::string body,
                                       std::vector<DefaultsChange> more) {
    // Stored first: what is told twice annoys more than what is not told.
    std::vector<DefaultsChange> marks = std::move(more);
    marks.push_back({&defaults_.standard(), markKey(kind), isoText(period(kind))});
    std::vector<DefaultsChange> before;
    for (const DefaultsChange& mark : marks) before.push_back({mark.store, mark.key, mark.store->value(mark.key)});
    if (!store(marks)) return;
    UserNotification notification{std::string(caseName(kind)), std::move(title), std::move(body)};
    notifications_.show(std::move(notification), [this, kind, before = std::move(before)](const auto& shown) {
        if (shown) return;
        unheard_.insert(kind);
        store(before);
    });
}

bool StepGoalNotificationManager::store(const std::vector<DefaultsChange>& changes) {
    const auto result = defaults_.write(changes);
    if (!result) log_.log(logSubsystem, "Notifications", LogLevel::error, result.error().message.inEnglish());
    return result.has_value();
}

}  // namespace pedvar
