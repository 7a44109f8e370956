#include "linux/system/posix_zone.h"

#include "linux/system/whole_seconds.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace pedvar {

namespace {

/// What the clocks add to UTC at `unixTime`, in seconds.
std::int64_t offsetAt(std::int64_t unixTime) {
    const std::time_t time = unixTime;
    std::tm fields{};
    return localtime_r(&time, &fields) ? fields.tm_gmtoff : 0;
}

}  // namespace

bool isPosixZoneRule(std::string_view text) {
    std::size_t nameEnd = 0;
    if (text.starts_with('<')) {
        nameEnd = text.find('>');
        if (nameEnd == std::string_view::npos) return false;
        ++nameEnd;
    } else {
        const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
        nameEnd = static_cast<std::size_t>(std::ranges::find_if_not(text, isLetter) - text.begin());
    }
    if (nameEnd < 3 || nameEnd == text.size()) return false;
    const char first = text[nameEnd];
    return first == '+' || first == '-' || (first >= '0' && first <= '9');
}

PosixZone::PosixZone() {
    tzset();
}

std::string PosixZone::name() const {
    const char* const rule = std::getenv("TZ");
    return rule ? rule : "";
}

LocalTime PosixZone::localTime(Date moment) const {
    const double seconds = unixSeconds(moment);
    return LocalTime{Seconds{seconds + static_cast<double>(offsetAt(wholeSeconds(seconds)))}};
}

Date PosixZone::instant(LocalTime time) const {
    const double seconds = time.time_since_epoch().count();
    const std::int64_t shown = wholeSeconds(seconds);
    // A rule changes its offset at most once within two days.
    constexpr std::int64_t day = 86'400;
    const std::int64_t before = offsetAt(shown - day);
    const std::int64_t after = offsetAt(shown + day);
    const auto shows = [&](std::int64_t moment) { return moment + offsetAt(moment) == shown; };
    for (const std::int64_t offset : {std::max(before, after), std::min(before, after)}) {
        if (!shows(shown - offset)) continue;
        return dateFromUnix(static_cast<double>(shown - offset)) + Seconds{seconds - static_cast<double>(shown)};
    }
    // The clocks skip this time: the skip is the first moment at which they show a later one.
    std::int64_t early = shown - after;
    std::int64_t late = shown - before;
    while (early < late) {
        const std::int64_t middle = early + (late - early) / 2;
        if (middle + offsetAt(middle) < shown) {
            early = middle + 1;
        } else {
            late = middle;
        }
    }
    return dateFromUnix(static_cast<double>(late));
}

}  // namespace pedvar
