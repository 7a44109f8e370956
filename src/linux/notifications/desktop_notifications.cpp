#include "linux/notifications/desktop_notifications.h"

#include "linux/system/shared_library.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace pedvar {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";
constexpr const char* serverChange =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0='org.freedesktop.Notifications'";
constexpr const char* applicationName = "Pedvar";
constexpr const char* applicationIcon = "appointment-soon";
constexpr std::int32_t serversChoice = -1, never = 0;  // when a notification goes away by itself
constexpr std::uint32_t dismissedByPerson = 2;         // of the reasons for which notifications are closed
constexpr Seconds replyTimeout{26};                    // a second longer than libsystemd waits

/// What is used of libsystemd.
struct Library {
    SharedLibrary library{"libsystemd.so.0", "libsystemd0"};
    decltype(&::sd_bus_open_user) openUser = library.function("sd_bus_open_user");
    decltype(&::sd_bus_flush_close_unref) closeBus = library.function("sd_bus_flush_close_unref");
    decltype(&::sd_bus_get_fd) descriptor = library.function("sd_bus_get_fd");
    decltype(&::sd_bus_process) process = library.function("sd_bus_process");
    decltype(&::sd_bus_flush) flush = library.function("sd_bus_flush");
    decltype(&::sd_bus_match_signal_async) matchSignal = library.function("sd_bus_match_signal_async");
    decltype(&::sd_bus_add_match_async) addMatch = library.function("sd_bus_add_match_async");
    decltype(&::sd_bus_call_async) callAsync = library.function("sd_bus_call_async");
    decltype(&::sd_bus_send) send = library.function("sd_bus_send");
    decltype(&::sd_bus_slot_unref) dropSlot = library.function("sd_bus_slot_unref");
    decltype(&::sd_bus_message_new_method_call) newCall = library.function("sd_bus_message_new_method_call");
    decltype(&::sd_bus_message_append) append = library.function("sd_bus_message_append");
    decltype(&::sd_bus_message_open_container) openContainer = library.function("sd_bus_message_open_container");
    decltype(&::sd_bus_message_close_container) closeContainer =
        library.function("sd_bus_message_close_container");
    decltype(&::sd_bus_message_enter_container) enterContainer =
        library.function("sd_bus_message_enter_container");
    decltype(&::sd_bus_message_read) read = library.function("sd_bus_message_read");
    decltype(&::sd_bus_message_get_error) errorOf = library.function("sd_bus_message_get_error");
    decltype(&::sd_bus_message_unref) dropMessage = library.function("sd_bus_message_unref");
};

const Library& systemd() {
    static const Library loaded;
    return loaded;
}

struct Drop {
    void operator()(sd_bus* bus) const { systemd().closeBus(bus); }
    void operator()(sd_bus_slot* slot) const { systemd().dropSlot(slot); }
    void operator()(sd_bus_message* message) const { systemd().dropMessage(message); }
};
using Message = std::unique_ptr<sd_bus_message, Drop>;
using Slot = std::unique_ptr<sd_bus_slot, Drop>;

std::string reasonOf(int negativeError) {
    return std::strerror(-negativeError);
}

/// Servers that know markup take "&" and "<" for its beginning.
std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

}  // namespace

/// One connection to the session bus.
class DesktopNotifications::Bus {
public:
    Bus(MainExecutor& executor, Event<NotificationResponse>& responses, Event<>& available)
        : executor_(executor), responses_(responses), available_(available) {}
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    /// Nobody would hear any more what is chosen.
    ~Bus() {
        if (!isAlive_) return;
        for (const auto& [identifier, shown] : shown_) {
            if (shown.hasActions) takeBack(shown.number);
        }
    }
    std::expected<void, NotificationError> connect(Readiness& readiness) {
        const Library& with = systemd();
        if (with.library.problem()) return std::unexpected(NotificationError{with.library.problem()->inEnglish()});
        sd_bus* opened = nullptr;
        int result = with.openUser(&opened);
        bus_.reset(opened);
        sd_bus_slot* closed = nullptr;
        sd_bus_slot* invoked = nullptr;
        sd_bus_slot* changed = nullptr;
        if (result >= 0) {
            result = with.matchSignal(opened, &closed, service, object, service, "NotificationClosed", onClosed,
                                      nullptr, this);
            closed_.reset(closed);
        }
        if (result >= 0) {
            result = with.matchSignal(opened, &invoked, service, object, service, "ActionInvoked", onAction,
                                      nullptr, this);
            invoked_.reset(invoked);
        }
        if (result >= 0) {
            result = with.addMatch(opened, &changed, serverChange, onServerChange, nullptr, this);
            changed_.reset(changed);
        }
        const int descriptor = result >= 0 ? with.descriptor(opened) : result;
        if (descriptor < 0) {
            return std::unexpected(NotificationError{"There is no session bus: " + reasonOf(descriptor)});
        }
        readable_ = readiness.onReadable(descriptor, [this] { process(); });
        askForCapabilities();
        process();
        return {};
    }

    /// False once the connection has ended.
    bool isAlive() {
        if (isAlive_) process();
        return isAlive_;
    }

    void show(UserNotification notification, NotificationHandler completion) {
        waiting_.emplace_back(std::move(notification), std::move(completion));
        if (areCapabilitiesKnown_) sendWaiting();
    }

private:
    /// A notification that is not confirmed yet.
    struct Call {
        Bus* bus;
        std::uint64_t number;
        std::string identifier;
        bool hasActions;
        NotificationHandler completion;
        Slot slot;
    };
    struct Shown {
        std::uint32_t number;  // that the server has given
        bool hasActions;
    };

    void askForCapabilities() {
        sd_bus_message* made = nullptr;
        int result = systemd().newCall(bus_.get(), &made, service, object, service, "GetCapabilities");
        const Message call(made);
        sd_bus_slot* slot = nullptr;
        if (result >= 0) result = systemd().callAsync(bus_.get(), &slot, made, onCapabilities, this, 0);
        capabilities_.reset(slot);
        awaitReply(result);
    }

    static int onCapabilities(sd_bus_message* reply, void* self, sd_bus_error*) {
        Bus& bus = *static_cast<Bus*>(self);
        bus.serverKnows_.clear();
        if (!systemd().errorOf(reply)) {
            systemd().enterContainer(reply, 'a', "s");
            for (const char* name = nullptr; systemd().read(reply, "s", &name) > 0;) bus.serverKnows_.insert(name);
        }
        bus.areCapabilitiesKnown_ = true;
        bus.sendWaiting();
        return 0;
    }

    void sendWaiting() {
        for (auto& [notification, completion] : std::exchange(waiting_, {})) {
            send(notification, std::move(completion));
        }
    }

    void send(const UserNotification& notification, NotificationHandler completion) {
        auto call = std::make_unique<Call>(this, ++callCount_, notification.identifier,
                                           !notification.actions.empty(), std::move(completion), nullptr);
        const Message message = messageOf(notification);
        sd_bus_slot* slot = nullptr;
        const int result =
            message ? systemd().callAsync(bus_.get(), &slot, message.get(), onShown, call.get(), 0) : -ENOMEM;
        call->slot.reset(slot);
        if (result < 0) {
            call->completion(std::unexpected(NotificationError{reasonOf(result)}));
        } else {
            calls_.emplace(call->number, std::move(call));
        }
        awaitReply(result);
    }

    Message messageOf(const UserNotification& notification) const {
        const Library& with = systemd();
        sd_bus_message* made = nullptr;
        int result = with.newCall(bus_.get(), &made, service, object, service, "Notify");
        Message message(made);
        const auto shown = shown_.find(notification.identifier);
        const std::uint32_t replaced = shown == shown_.end() ? 0 : shown->second.number;
        const std::string body =
            serverKnows_.contains("body-markup") ? escaped(notification.body) : notification.body;
        const bool hasActions = !notification.actions.empty() && serverKnows_.contains("actions");
        if (result >= 0) {
            result = with.append(made, "susss", applicationName, replaced, applicationIcon,
                                 notification.title.c_str(), body.c_str());
        }
        if (result >= 0) result = with.openContainer(made, 'a', "s");
        if (hasActions) {
            for (const NotificationAction& action : notification.actions) {
                if (result >= 0) result = with.append(made, "ss", action.key.c_str(), action.label.c_str());
            }
        }
        if (result >= 0) result = with.closeContainer(made);
        if (result >= 0) {
            result = with.append(made, "a{sv}i", 2, "desktop-entry", "s", "pedvar", "category", "s", "x-pedvar",
                                 hasActions ? never : serversChoice);
        }
        return result >= 0 ? std::move(message) : nullptr;
    }

    static int onShown(sd_bus_message* reply, void* of, sd_bus_error*) {
        Call& call = *static_cast<Call*>(of);
        Bus& bus = *call.bus;
        const auto node = bus.calls_.extract(call.number);
        if (const sd_bus_error* const error = systemd().errorOf(reply)) {
            call.completion(std::unexpected(NotificationError{error->message ? error->message : error->name}));
            return 0;
        }
        std::uint32_t number = 0;
        systemd().read(reply, "u", &number);
        bus.shown_[call.identifier] = {number, call.hasActions};
        call.completion({});
        return 0;
    }

    static int onAction(sd_bus_message* signal, void* self, sd_bus_error*) {
        std::uint32_t number = 0;
        const char* key = nullptr;
        if (systemd().read(signal, "us", &number, &key) > 0) {
            static_cast<Bus*>(self)->respond(number, NotificationResponse::Kind::chosen, key);
        }
        return 0;
    }

    static int onClosed(sd_bus_message* signal, void* self, sd_bus_error*) {
        std::uint32_t number = 0, reason = 0;
        if (systemd().read(signal, "uu", &number, &reason) > 0) {
            using enum NotificationResponse::Kind;
            static_cast<Bus*>(self)->respond(number, reason == dismissedByPerson ? dismissed : gone, "");
        }
        return 0;
    }

    static int onServerChange(sd_bus_message* signal, void* self, sd_bus_error*) {
        const char *name = nullptr, *before = nullptr, *now = nullptr;
        if (systemd().read(signal, "sss", &name, &before, &now) > 0) {
            static_cast<Bus*>(self)->changeServer(*now != 0);
        }
        return 0;
    }

    /// What the server before has shown went with it, and its numbers mean something else to the next one.
    void changeServer(bool isThere) {
        while (!shown_.empty()) respond(shown_.begin()->second.number, NotificationResponse::Kind::gone, "");
        if (!isThere) return;
        areCapabilitiesKnown_ = false;
        askForCapabilities();
        executor_.post([&told = available_] { told.notify(); });
    }

    /// Each notification is answered once: what is chosen also closes it.
    void respond(std::uint32_t number, NotificationResponse::Kind kind, const char* action) {
        for (auto shown = shown_.begin(); shown != shown_.end(); ++shown) {
            if (shown->second.number != number) continue;
            NotificationResponse response{shown->first, kind, action};
            shown_.erase(shown);
            executor_.post([&told = responses_, response = std::move(response)] { told.notify(response); });
            return;
        }
    }

    void takeBack(std::uint32_t number) {
        sd_bus_message* made = nullptr;
        int result = systemd().newCall(bus_.get(), &made, service, object, service, "CloseNotification");
        const Message call(made);
        if (result >= 0) result = systemd().append(made, "u", number);
        if (result >= 0) systemd().send(bus_.get(), made, nullptr);
    }

    /// Sends what is queued, and looks again should there be no reply at all.
    void awaitReply(int result) {
        if (result < 0) return;
        systemd().flush(bus_.get());
        replyTimer_ = executor_.after(replyTimeout, [this] { process(); });
    }

    void process() {
        int result = 0;
        while ((result = systemd().process(bus_.get(), nullptr)) > 0) continue;
        if (result >= 0) return;
        isAlive_ = false;
        readable_ = {};
        for (const auto& [number, call] : std::exchange(calls_, {})) fail(std::move(call->completion), result);
        for (auto& [notification, completion] : std::exchange(waiting_, {})) fail(std::move(completion), result);
    }

    /// Later, since whoever is told may want to show something on another bus.
    void fail(NotificationHandler completion, int result) {
        executor_.post([told = std::move(completion), result]() mutable {
            told(std::unexpected(NotificationError{reasonOf(result)}));
        });
    }

    MainExecutor& executor_;
    Event<NotificationResponse>& responses_;
    Event<>& available_;
    std::unique_ptr<sd_bus, Drop> bus_;
    Slot closed_, invoked_, changed_, capabilities_;
    bool isAlive_ = true;
    bool areCapabilitiesKnown_ = false;
    std::set<std::string, std::less<>> serverKnows_;
    std::vector<std::pair<UserNotification, NotificationHandler>> waiting_;
    std::uint64_t callCount_ = 0;
    std::map<std::uint64_t, std::unique_ptr<Call>> calls_;
    std::map<std::string, Shown> shown_;
    Subscription readable_;
    Timer replyTimer_;
};

DesktopNotifications::DesktopNotifications(MainExecutor& executor, Readiness& readiness)
    : executor_(executor), readiness_(readiness) {}

DesktopNotifications::~DesktopNotifications() = default;

void DesktopNotifications::show(UserNotification notification, NotificationHandler completion) {
    if (!bus_ || !bus_->isAlive()) {
        bus_ = std::make_unique<Bus>(executor_, responses_, available_);
        if (auto connected = bus_->connect(readiness_); !connected) {
            bus_.reset();
            completion(std::move(connected));
            return;
        }
    }
    bus_->show(std::move(notification), std::move(completion));
}

Subscription DesktopNotifications::observeResponses(Event<NotificationResponse>::Observer observer) {
    return responses_.observe(std::move(observer));
}

Subscription DesktopNotifications::observeAvailability(Event<>::Observer observer) {
    return available_.observe(std::move(observer));
}

}  // namespace pedvar
