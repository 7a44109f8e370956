#include "achievements/achievements_store.h"

#include "achievements/achievement_catalogue.h"
#include "core/record_reader.h"
#include "health/health_diagnostics.h"
#include "health/streak_memory.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

using Key = Achievement::Key;

constexpr std::string_view snapshotKey = "awardsSnapshot";
constexpr std::string_view stepMemoryKey = "awardsOfSteps";
constexpr std::string_view distanceMemoryKey = "awardsOfDistances";
constexpr std::chrono::days oneDay{1};
constexpr std::chrono::days daysPerRead{366};  // what is read at once stays small, however long the history

HKQuantityType stepType() {
    return {HKQuantityTypeIdentifierStepCount};
}
HKQuantityType distanceType() {
    return {HKQuantityTypeIdentifierDistanceWalkingRunning};
}

/// `found` with what was unlocked before. Of two days of one zone the earlier counts.
Achievement joined(Achievement found, const Achievement& before, bool isSameZone) {
    if (!before.isUnlocked) return found;
    const bool wasEarlier = isSameZone && before.unlockedDate && before.unlockedDate < found.unlockedDate;
    if (!found.isUnlocked || wasEarlier) found.unlockedDate = before.unlockedDate;
    found.isUnlocked = true;
    return found;
}

std::vector<Achievement> joined(std::vector<Achievement> found, const AchievementsSnapshot& before,
                                const std::string& zone) {
    for (Achievement& achievement : found) {
        const auto known = std::ranges::find(before.achievements, achievement.key, &Achievement::key);
        if (known != before.achievements.end()) {
            achievement = joined(std::move(achievement), *known, before.zone == zone);
        }
    }
    return found;
}

}  // namespace

AchievementsStore::AchievementsStore(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                                     ActivityReads& reads, const SettingsStore& settings,
                                     DefaultsDomains& defaults, PlatformLog& log)
    : executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      reads_(reads),
      settings_(settings),
      defaults_(defaults),
      log_(log) {
    snapshot_ = stored().value_or(AchievementsSnapshot{});
    achievements = joined(catalogue(), snapshot_, snapshot_.zone);
}

std::optional<AchievementsSnapshot> AchievementsStore::stored() const {
    const auto data = defaults_.standard().data(snapshotKey);
    return data ? readJson<AchievementsSnapshot>(data->bytes) : std::nullopt;
}

Task<> AchievementsStore::evaluate() {
    const Day today = settings_.calendar().day(clock_.now());
    steps_ = co_await evaluateSteps(today);
    distances_ = co_await evaluateDistances(today);
    judged_.reset();
    if (!steps_ || !distances_) co_return;
    judged_ = judged(steps_->all, distances_->all, today);

    auto snapshot = snapshot_;
    for (Achievement& achievement : snapshot.achievements) {  // of another moment than the present
        if (achievement.unlockedDate > clock_.now()) achievement.isUnlocked = false;
    }
    achievements = joined(*judged_, snapshot, settings_.calendar().zoneName());
}

Task<DefaultsResult> AchievementsStore::remember() {
    co_await keep(stepMemoryKey, stepType(), std::exchange(steps_, std::nullopt));
    co_await keep(distanceMemoryKey, distanceType(), std::exchange(distances_, std::nullopt));
    const auto found = std::exchange(judged_, std::nullopt);
    if (!found) co_return DefaultsResult();

    const std::string zone = settings_.calendar().zoneName();
    const auto next = [&](const std::optional<AchievementsSnapshot>& before) {
        return AchievementsSnapshot{zone, joined(*found, before.value_or(AchievementsSnapshot{}), zone)};
    };
    if (const auto before = stored(); before && *before == next(before)) co_return DefaultsResult();

    std::vector<Achievement> news;
    const auto saved = defaults_.update([&] {
        const UserDefaults& store = defaults_.standard();
        const auto before = stored();
        AchievementsSnapshot after = next(before);
        std::vector<DefaultsChange> changes{{&store, std::string(snapshotKey), Data{*encodeJson(after)}}};
        if (!before) {
            if (auto kept = setAside(store, snapshotKey)) changes.push_back(std::move(*kept));
        }
        snapshot_ = after;
        news.clear();
        for (Achievement& achievement : after.achievements) {
            const auto isThis = [&](const Achievement& other) {
                return other.key == achievement.key && other.isUnlocked;
            };
            const bool wasUnlocked = before && std::ranges::any_of(before->achievements, isThis);
            if (before && achievement.isUnlocked && !wasUnlocked) news.push_back(std::move(achievement));
        }
        return changes;
    });
    if (saved && !news.empty()) unlocked.notify(news);
    co_return saved;
}

template <class Tally>
Task<Evaluated<Tally>> AchievementsStore::recall(std::string_view key, HKQuantityType type, Day today) {
    Evaluated<Tally> known{.all = {}, .before = {}, .until = today};
    Completion<HKResult<RecalledText>> answer(executor_);
    healthStore_.recall(std::string(key), type, answer.resolver());
    const auto recalled = co_await answer;
    if (recalled) known.state = recalled->state;
    const auto memory =
        recalled && recalled->text ? settings_.decode<TallyMemory<Tally>>(*recalled->text) : std::nullopt;
    const auto until = memory ? parseDay(memory->until) : std::nullopt;
    if (until && *until <= today && memory->basis == basis(memory->tally, *until)) {
        known.all = known.before = memory->tally;
        known.until = *until;
    } else {
        const auto oldest = co_await reads_.fetchOldestDate(type, clock_.now(), QueryPriority::normal);
        if (oldest) known.until = settings_.calendar().day(*oldest);
        known.isNews = recalled && oldest;
    }
    co_return known;
}

Task<std::optional<Evaluated<StepTally>>> AchievementsStore::evaluateSteps(Day today) {
    const Calendar calendar = settings_.calendar();
    const GoalHistory goals = settings_.goalHistory();
    auto evaluated = co_await recall<StepTally>(stepMemoryKey, stepType(), today);
    for (Day first = evaluated.until; first <= today; first += daysPerRead) {
        const Day last = std::min(today, first + daysPerRead - oneDay);
        const auto steps = co_await reads_.fetchDailySteps(first, last, calendar, QueryPriority::normal);
        const auto hours = co_await reads_.fetchHourlySteps(first, last, calendar, QueryPriority::normal);
        if (!steps || !hours || steps->size() != hours->size()) co_return std::nullopt;
        for (std::size_t i = 0; i < steps->size(); ++i) {
            const Day day = first + std::chrono::days(i);
            if ((*steps)[i] > 0) evaluated.startDay(day);
            evaluated.all.add({day, (*steps)[i], (*hours)[i], goals.goalOn(day)}, calendar);
        }
    }
    co_return evaluated;
}

Task<std::optional<Evaluated<BadgeMarks>>> AchievementsStore::evaluateDistances(Day today) {
    const Calendar calendar = settings_.calendar();
    auto evaluated = co_await recall<BadgeMarks>(distanceMemoryKey, distanceType(), today);
    for (Day first = evaluated.until; first <= today; first += daysPerRead) {
        const Day last = std::min(today, first + daysPerRead - oneDay);
        const auto distances =
            co_await reads_.fetchDayTotals(ActivityMetric::distance, first, last, calendar, QueryPriority::normal);
        if (!distances) co_return std::nullopt;
        for (std::size_t i = 0; i < distances->size(); ++i) {
            const Day day = first + std::chrono::days(i);
            if ((*distances)[i]) evaluated.startDay(day);
            addDistance(evaluated.all, day, (*distances)[i].value_or(0));
        }
    }
    co_return evaluated;
}

template <class Tally>
Task<> AchievementsStore::keep(std::string_view key, HKQuantityType type,
                               std::optional<Evaluated<Tally>> evaluated) {
    if (!evaluated || !evaluated->isNews) co_return;
    const TallyMemory<Tally> memory{isoText(evaluated->until), basis(evaluated->before, evaluated->until),
                                    evaluated->before};
    DerivedDocument document{std::string(key), std::move(type), settings_.calendar().start(evaluated->until),
                             *encodeJson(memory)};
    Completion<HKResult<void>> answer(executor_);
    healthStore_.keep(std::move(document), evaluated->state, answer.resolver());
    const auto kept = co_await answer;
    if (!kept) {
        log_.log(logSubsystem, "Achievements", LogLevel::error,
                 "badges not remembered: " + describe(kept.error()));
    }
}

std::string AchievementsStore::basis(const StepTally&, Day until) const {
    const Calendar calendar = settings_.calendar();
    return calendar.zoneName() + " " + std::to_string(calendar.firstWeekday()) + " " +
           describe(settings_.goalHistory(), until);
}

std::string AchievementsStore::basis(const BadgeMarks&, Day) const {
    return settings_.calendar().zoneName();
}

std::vector<Achievement> AchievementsStore::judged(const StepTally& steps, const BadgeMarks& distances,
                                                   Day today) const {
    const Calendar calendar = settings_.calendar();
    const std::int64_t goal = settings_.goalHistory().goalOn(today);
    auto found = catalogue();
    for (Achievement& achievement : found) {
        const bool isOfDistance = achievement.category == Achievement::AchievementCategory::distance;
        const BadgeMarks& marks = isOfDistance ? distances : steps.marks;
        achievement.progress = marks.progressOf(achievement.key);
        if (achievement.key == Key::doubleTrouble || achievement.key == Key::tripleThreat) {
            achievement.requirement = (achievement.key == Key::doubleTrouble ? 2 : 3) * goal;
            achievement.progress = steps.bestRelativeTo(goal);
        }
        if (const auto day = marks.dayOf(achievement.key)) {
            achievement.isUnlocked = true;
            achievement.unlockedDate = calendar.start(*day);
        }
    }
    return found;
}

}  // namespace pedvar
