/// Services that a phone has and this machine does not.
#pragma once

#include "platform/cloud_settings.h"
#include "platform/haptics.h"
#include "platform/live_activity.h"
#include "platform/step_goal_notifications.h"
#include "platform/text_catalogue.h"
#include "platform/watch_link.h"

namespace pedvar {

/// Every text stays English.
class EnglishTexts : public TextCatalogue {
public:
    std::string text(std::string_view english) const override { return std::string(english); }
};

/// No cloud carries settings, so pushed ones stay on this machine.
class NoCloudSettings : public CloudSettings {
public:
    void pushDistanceUnit(std::string_view) override {}
    void pushStepColor(std::string_view) override {}
    void pushAppLanguage(std::string_view) override {}
    void pushTheme(std::string_view) override {}
    void pushDailyStepGoal(std::int64_t) override {}
};

/// No watch is paired, so nobody is told of changes.
class NoWatchLink : public WatchLink {
public:
    void valuesChanged() override {}
};

/// Nothing shakes.
class NoHaptics : public Haptics {
public:
    void notify(NotificationFeedback) override {}
    void impact(ImpactStyle) override {}
};

/// No surface shows a recording but the program itself.
class NoLiveActivity : public LiveActivity {
public:
    void start(const LiveActivityState&) override {}
    void update(const LiveActivityState&) override {}
    void end() override {}
};

/// No notifications are shown, so progress towards the goal is not followed.
class NoStepGoalNotifications : public StepGoalNotifications {
public:
    void goalProgressed(std::int64_t, std::int64_t) override {}
};

}  // namespace pedvar
