/// Services that a phone has and this machine does not.
#pragma once

#include "platform/cloud_settings.h"
#include "platform/haptics.h"
#include "platform/live_activity.h"
#include "platform/pedometer.h"
#include "platform/watch_link.h"

namespace pedvar {

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

/// No step counter is there.
class NoPedometer : public CMPedometer {
public:
    bool isStepCountingAvailable() const override { return false; }
    CMAuthorizationStatus authorizationStatus() const override { return CMAuthorizationStatus::notDetermined; }
    void startUpdates(Date, std::int64_t, CMPedometerHandler) override {}
    void detach() override {}
    void stopUpdates() override {}
};

/// No surface shows a recording but the program itself.
class NoLiveActivity : public LiveActivity {
public:
    void start(const LiveActivityState&) override {}
    void update(const LiveActivityState&) override {}
    void end() override {}
};

}  // namespace pedvar
