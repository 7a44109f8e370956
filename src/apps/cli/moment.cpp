#include "apps/cli/moment.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace pedvar {
namespace {

using namespace std::chrono;

/// Takes texts apart from the front.
struct Scanner {
    std::string_view rest;

    bool take(char expected) {
        if (!rest.starts_with(expected)) return false;
        rest.remove_prefix(1);
        return true;
    }

    /// Two digits that name a number from 0 to `highest`.
    std::optional<int> twoDigits(int highest) {
        if (rest.size() < 2) return std::nullopt;
        unsigned value = 0;  // takes no sign
        const char* const end = rest.data() + 2;
        const auto [stop, error] = std::from_chars(rest.data(), end, value);
        if (error != std::errc{} || stop != end || static_cast<int>(value) > highest) return std::nullopt;
        rest.remove_prefix(2);
        return static_cast<int>(value);
    }

    /// ".25"; 0 when there is none.
    double fraction() {
        double value = 0;
        if (!rest.starts_with('.')) return value;
        const auto [stop, error] =
            std::from_chars(rest.data(), rest.data() + rest.size(), value, std::chars_format::fixed);
        if (error != std::errc{}) return 0;
        rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
        return value;
    }
};

/// "06:30", "06:30:15" or "06:30:15.25".
std::optional<Seconds> clockTime(Scanner& scanner) {
    const auto hour = scanner.twoDigits(23);
    if (!hour || !scanner.take(':')) return std::nullopt;
    const auto minute = scanner.twoDigits(59);
    if (!minute) return std::nullopt;
    Seconds time = hours(*hour) + minutes(*minute);
    if (scanner.take(':')) {
        const auto second = scanner.twoDigits(59);
        if (!second) return std::nullopt;
        time += Seconds(*second + scanner.fraction());
    }
    return time;
}

/// "Z", "+02:00" or "+0200".
std::optional<Seconds> offset(Scanner& scanner) {
    if (scanner.take('Z')) return Seconds{};
    const bool isWest = scanner.take('-');
    if (!isWest && !scanner.take('+')) return std::nullopt;
    const auto hour = scanner.twoDigits(23);
    scanner.take(':');
    const auto minute = scanner.twoDigits(59);
    if (!hour || !minute) return std::nullopt;
    const Seconds east = hours(*hour) + minutes(*minute);
    return isWest ? -east : east;
}

}  // namespace

std::optional<Date> parseMoment(std::string_view text, const ZoneRules& zone) {
    constexpr std::size_t dateLength = 10;  // YYYY-MM-DD
    const auto day = parseDay(text.substr(0, dateLength));
    if (!day) return std::nullopt;
    if (text.size() == dateLength) return zone.instant(LocalTime(*day + std::chrono::days(1))) - Seconds(1);

    Scanner scanner{text.substr(dateLength)};
    if (!scanner.take('T') && !scanner.take(' ')) return std::nullopt;
    const auto time = clockTime(scanner);
    if (!time) return std::nullopt;
    const LocalTime shown = LocalTime(*day) + *time;
    if (scanner.rest.empty()) return zone.instant(shown);
    const auto east = offset(scanner);
    if (!east || !scanner.rest.empty()) return std::nullopt;
    return dateFromUnix((shown.time_since_epoch() - *east).count());
}

std::string isoText(Date moment, const Calendar& calendar) {
    const auto round = [](Seconds time) { return std::chrono::round<std::chrono::milliseconds>(time); };
    const auto local = round(calendar.localTime(moment).time_since_epoch());
    const auto utc = round(Seconds(unixSeconds(moment)));
    const auto day = std::chrono::floor<std::chrono::days>(local);
    const std::chrono::hh_mm_ss time(local - day);
    const auto offset = std::chrono::round<minutes>(local - utc).count();
    const auto fraction = time.subseconds().count();
    return fmt::format("{}T{:02}:{:02}:{:02}{}{}{:02}:{:02}", isoText(Day(day)), time.hours().count(),
                       time.minutes().count(), time.seconds().count(),
                       fraction == 0 ? "" : fmt::format(".{:03}", fraction), offset < 0 ? '-' : '+',
                       std::abs(offset) / 60, std::abs(offset) % 60);
}

}  // namespace pedvar
