/// Notifications that the person sees beside what they are doing.
#pragma once

#include "core/event.h"

#include <expected>
#include <functional>
#include <string>
#include <vector>

namespace pedvar {

/// Something to choose in a notification.
struct NotificationAction {
    std::string key;
    std::string label;
    bool operator==(const NotificationAction&) const = default;
};

struct UserNotification {
    std::string identifier;  // of several of one identifier the last is shown
    std::string title;
    std::string body;
    std::vector<NotificationAction> actions = {};  // with any, it stays until the person answers
    bool operator==(const UserNotification&) const = default;
};

/// What became of a notification.
struct NotificationResponse {
    enum class Kind {
        chosen,     // one of its actions
        dismissed,  // by the person, without an action
        gone,       // without the person's doing
    };
    std::string identifier;
    Kind kind = Kind::gone;
    std::string action = {};  // the key of the chosen one
};

/// Why nothing is shown, for people.
struct NotificationError {
    std::string message;
};

/// Called once, on the main executor.
using NotificationHandler = std::move_only_function<void(std::expected<void, NotificationError>)>;

/// To be called on the main executor.
class UserNotifications {
public:
    virtual ~UserNotifications() = default;

    virtual void show(UserNotification notification, NotificationHandler completion) = 0;

    /// Tells on the main executor what becomes of notifications.
    [[nodiscard]] virtual Subscription observeResponses(Event<NotificationResponse>::Observer observer) = 0;

    /// Tells on the main executor that what could not be shown may be shown now.
    [[nodiscard]] virtual Subscription observeAvailability(Event<>::Observer observer) = 0;
};

}  // namespace pedvar
