/// The surfaces beside the program. Each says in `trace` what it is told.
#pragma once

#include "core/reflection.h"
#include "platform/cloud_settings.h"
#include "platform/haptics.h"
#include "platform/live_activity.h"
#include "platform/step_goal_notifications.h"
#include "platform/watch_link.h"
#include "platform/widget_center.h"

#include <string>
#include <vector>

namespace pedvar {

class FakeWidgetCenter : public WidgetCenter {
public:
    explicit FakeWidgetCenter(std::vector<std::string>& trace) : trace_(trace) {}
    void reloadAllTimelines() override { trace_.emplace_back("reload"); }

private:
    std::vector<std::string>& trace_;
};

class FakeWatchLink : public WatchLink {
public:
    explicit FakeWatchLink(std::vector<std::string>& trace) : trace_(trace) {}
    void valuesChanged() override { trace_.emplace_back("watch"); }

private:
    std::vector<std::string>& trace_;
};

class FakeHaptics : public Haptics {
public:
    explicit FakeHaptics(std::vector<std::string>& trace) : trace_(trace) {}
    void notify(NotificationFeedback feedback) override {
        trace_.push_back("haptic " + std::string(caseName(feedback)));
    }
    void impact(ImpactStyle style) override { trace_.push_back("haptic " + std::string(caseName(style))); }

private:
    std::vector<std::string>& trace_;
};

class FakeLiveActivity : public LiveActivity {
public:
    explicit FakeLiveActivity(std::vector<std::string>& trace) : trace_(trace) {}
    void start(const LiveActivityState&) override { trace_.emplace_back("live start"); }
    void update(const LiveActivityState& shown) override {
        trace_.emplace_back(shown.isPaused ? "live update, paused" : "live update");
        state = shown;
    }
    void end() override { trace_.emplace_back("live end"); }

    LiveActivityState state;

private:
    std::vector<std::string>& trace_;
};

class FakeCloudSettings : public CloudSettings {
public:
    explicit FakeCloudSettings(std::vector<std::string>& trace) : trace_(trace) {}
    void pushDistanceUnit(std::string_view unit) override { push("unit", unit); }
    void pushStepColor(std::string_view color) override { push("color", color); }
    void pushAppLanguage(std::string_view code) override { push("language", code); }
    void pushTheme(std::string_view theme) override { push("theme", theme); }
    void pushDailyStepGoal(std::int64_t goal) override { push("goal", std::to_string(goal)); }

private:
    void push(std::string_view name, std::string_view value) {
        trace_.push_back("cloud " + std::string(name) + " " + std::string(value));
    }

    std::vector<std::string>& trace_;
};

class FakeStepGoalNotifications : public StepGoalNotifications {
public:
    explicit FakeStepGoalNotifications(std::vector<std::string>& trace) : trace_(trace) {}
    void goalProgressed(std::int64_t steps, std::int64_t goal) override {
        trace_.push_back("progress " + std::to_string(steps) + "/" + std::to_string(goal));
    }

private:
    std::vector<std::string>& trace_;
};

}  // namespace pedvar
