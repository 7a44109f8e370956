#include "apps/cli/commands/arguments.h"

#include <charconv>

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

std::optional<std::int64_t> wholeNumberNamed(std::string_view name) {
    return parse<std::int64_t>(name);
}

std::optional<double> numberNamed(std::string_view name) {
    return parse<double>(name);
}

}  // namespace pedvar
