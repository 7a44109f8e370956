#include "engagement/rate_us_manager.h"

#include <string>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view hasRatedKey = "hasRatedApp";
constexpr std::string_view maybeLaterCountKey = "rateUsMaybeLaterCount";
constexpr std::string_view lastPromptDateKey = "rateUsLastPromptDate";
constexpr std::string_view opensUntilNextPromptKey = "opensUntilNextPrompt";
constexpr std::string_view isFirstLaunchKey = "rateUsIsFirstLaunch";
constexpr std::string_view popupScheduledKey = "rateUsPopupScheduled";

}  // namespace

RateUsManager::RateUsManager(MainExecutor& executor, const Clock& clock, const SettingsStore& settings,
                             DefaultsDomains& defaults, StoreAddressSource addresses, WebPages& pages,
                             PlatformLog& log)
    : executor_(executor),
      clock_(clock),
      settings_(settings),
      defaults_(defaults),
      addresses_(std::move(addresses)),
      pages_(pages),
      log_(log) {}

void RateUsManager::appDidOpen() {
    if (addresses_().review.empty()) return;
    if (flag(hasRatedKey)) return;
    if (defaults_.standard().integer(maybeLaterCountKey).value_or(0) >= maxMaybeLaterCount) return;
    if (flag(popupScheduledKey)) return;
    const std::int64_t opens = opensUntilNextPrompt();
    if (opens > 1) {
        store({change(opensUntilNextPromptKey, opens - 1)});
        return;
    }
    store({change(opensUntilNextPromptKey, std::int64_t{0})});
    const auto days = daysSinceLastPrompt();
    if (!days || *days >= minimumDaysBetweenPrompts) schedulePopup();
}

std::int64_t RateUsManager::opensUntilNextPrompt() {
    const std::int64_t opens = defaults_.standard().integer(opensUntilNextPromptKey).value_or(0);
    if (opens != 0 || flag(isFirstLaunchKey)) return opens;
    store({change(isFirstLaunchKey, true), change(opensUntilNextPromptKey, initialOpensRequired)});
    return initialOpensRequired;
}

std::optional<std::int64_t> RateUsManager::daysSinceLastPrompt() const {
    const auto stored = defaults_.standard().value(lastPromptDateKey);
    const Date* const last = stored ? std::get_if<Date>(&*stored) : nullptr;
    if (!last) return std::nullopt;
    const Date now = clock_.now();
    const Calendar calendar = settings_.calendar();
    const LocalTime then = calendar.localTime(*last);
    auto days = std::chrono::floor<std::chrono::days>(calendar.localTime(now)) -
                std::chrono::floor<std::chrono::days>(then);
    // The last of these days is not whole before the clocks show the same time again.
    if (calendar.instant(then + days) > now) days -= std::chrono::days(1);
    return days.count();
}

void RateUsManager::schedulePopup() {
    store({change(popupScheduledKey, true)});
    popupWorkItem_ = executor_.after(Seconds(popupDelaySeconds), [this] {
        popupWorkItem_.cancel();
        store({change(popupScheduledKey, false)});
        shouldShowPopup = true;
    });
}

void RateUsManager::maybeLater() {
    const std::int64_t count = defaults_.standard().integer(maybeLaterCountKey).value_or(0);
    store({change(maybeLaterCountKey, count + 1), change(lastPromptDateKey, clock_.now()),
           change(opensUntilNextPromptKey, subsequentOpensRequired), change(popupScheduledKey, false)});
    endPopup();
}

void RateUsManager::rateNow() {
    store({change(hasRatedKey, true), change(popupScheduledKey, false)});
    endPopup();
    const std::string page = addresses_().review;
    if (page.empty() || pages_.open(withQuery(page, "action", "write-review"))) return;
    log_.log(logSubsystem, "RateUs", LogLevel::error, "There is no browser to open " + page + " with.");
}

void RateUsManager::endPopup() {
    popupWorkItem_.cancel();
    shouldShowPopup = false;
}

bool RateUsManager::flag(std::string_view key) const {
    const auto stored = defaults_.standard().value(key);
    const bool* const value = stored ? std::get_if<bool>(&*stored) : nullptr;
    return value && *value;
}

DefaultsChange RateUsManager::change(std::string_view key, DefaultsValue value) const {
    return {&defaults_.standard(), std::string(key), std::move(value)};
}

void RateUsManager::store(const std::vector<DefaultsChange>& changes) {
    const auto result = defaults_.write(changes);
    if (!result) log_.log(logSubsystem, "RateUs", LogLevel::error, result.error().message.inEnglish());
}

}  // namespace pedvar
