/// The receivers behind gpsd.
#pragma once

#include "core/executor.h"
#include "core/published.h"
#include "linux/location/gpsd_connection.h"
#include "linux/location/gpsd_report.h"
#include "platform/clock.h"
#include "platform/location_manager.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace pedvar {

/// How far the way from the satellites to us is open.
struct ReceiverCondition {
    enum class State { connecting, noDaemon, noReceiver, silent, noFix, fix };

    State state = State::connecting;
    Phrase reason;  // of `noDaemon`, for people
    bool operator==(const ReceiverCondition&) const = default;
};

/// How long is waited for what.
struct GpsdPatience {
    std::chrono::milliseconds reconnecting{2'000};  // between two attempts
    std::chrono::milliseconds silence{10'000};      // until a receiver is called silent, or its fix lost
    std::chrono::milliseconds dead{30'000};         // until a silent connection is made anew
};

/// Listens on a thread of its own while location updates run, and connects again when the daemon has gone. Where
/// there are several receivers, the first with a fix is listened to for as long as it has one. Nobody has to be
/// asked for permission.
class GpsdLocationManager : public CLLocationManager {
public:
    /// Keeps the references.
    GpsdLocationManager(MainExecutor& executor, const Clock& clock, GpsdAddress address,
                        const AccuracyFactors& factors, const GpsdPatience& patience = {});
    GpsdLocationManager(const GpsdLocationManager&) = delete;
    GpsdLocationManager& operator=(const GpsdLocationManager&) = delete;
    ~GpsdLocationManager() override;

    Published<ReceiverCondition> condition;
    /// By how much the receiver's clock is ahead of ours, once that has been more than fixes may be old for a
    /// while; none when it is less again.
    Published<std::optional<Seconds>> clockDifference;

    void setDelegate(CLLocationManagerDelegate* delegate) override { delegate_ = delegate; }
    CLAuthorizationStatus authorizationStatus() const override { return CLAuthorizationStatus::authorizedAlways; }
    void requestWhenInUseAuthorization() override {}
    void configure(const CLLocationSettings&) override {}  // gpsd tells all that it knows
    void startUpdatingLocation() override;
    void stopUpdatingLocation() override;
    void startUpdatingHeading() override {}
    void stopUpdatingHeading() override {}

private:
    class Listener;

    void take(const GpsdReport& report);
    void watchClock(Date time, Date arrival);

    MainExecutor& executor_;
    const Clock& clock_;
    GpsdAddress address_;
    AccuracyFactors factors_;
    GpsdPatience patience_;
    CLLocationManagerDelegate* delegate_ = nullptr;
    std::optional<Date> clocksDifferSince_;
    std::shared_ptr<Listener> listener_;  // while updates run
};

}  // namespace pedvar
