/// Pop-ups as notifications.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "platform/user_notifications.h"

#include <set>
#include <string>

namespace pedvar {

class Application;
class AppUpdateManager;
class MonthlyRecapManager;
class RateUsManager;

/// Shows the pop-ups of the managers, and takes the person's answers to them. One that is not answered stays the
/// manager's until `offerAgain`. One that cannot be shown, or may not because notifications are switched off, is
/// withheld.
class Prompts {
public:
    /// Keeps the references. The health store is open.
    Prompts(Application& application, RateUsManager& rating, AppUpdateManager& updates, MonthlyRecapManager& recap,
            UserNotifications& notifications);

    /// The next checks may show anew what was not answered.
    void offerAgain();
    /// Tries to show what was withheld.
    void offerWithheld();

private:
    void showRating();
    void showUpdate();
    void showRecap();
    void show(UserNotification notification, Published<bool>& offered);
    void take(const NotificationResponse& response);
    /// Shows what the month was.
    Task<> showMonth();

    Application& application_;
    RateUsManager& rating_;
    AppUpdateManager& updates_;
    MonthlyRecapManager& recap_;
    UserNotifications& notifications_;
    Subscription ratingShown_, updateShown_, recapShown_, responses_;
    std::set<std::string> withheld_;  // by identifier
    TaskScope tasks_;
};

}  // namespace pedvar
