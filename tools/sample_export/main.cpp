#include "sample_export/day_plan.h"
#include "sample_export/document.h"
#include "sample_export/workout.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using namespace pedvar::sample;

namespace {

constexpr const char* usage =
    R"(Writes a health export of an invented person, the same for the same options.

sample_export [--days N] [--end YYYY-MM-DD] [--time HH:MM] [--seed N] [--dense] [--out FOLDER|-]

  --days N           how many days, the last one included (184)
  --end YYYY-MM-DD   the last day, on which the export is made (2026-06-14)
  --time HH:MM       when on that day (18:00)
  --seed N           another person (1)
  --dense            samples of seconds: some 1,200 of steps a day
  --out FOLDER       where the folder "health_export" is made (.); - writes the document to standard output
)";

struct CommandLine {
    Options options;
    std::string out = ".";
};

template <class Number>
bool readNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

std::optional<std::chrono::sys_days> readDate(std::string_view text) {
    int year = 0;
    unsigned month = 0, day = 0;
    const bool isRead = text.size() == 10 && text[4] == '-' && text[7] == '-' &&
                        readNumber(text.substr(0, 4), year) && readNumber(text.substr(5, 2), month) &&
                        readNumber(text.substr(8, 2), day);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    return isRead && date.ok() ? std::optional(std::chrono::sys_days(date)) : std::nullopt;
}

std::optional<int> readMinute(std::string_view text) {
    int hour = 0, minute = 0;
    const bool isRead = text.size() == 5 && text[2] == ':' && readNumber(text.substr(0, 2), hour) &&
                        readNumber(text.substr(3), minute) && 0 <= hour && hour < 24 && 0 <= minute && minute < 60;
    return isRead ? std::optional(hour * 60 + minute) : std::nullopt;
}

bool readOption(std::string_view name, std::string_view value, CommandLine& line) {
    constexpr int mostDays = 100 * 365;
    if (name == "--out") {
        line.out = value;
        return !value.empty();
    }
    if (name == "--end") {
        const auto date = readDate(value);
        if (date) line.options.lastDay = *date;
        return date.has_value();
    }
    if (name == "--time") {
        const auto minute = readMinute(value);
        if (minute) line.options.exportMinute = *minute;
        return minute.has_value();
    }
    if (name == "--seed") return readNumber(value, line.options.seed);
    if (name != "--days" || !readNumber(value, line.options.days)) return false;
    return line.options.days >= 1 && line.options.days <= mostDays;
}

std::optional<CommandLine> readCommandLine(std::span<char* const> arguments) {
    CommandLine line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (std::string_view(arguments[i]) == "--dense") {
            line.options.isDense = true;
        } else if (i + 1 == arguments.size() || !readOption(arguments[i], arguments[i + 1], line)) {
            return std::nullopt;
        } else {
            ++i;
        }
    }
    return line;
}

bool isSaved(bool isWritten, const std::string& place) {
    if (!isWritten) std::fprintf(stderr, "sample_export: cannot write %s\n", place.c_str());
    return isWritten;
}

/// Opens the file, lets `write` fill it and closes it; says so when that fails.
template <class Write>
bool writeFile(const std::filesystem::path& path, Write write) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    const bool isWritten = file && write(file);
    const bool isClosed = file && std::fclose(file) == 0;
    return isSaved(isWritten && isClosed, path);
}

bool writeFolder(const std::vector<Day>& days, const Options& options, const std::filesystem::path& parent) {
    const std::filesystem::path folder = parent / "health_export", routes = folder / "workout-routes";
    std::error_code error;
    std::filesystem::create_directories(routes, error);
    const auto document = [&](std::FILE* file) { return writeDocument(days, options, file); };
    if (!writeFile(folder / "export.xml", document)) return false;
    const auto workout = plannedWorkout(days);
    const auto route = [&](std::FILE* file) { return writeRoute(*workout, exportTime(options), file); };
    return !workout || writeFile(routes / workout->routeName, route);
}

}  // namespace

int main(int count, char** arguments) {
    const auto line = readCommandLine(std::span(arguments, static_cast<std::size_t>(count)).subspan(1));
    if (!line) {
        std::fputs(usage, stderr);
        return 2;
    }
    const std::vector<Day> days = planDays(line->options);
    const bool isWritten = line->out == "-"
                               ? isSaved(writeDocument(days, line->options, stdout), "to standard output")
                               : writeFolder(days, line->options, line->out);
    return isWritten ? 0 : 1;
}
