/// Notifications of the desktop.
#pragma once

#include "linux/system/readiness.h"
#include "platform/user_notifications.h"

#include <memory>

namespace pedvar {

/// Shows notifications through org.freedesktop.Notifications on the session bus. A bus that is not there, or has
/// gone, is looked for again with the next notification; until then nothing is shown, and the completion says so.
/// A server that appears on the bus is told of.
/// Its end takes back what still offers a choice.
class DesktopNotifications : public UserNotifications {
public:
    /// Keeps the references.
    DesktopNotifications(MainExecutor& executor, Readiness& readiness);
    ~DesktopNotifications() override;

    void show(UserNotification notification, NotificationHandler completion) override;
    [[nodiscard]] Subscription observeResponses(Event<NotificationResponse>::Observer observer) override;
    [[nodiscard]] Subscription observeAvailability(Event<>::Observer observer) override;

private:
    class Bus;
    MainExecutor& executor_;
    Readiness& readiness_;
    Event<NotificationResponse> responses_;
    Event<> available_;
    std::unique_ptr<Bus> bus_;
};

}  // namespace pedvar
