#include "apps/cli/commands/arguments.h"

#include "core/reflection.h"

#include <fmt/ranges.h>

#include <charconv>
#include <cmath>
#include <string>

namespace pedvar {
namespace {

// The week around a later one reaches into a year of five digits.
constexpr Day lastDay{std::chrono::local_days(std::chrono::year(9999) / 12 / 24)};

template <class Number>
std::optional<Number> parse(std::string_view name) {
    Number number{};
    const char* const end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data(), end, number);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return number;
}

}  // namespace

CommandResult<Day> dayNamed(std::string_view name, Day today, const Texts& text) {
    if (name == "today") return today;
    if (name == "yesterday") return today - std::chrono::days(1);
    if (const auto day = parseDay(name); day && *day <= lastDay) return *day;
    return usageError(text("\"{}\" is no day; one is written like 2024-05-01, today or yesterday.", name));
}

CommandResult<Day> pastDayNamed(std::string_view name, Day today, const Texts& text) {
    const auto day = dayNamed(name, today, text);
    if (day && *day > today) {
        return usageError(text("{} is in the future; days up to today, {}, are known.", name, isoText(today)));
    }
    return day;
}

CommandResult<std::chrono::year_month> pastMonthNamed(std::string_view name, Day today, const Texts& text) {
    const auto wanted = parseMonth(name);
    if (!wanted) return usageError(text("\"{}\" is no month; one is written like 2024-05.", name));
    if (*wanted > month(today)) {
        return usageError(
            text("{} is in the future; months up to this one, {}, are known.", name, monthKey(month(today))));
    }
    return *wanted;
}

CommandResult<ActivityMetric> metricNamed(std::string_view name, const Texts& text) {
    if (const auto metric = caseNamed<ActivityMetric>(name)) return *metric;
    const std::string valid = fmt::format("{}", fmt::join(caseNames<ActivityMetric>, ", "));
    return usageError(text("\"{}\" is no metric; valid: {}.", name, valid));
}

std::optional<std::int64_t> wholeNumberNamed(std::string_view name) {
    return parse<std::int64_t>(name);
}

std::optional<double> numberNamed(std::string_view name) {
    std::string written(name);
    if (const std::size_t comma = name.find(','); comma != name.npos) {
        const std::size_t decimals = name.size() - comma - 1;
        const bool mayGroup = decimals == 3 && name.front() != '0';
        if (decimals == 0 || mayGroup || name.contains('.')) return std::nullopt;
        written[comma] = '.';
    }
    const auto number = parse<double>(written);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<double> coarseNumberNamed(std::string_view name) {
    const bool mayGroup = name.size() > 4 && name[name.size() - 4] == '.';
    return mayGroup ? std::nullopt : numberNamed(name);
}

}  // namespace pedvar
