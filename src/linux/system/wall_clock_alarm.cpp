#include "linux/system/wall_clock_alarm.h"

#include "core/check.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <utility>

namespace pedvar {

WallClockAlarm::WallClockAlarm(Readiness& readiness, std::move_only_function<void()> handler)
    : descriptor_(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)), handler_(std::move(handler)) {
    check(descriptor_ >= 0, "there is no timer");
    readable_ = readiness.onReadable(descriptor_, [this] {
        std::uint64_t count = 0;
        // Reading fails where the clock was set; either way it is time to look at it.
        static_cast<void>(!read(descriptor_, &count, sizeof count));
        handler_();
    });
}

WallClockAlarm::~WallClockAlarm() {
    readable_ = {};
    close(descriptor_);
}

void WallClockAlarm::set(Date moment) {
    // Rounded up, so that the moment is over when the handler looks at the clock; 0 would switch the timer off.
    const double seconds = std::max(1.0, std::ceil(unixSeconds(moment)));
    itimerspec time{};
    time.it_value.tv_sec = static_cast<time_t>(seconds);
    const int result = timerfd_settime(descriptor_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &time, nullptr);
    // Where the clock was set and that was not read yet, the timer is set all the same.
    check(result == 0 || errno == ECANCELED, "the timer cannot be set");
}

}  // namespace pedvar
