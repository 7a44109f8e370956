#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/moment.h"
#include "companion/widget_snapshot.h"
#include "core/reflection.h"
#include "linux/system/gettext_texts.h"
#include "linux/system/widget_reloads.h"
#include "platform/language_habits.h"

#include <fmt/ranges.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace pedvar {
namespace {

enum class Format { plain, waybar, i3blocks, json };

/// The suite's file, opened anew where another one has taken its place.
class Suite {
public:
    Suite(const std::filesystem::path& folder, std::chrono::milliseconds patience)
        : path_(SqliteDefaults::sharedPath(folder)), patience_(patience) {}

    CommandResult<DefaultsSnapshot> read() {
        struct stat found{};
        const bool isThere = ::stat(path_.c_str(), &found) == 0;
        if (!file_ || !isThere || found.st_ino != number_) {
            file_.emplace(path_, patience_);
            number_ = found.st_ino;
        }
        DefaultsSnapshot snapshot = file_->snapshot();
        if (const auto problem = file_->problem()) {
            file_.reset();
            return std::unexpected(errorOf(*problem));
        }
        return snapshot;
    }

private:
    std::filesystem::path path_;
    std::chrono::milliseconds patience_;
    std::optional<SqliteDefaultsFile> file_;
    ino_t number_ = 0;
};

/// What a line is made of.
struct Shown {
    WidgetSnapshot snapshot;
    UserPreferences preferences;
    Figures figures;
    Texts text;

    bool isGoalMet() const { return snapshot.steps >= snapshot.goal; }
    std::string steps() const { return figures.number(snapshot.steps); }
    std::string stepsOfGoal() const { return text("{0} of {1} steps", steps(), figures.number(snapshot.goal)); }
};

std::string tooltip(const Shown& shown) {
    const WidgetSnapshot& day = shown.snapshot;
    const Figures& figures = shown.figures;
    std::string lines = shown.stepsOfGoal() + "\n" + figures.distance(day.meters) + ", " +
                        figures.energy(day.kilocalories) + "\n" +
                        shown.text("Active minutes: {}", figures.number(day.activeMinutes)) + "\n" +
                        shown.text("Flights climbed: {}", figures.number(day.floors)) + "\n" +
                        shown.text("Streak: {}", figures.days(day.currentStreak));
    if (const auto& water = day.water) {
        lines += "\n" + shown.text("Water: {0} of {1}", figures.volume(water->milliliters, water->unit),
                                   figures.volume(water->goalMilliliters, water->unit));
    }
    return lines;
}

std::string waybarLine(const Shown& shown) {
    const double share =
        100.0 * static_cast<double>(shown.snapshot.steps) / static_cast<double>(shown.snapshot.goal);
    const auto percentage = static_cast<std::int64_t>(std::clamp(share, 0.0, 100.0));
    return jsonText({JsonObject{
        {"text", {shown.steps()}},
        {"tooltip", {tooltip(shown)}},
        {"class", {std::string(shown.isGoalMet() ? "goal-met" : "below-goal")}},
        {"percentage", {percentage}},
    }});
}

/// In the colour of steps once the goal is met.
std::string i3blocksLine(const Shown& shown) {
    JsonObject block{{"full_text", {shown.stepsOfGoal()}}, {"short_text", {shown.steps()}}};
    if (shown.isGoalMet()) {
        const Color color = stepColor(shown.preferences);
        block.emplace_back("color",
                           JsonValue{fmt::format("#{:02X}{:02X}{:02X}", color.red, color.green, color.blue)});
    }
    return jsonText({std::move(block)});
}

/// The language is that of the preferences in the suite; the other store is left alone.
std::string line(Format format, const DefaultsSnapshot& suite, const Application& application,
                 const Locale& region, GettextTexts& catalogue) {
    const Calendar calendar(region.zone(), region.firstWeekday());
    const WidgetReading reading(suite, calendar, calendar.day(application.clock().now()));
    const auto& json = application.json();
    if (format == Format::json) {
        return jsonText({reading.document(json, [&](Date date) { return isoText(date, calendar); })});
    }
    const UserPreferences preferences = reading.preferences(json, UserPreferences());
    const std::string_view language = names(preferences.appLanguage).code;
    catalogue.speak(language);
    const Texts text(catalogue);
    const LanguageLocale locale(region, language);
    const Shown shown{reading.snapshot(), preferences, Figures(locale, preferences, text), text};
    if (format == Format::waybar) return waybarLine(shown);
    if (format == Format::i3blocks) return i3blocksLine(shown);
    return shown.stepsOfGoal();
}

/// Writes a line at the beginning, at each reload and at midnight, until nobody reads them or they cannot be
/// written.
std::optional<CommandError> follow(Format format, Application& application, const TextSink& sink) {
    auto reloads = WidgetReloads::of(application.folder());
    if (!reloads) return errorOf(reloads.error());
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    constexpr std::chrono::seconds patience{1};
    Suite suite(application.folder(), patience);
    GettextTexts catalogue;
    while (true) {
        const ProcessZone zone = processZone();  // the machine may have moved
        const GlibcLocale region(*zone.rules);
        const Calendar calendar(*zone.rules, region.firstWeekday());
        const Date midnight = calendar.interval(calendar.day(application.clock().now())).end;
        const auto values = suite.read();
        // Who writes for long ends some time, and then there is a line to show.
        const bool isBusy = !values && values.error().kind == ErrorKind::busy;
        if (!values && !isBusy) return values.error();
        if (values) sink(line(format, *values, application, region, catalogue) + "\n");
        if (std::ferror(stdout)) return std::nullopt;  // whoever ends the program tells of that
        const auto woken = reloads->wait(isBusy ? application.clock().now() : midnight, STDOUT_FILENO);
        if (!woken) return errorOf(woken.error());
        if (*woken == WidgetReloads::Wake::readerGone) return std::nullopt;
    }
}

CommandResult<Format> formatNamed(const WidgetRequest& request, Application& application) {
    const auto format = request.format ? caseNamed<Format>(*request.format)
                                       : std::optional(application.wantsJson() ? Format::json : Format::plain);
    if (!format) {
        return usageError(Phrase("There is no format \"{}\"; valid: {}.",
                                 {*request.format, fmt::format("{}", fmt::join(caseNames<Format>, ", "))}));
    }
    if (application.wantsJson() && *format != Format::json) {
        return usageError(Phrase("--json is the format json; it cannot be another one as well."));
    }
    return *format;
}

}  // namespace

CommandResult<Report> run(const WidgetRequest& request, Application& application) {
    const auto format = formatNamed(request, application);
    if (!format) return std::unexpected(format.error());
    if (request.follows) {
        if (application.looksFromElsewhere()) {
            return usageError(Phrase("--follow shows the present; it does not go with --now."));
        }
        return Report{LongAnswer([format = *format, &application](const TextSink& sink) {
            const auto problem = follow(format, application, sink);
            if (problem && application.wantsJson()) {
                sink(jsonText({JsonObject{{"error", errorDocument(*problem, application.text())}}}) + "\n");
            }
            return problem;
        })};
    }
    constexpr std::chrono::seconds patience{5};
    const auto values = Suite(application.folder(), patience).read();
    if (!values) return std::unexpected(values.error());
    GettextTexts catalogue;
    return Report{LongAnswer(
        [text = line(*format, *values, application, application.locale(), catalogue)](const TextSink& sink) {
            sink(text + "\n");
            return std::optional<CommandError>();
        })};
}

}  // namespace pedvar
