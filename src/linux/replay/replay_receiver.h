/// A receiver that receives what has been recorded.
#pragma once

#include "platform/location_manager.h"

#include <span>

namespace pedvar {

class ReplayReceiver : public CLLocationManager {
public:
    /// A fix that comes while no updates are wanted is lost, as with a real receiver.
    void receive(const CLLocation& location) {
        if (isUpdating_ && delegate_) delegate_->didUpdateLocations({&location, 1});
    }

    void setDelegate(CLLocationManagerDelegate* delegate) override { delegate_ = delegate; }
    CLAuthorizationStatus authorizationStatus() const override { return CLAuthorizationStatus::authorizedAlways; }
    void requestWhenInUseAuthorization() override {}
    void configure(const CLLocationSettings&) override {}
    void startUpdatingLocation() override { isUpdating_ = true; }
    void stopUpdatingLocation() override { isUpdating_ = false; }
    void startUpdatingHeading() override {}
    void stopUpdatingHeading() override {}

private:
    CLLocationManagerDelegate* delegate_ = nullptr;
    bool isUpdating_ = false;
};

}  // namespace pedvar
