/// The receiver that tells where the person is.
#pragma once

#include "platform/location.h"

#include <span>

namespace pedvar {

enum class CLAuthorizationStatus {
    notDetermined = 0,
    restricted = 1,
    denied = 2,
    authorizedAlways = 3,
    authorizedWhenInUse = 4
};

constexpr bool isAuthorized(CLAuthorizationStatus status) {
    return status == CLAuthorizationStatus::authorizedAlways ||
           status == CLAuthorizationStatus::authorizedWhenInUse;
}

inline constexpr double kCLLocationAccuracyBestForNavigation = -2;  // what the receiver can do, at any cost
inline constexpr double kCLDistanceFilterNone = -1;                 // every fix

enum class CLActivityType { other = 1, automotiveNavigation = 2, fitness = 3, otherNavigation = 4, airborne = 5 };

/// What is asked of the receiver.
struct CLLocationSettings {
    bool allowsBackgroundLocationUpdates = false;
    double desiredAccuracy = kCLLocationAccuracyBestForNavigation;  // metres
    double distanceFilter = kCLDistanceFilterNone;                  // metres between two fixes
    CLActivityType activityType = CLActivityType::other;
    bool operator==(const CLLocationSettings&) const = default;
};

/// Is told on the main executor.
class CLLocationManagerDelegate {
public:
    virtual ~CLLocationManagerDelegate() = default;

    /// New fixes, oldest first.
    virtual void didUpdateLocations(std::span<const CLLocation> locations) = 0;
    /// The person has answered, or changed the answer.
    virtual void didChangeAuthorization(CLAuthorizationStatus status) = 0;
};

/// To be called on the main executor. Starting what runs and stopping what does not changes nothing.
class CLLocationManager {
public:
    virtual ~CLLocationManager() = default;

    /// Who is told from now on; nobody for a null pointer, which a delegate sets before it goes.
    virtual void setDelegate(CLLocationManagerDelegate* delegate) = 0;

    virtual CLAuthorizationStatus authorizationStatus() const = 0;
    /// Asks the person; the delegate hears the answer.
    virtual void requestWhenInUseAuthorization() = 0;

    virtual void configure(const CLLocationSettings& settings) = 0;

    virtual void startUpdatingLocation() = 0;
    virtual void stopUpdatingLocation() = 0;
    /// Headings are for maps that turn; nobody is told of them.
    virtual void startUpdatingHeading() = 0;
    virtual void stopUpdatingHeading() = 0;
};

}  // namespace pedvar
