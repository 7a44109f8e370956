/// Notifications that nobody sees but the test.
#pragma once

#include "platform/user_notifications.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// Says in `shown` what is shown: "identifier: title | body".
class FakeUserNotifications : public UserNotifications {
public:
    std::vector<std::string> shown;
    std::optional<NotificationError> failure;  // of everything that is to be shown
    Event<NotificationResponse> responses;
    Event<> available;

    void show(UserNotification notification, NotificationHandler completion) override {
        if (failure) {
            completion(std::unexpected(*failure));
            return;
        }
        shown.push_back(notification.identifier + ": " + notification.title + " | " + notification.body);
        completion({});
    }
    Subscription observeResponses(Event<NotificationResponse>::Observer observer) override {
        return responses.observe(std::move(observer));
    }
    Subscription observeAvailability(Event<>::Observer observer) override {
        return available.observe(std::move(observer));
    }
};

}  // namespace pedvar
