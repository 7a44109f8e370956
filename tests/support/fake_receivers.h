/// A receiver and a step counter that tests speak for.
#pragma once

#include "core/check.h"
#include "platform/location_manager.h"
#include "platform/pedometer.h"

#include <optional>
#include <utility>

namespace pedvar {

class FakeLocationManager : public CLLocationManager {
public:
    CLAuthorizationStatus status = CLAuthorizationStatus::authorizedWhenInUse;
    int authorizationRequests = 0;
    std::optional<CLLocationSettings> settings;
    bool updatesLocation = false;
    bool updatesHeading = false;

    /// Tells the delegate, whether updates run or not.
    void send(const CLLocation& location) {
        if (delegate_) delegate_->didUpdateLocations({&location, 1});
    }
    void answer(CLAuthorizationStatus answer) {
        status = answer;
        if (delegate_) delegate_->didChangeAuthorization(answer);
    }

    void setDelegate(CLLocationManagerDelegate* delegate) override { delegate_ = delegate; }
    CLAuthorizationStatus authorizationStatus() const override { return status; }
    void requestWhenInUseAuthorization() override { ++authorizationRequests; }
    void configure(const CLLocationSettings& asked) override { settings = asked; }
    void startUpdatingLocation() override { updatesLocation = true; }
    void stopUpdatingLocation() override { updatesLocation = false; }
    void startUpdatingHeading() override { updatesHeading = true; }
    void stopUpdatingHeading() override { updatesHeading = false; }

private:
    CLLocationManagerDelegate* delegate_ = nullptr;
};

class FakePedometer : public CMPedometer {
public:
    ~FakePedometer() override { check(!handler_, "a handler outlives the one who waited"); }

    bool isAvailable = true;
    CMAuthorizationStatus status = CMAuthorizationStatus::authorized;
    std::optional<Date> start;  // while it counts
    std::int64_t known = 0;     // that it was asked to go on from

    void count(std::int64_t steps) {
        if (handler_) handler_(CMPedometerData{*start, *start, steps});
    }
    void fail(const char* reason) {
        if (handler_) handler_(std::unexpected(CMError{reason}));
    }

    bool isStepCountingAvailable() const override { return isAvailable; }
    CMAuthorizationStatus authorizationStatus() const override { return status; }
    void startUpdates(Date from, std::int64_t steps, CMPedometerHandler handler) override {
        start = from;
        known = steps;
        handler_ = std::move(handler);
    }
    void detach() override { handler_ = nullptr; }
    void stopUpdates() override {
        start.reset();
        handler_ = nullptr;
    }

private:
    CMPedometerHandler handler_;
};

}  // namespace pedvar
