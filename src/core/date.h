/// Moments and the spans between them.
#pragma once

#include <chrono>

namespace pedvar {

using Seconds = std::chrono::duration<double>;

/// Counts seconds since 2001-01-01 00:00:00 UTC without leap seconds: the epoch of every stored date.
struct ReferenceClock {
    using duration = Seconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<ReferenceClock>;
    static constexpr bool is_steady = false;
};

/// A moment. Its double is what stored documents hold, so a date that is read and written again keeps every bit.
using Date = ReferenceClock::time_point;

/// From `std::chrono::system_clock`'s epoch (1970) to ours.
inline constexpr std::chrono::seconds referenceEpoch{978'307'200};

constexpr Date dateOf(std::chrono::sys_time<std::chrono::milliseconds> time) {
    return Date{Seconds{time.time_since_epoch() - referenceEpoch}};
}

constexpr Date dateFromUnix(double seconds) {
    return Date{Seconds{seconds} - referenceEpoch};
}

constexpr double unixSeconds(Date date) {
    return (date.time_since_epoch() + Seconds{referenceEpoch}).count();
}

/// The moments from `start` on and before `end`; empty when `end` is not after `start`.
struct Interval {
    Date start;
    Date end;

    Seconds length() const { return end - start; }
    bool contains(Date moment) const { return start <= moment && moment < end; }
    bool operator==(const Interval&) const = default;
};

}  // namespace pedvar
