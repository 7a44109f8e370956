#include "linux/system/widget_reloads.h"

#include "linux/system/private_folder.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

namespace pedvar {

namespace {

std::filesystem::path bellIn(const std::filesystem::path& folder) {
    return folder / "widgets.reload";
}

}  // namespace

FollowedWidgets::FollowedWidgets(const std::filesystem::path& folder) : bell_(bellIn(folder)) {}

void FollowedWidgets::reloadAllTimelines() {
    const int file = ::open(bell_.c_str(), O_WRONLY | O_CLOEXEC);
    if (file >= 0) ::close(file);
}

std::expected<WidgetReloads, DefaultsError> WidgetReloads::of(const std::filesystem::path& folder) {
    const int events = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    WidgetReloads reloads(folder, events, ::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK));
    if (events < 0 || reloads.timer_ < 0) return std::unexpected(reloads.failure(errno));
    if (auto reason = reloads.watch()) return std::unexpected(std::move(*reason));
    return reloads;
}

WidgetReloads::WidgetReloads(WidgetReloads&& other) noexcept
    : folder_(std::move(other.folder_)),
      events_(std::exchange(other.events_, -1)),
      timer_(std::exchange(other.timer_, -1)) {}

WidgetReloads::~WidgetReloads() {
    if (events_ >= 0) ::close(events_);
    if (timer_ >= 0) ::close(timer_);
}

std::expected<WidgetReloads::Wake, DefaultsError> WidgetReloads::wait(Date time, int output) {
    itimerspec due{};
    due.it_value.tv_sec = static_cast<time_t>(std::ceil(unixSeconds(time)));
    // A clock that is set ends the wait as well: then it is another time to wait for. Where it was set since the
    // last wait, that is told here.
    if (::timerfd_settime(timer_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &due, nullptr) != 0) {
        if (errno == ECANCELED) return Wake::time;
        return std::unexpected(failure(errno));
    }
    std::array<pollfd, 3> waitedFor{{{events_, POLLIN, 0}, {timer_, POLLIN, 0}, {output, 0, 0}}};
    while (::poll(waitedFor.data(), waitedFor.size(), -1) < 0) {
        if (errno != EINTR) return std::unexpected(failure(errno));
    }
    if (waitedFor[2].revents != 0) return Wake::readerGone;
    if (waitedFor[0].revents == 0) return Wake::time;
    dropEvents();
    // Who deletes the folder deletes the file first, and is not kept from it.
    constexpr int pause = 200;  // milliseconds
    if (::access(bellIn(folder_).c_str(), F_OK) != 0) ::poll(nullptr, 0, pause);
    if (auto reason = watch()) return std::unexpected(std::move(*reason));
    return Wake::reload;
}

std::optional<DefaultsError> WidgetReloads::watch() {
    if (const int error = makePrivateFolder(folder_)) return failure(error);
    // Opened only for reading, so that it tells nobody of a reload.
    const int file = ::open(bellIn(folder_).c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) return failure(errno);
    ::close(file);
    constexpr std::uint32_t wanted = IN_CLOSE_WRITE | IN_MOVE_SELF | IN_DELETE_SELF;
    if (::inotify_add_watch(events_, bellIn(folder_).c_str(), wanted) < 0) return failure(errno);
    return std::nullopt;
}

DefaultsError WidgetReloads::failure(int error) const {
    return {
        Phrase("Reloads of the widgets in {} cannot be followed: {}.", {folder_.string(), std::strerror(error)}),
        error == ENOSPC ? DefaultsError::Kind::full : DefaultsError::Kind::unwritable};
}

void WidgetReloads::dropEvents() {
    std::array<char, 4096> buffer;
    while (::read(events_, buffer.data(), buffer.size()) > 0) {
    }
}

}  // namespace pedvar
