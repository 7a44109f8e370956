#include "companion/preferences_sync.h"

#include "core/record.h"

#include <utility>

namespace pedvar {

void PreferencesSync::sync() {
    const UserPreferences preferences = settings_.preferences();
    cloud_.pushTheme(caseName(preferences.theme));
    const bool isNewLanguage = group_.saveAppLanguage(settings_.languageCode());
    auto document = encodeJson(preferences);
    const bool areNewPreferences = document && group_.savePreferencesData(Data{std::move(*document)});
    if (isNewLanguage || areNewPreferences) widgets_.reloadAllTimelines();
}

DefaultsResult PreferencesSync::changePreferences(const std::function<void(UserPreferences&)>& edit) {
    const UserPreferences before = settings_.preferences();
    if (auto result = settings_.changePreferences(edit); !result) return result;
    const UserPreferences preferences = settings_.preferences();
    if (preferences.preferredStepColor != before.preferredStepColor) {
        cloud_.pushStepColor(caseName(preferences.preferredStepColor));
    }
    sync();
    // The shared values were written with the stored ones, so that `sync` found nothing new.
    if (preferences != before) widgets_.reloadAllTimelines();
    return {};
}

DefaultsResult PreferencesSync::setDailyGoal(std::int64_t goal, Day today) {
    if (auto result = settings_.setDailyGoal(goal, today); !result) return result;
    cloud_.pushDailyStepGoal(goal);
    widgets_.reloadAllTimelines();
    return {};
}

}  // namespace pedvar
