#include "apps/cli/command_line.h"

#include "apps/cli/help_text.h"
#include "core/reflection.h"
#include "health/step_records.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <algorithm>
#include <memory>
#include <string_view>

namespace pedvar {
namespace {

/// One command's arguments and where they go.
struct Grammar {
    CLI::App& app;
    Request& chosen;
    std::span<const char* const> arguments;
    bool isForHelp;

    /// Adds a command whose arguments `describe` binds to a request. One that is not named would only take time,
    /// but in the list of all commands.
    template <class Wanted, class Describe>
    void command(const std::string& name, const std::string& summary, Describe describe) {
        const bool isNamed = std::ranges::find(arguments, name) != arguments.end();
        if (!isNamed && !isForHelp) return;
        CLI::App& command = *app.add_subcommand(name, summary);
        const auto request = std::make_shared<Wanted>();
        if (isNamed) describe(command, *request);
        command.fallthrough();
        command.callback([this, request] { chosen = std::move(*request); });
    }
    template <class Wanted>
    void command(const std::string& name, const std::string& summary) {
        command<Wanted>(name, summary, [](CLI::App&, Wanted&) {});
    }
};

void describeActivities(Grammar& grammar) {
    grammar.command<ActivitiesRequest>("activities", "All activities, the newest first");
    grammar.command<ActivityRequest>(
        "activity", "One activity with its route", [](CLI::App& command, ActivityRequest& request) {
            command.add_option("ID", request.activity, "The beginning of its identifier, or last")->required();
            CLI::Option* const type =
                command.add_option("--type", request.type, "Make it a walk, run, hike or cycle")
                    ->type_name("TYPE");
            CLI::Option* const deletion = command.add_flag_callback(
                "--delete",
                [&request] {
                    if (request.deletion == ActivityRequest::Deletion::none) {
                        request.deletion = ActivityRequest::Deletion::whenConfirmed;
                    }
                },
                "Delete it, after a question");
            deletion->excludes(type);
            command
                .add_flag_callback(
                    "--yes", [&request] { request.deletion = ActivityRequest::Deletion::atOnce; },
                    "Without the question")
                ->needs(deletion);
        });
    grammar.command<RouteRequest>("route", "What GPX files hold", [](CLI::App& command, RouteRequest& request) {
        command.add_option("FILE", request.paths, "The GPX files")->required();
        command.add_flag_callback(
            "--points", [&request] { request.detail = RouteRequest::Detail::points; }, "With --json: every point");
    });
    grammar.command<ExportRequest>(
        "export", "Write the route of an activity as GPX", [](CLI::App& command, ExportRequest& request) {
            command.add_option("ID", request.activity, "The beginning of its identifier, or last")->required();
            CLI::Option* const file =
                command.add_option("-o,--output", request.file, "Write to this file instead of standard output")
                    ->type_name("FILE");
            command
                .add_flag_callback(
                    "--force", [&request] { request.existing = ExportRequest::Existing::overwrite; },
                    "Replace the file when it is there")
                ->needs(file);
            command
                .add_option("--hide-home", request.hiddenRadius,
                            "Cut what lies this near to where the route begins and ends")
                ->type_name("METRES");
        });
}

void describeKeeping(Grammar& grammar) {
    grammar.command<BackupRequest>(
        "backup", "Keep all data in one file", [](CLI::App& command, BackupRequest& request) {
            command.add_option("FILE", request.file, "The file to write, a zip archive")->required();
            command.add_flag("--force", request.isForced, "Replace the file when it is there");
        });
    grammar.command<RestoreRequest>("restore", "Put the data of a backup in the place of yours",
                                    [](CLI::App& command, RestoreRequest& request) {
                                        command.add_option("FILE", request.file, "The backup")->required();
                                    });
    grammar.command<ExportDaysRequest>(
        "export-days", "Write all days as a table", [](CLI::App& command, ExportDaysRequest& request) {
            command.add_option("FILE", request.file, "The CSV file to write")->required();
            command.add_flag("--force", request.isForced, "Replace the file when it is there");
        });
}

void describeRecording(Grammar& grammar) {
    grammar.command<RecordRequest>(
        "record", "Record a walk, run, hike or ride", [](CLI::App& command, RecordRequest& request) {
            command.add_option("TYPE", request.type, "walk, run, hike or cycle");
            CLI::Option* const finish = command.add_flag_callback(
                "--finish", [&request] { request.finish = RecordRequest::Finish::yes; },
                "Put a recording that was left into the history");
            CLI::Option* const gpsd =
                command.add_option("--gpsd", request.gpsd, "Where gpsd answers; localhost:2947 without it")
                    ->type_name("HOST:PORT")
                    ->excludes(finish);
            CLI::Option* const replay =
                command.add_option("--replay", request.replay, "Play a GPX file back instead of receiving")
                    ->type_name("FILE")
                    ->excludes(finish)
                    ->excludes(gpsd);
            command.add_option("--speed", request.speed, "Of the replay: 1, 10 or max; max without it")
                ->needs(replay);
            command
                .add_flag_callback(
                    "--save", [&request] { request.save = RecordRequest::Save::yes; },
                    "Put the replay into the history")
                ->needs(replay);
        });
}

void describeCommands(Grammar& grammar) {
    grammar.command<ImportRequest>(
        "import", "Read a phone's health export, or an activity from GPX",
        [](CLI::App& command, ImportRequest& request) {
            CLI::Option* const files = command.add_option(
                "FILE", request.paths, "The XML document, the zip or the unpacked folder; or a GPX file");
            CLI::Option* const type =
                command
                    .add_option("--as", request.activityType,
                                "What the activity of a GPX file was: walk, run, hike or cycle")
                    ->type_name("TYPE");
            CLI::Option* const undo = command.add_flag("--undo", request.isUndo,
                                                       "Take back what the last import of an export has added");
            undo->excludes(files)->excludes(type);
            command.parse_complete_callback([files, undo] {
                if (files->empty() && undo->empty()) throw CLI::RequiredError("FILE");
            });
        });
    grammar.command<TodayRequest>("today", "Today's steps, the goal and the streak");
    grammar.command<DayRequest>("day", "One day with its hours", [](CLI::App& command, DayRequest& request) {
        command.add_option("DATE", request.day, "YYYY-MM-DD, today or yesterday")->required();
    });
    grammar.command<WeekRequest>("week", "One week by day", [](CLI::App& command, WeekRequest& request) {
        command.add_option("DATE", request.day, "A day of the week; this week without it");
    });
    grammar.command<MonthRequest>("month", "One month by day", [](CLI::App& command, MonthRequest& request) {
        command.add_option("MONTH", request.month, "YYYY-MM; this month without it");
    });
    grammar.command<StreaksRequest>("streaks", "Days in a row on which the goal was met");
    grammar.command<PaceRequest>("pace", "Today so far against a usual day");
    grammar.command<RankRequest>(
        "rank", "Where the steps of a day stand at your age", [](CLI::App& command, RankRequest& request) {
            command.add_option("--steps", request.steps, "Of so many steps; of today's without it")
                ->type_name("STEPS");
            command.add_option("--age", request.age, "At another age, 0 to 130")->type_name("YEARS");
        });
    grammar.command<CompareRequest>(
        "compare", "A day against your own past", [](CLI::App& command, CompareRequest& request) {
            command.add_option("METRIC", request.metric,
                               "steps, distance, calories, activeMinutes or flights; steps without it");
            command.add_option("--date", request.day, "YYYY-MM-DD, today or yesterday")->type_name("DATE");
        });
    grammar.command<CalendarRequest>(
        "calendar", "A month as a page of the calendar", [](CLI::App& command, CalendarRequest& request) {
            command.add_option("MONTH", request.first, "YYYY-MM; this month without it");
            command.add_option("METRIC", request.second,
                               "steps, distance, calories, activeMinutes or flights; steps without it");
        });
    grammar.command<RecapRequest>("recap", "What a month was", [](CLI::App& command, RecapRequest& request) {
        command.add_option("MONTH", request.month, "YYYY-MM; the month that has ended last without it");
    });
    describeRecording(grammar);
    describeActivities(grammar);
    grammar.command<AwardsRequest>(
        "awards", "Badges, and how far the next ones are", [](CLI::App& command, AwardsRequest& request) {
            command.add_option("--category", request.category, "steps, distance, streaks or special")
                ->type_name("NAME");
        });
    grammar.command<WaterRequest>(
        "water", "Show or add what you drank today", [](CLI::App& command, WaterRequest& request) {
            command.add_option("AMOUNT", request.amount, "What was drunk, as 250, 250 ml or 8 floz");
            command.add_option("UNIT", request.unit, "ml or floz; that of the settings without it");
            command.add_option("--drink", request.drink, "water, tea, coffee, juice ...; water without it")
                ->type_name("TYPE");
            command.add_option("--container", request.container, "Drunk from the container of this name")
                ->type_name("NAME");
            command.add_flag("--undo", request.undo, "Take the last drink back");
            command.add_flag("--history", request.history, "Show the last 30 days");
        });
    grammar.command<ContainersRequest>(
        "containers", "Show or change what you drink from", [](CLI::App& command, ContainersRequest& request) {
            command.add_option("NAME", request.name, "The container; all of them without it");
            command.add_option("AMOUNT", request.amount, "How much it holds; a new one needs it");
            command.add_option("UNIT", request.unit, "ml or floz; that of the settings without it");
            command.add_option("--drink", request.drink, "What is drunk from it")->type_name("TYPE");
            command.add_option("--rename", request.newName, "Its new name")->type_name("NAME");
            command.add_flag("--default", request.isDefault, "Drink from it when none is named");
            command.add_flag("--remove", request.isRemoval, "Remove it");
        });
    grammar.command<WidgetRequest>(
        "widget", "Today as one line for a status bar", [](CLI::App& command, WidgetRequest& request) {
            command.add_option("--format", request.format, "plain, waybar, i3blocks or json; plain without it")
                ->type_name("NAME");
            command.add_flag("--follow", request.follows, "Stay, and print a new line when something has changed");
        });
    grammar.command<GoalRequest>(
        "goal", "Show or set the daily goal", [](CLI::App& command, GoalRequest& request) {
            command.add_option("STEPS", request.goal, "The goal from today on, 1 to 1000000");
        });
    grammar.command<WeightRequest>(
        "weight", "Show your weight over time, or note it", [](CLI::App& command, WeightRequest& request) {
            command.add_option("VALUE", request.value, "What you weigh now");
            command.add_option("UNIT", request.unit, "kg or lb; the one of the settings without it");
        });
    grammar.command<HeightRequest>(
        "height", "Show your height, or note it", [](CLI::App& command, HeightRequest& request) {
            command.add_option("VALUE", request.value, "How tall you are");
            command.add_option("UNIT", request.unit, "cm or in; the one of the settings without it");
        });
    grammar.command<ProfileRequest>(
        "profile", "Show or change what Pedvar knows of you", [](CLI::App& command, ProfileRequest& request) {
            command.add_option("KEY", request.key, "age, gender, targetWeight, ...; all of them without it");
            command.add_option("VALUE", request.value, "Its new value; none to forget it");
        });
    grammar.command<SettingsRequest>(
        "settings", "Show or change the settings", [](CLI::App& command, SettingsRequest& request) {
            command.add_option("KEY", request.key, "The setting; all of them without it");
            command.add_option("VALUE", request.value, "Its new value");
        });
    grammar.command<SourcesRequest>(
        "sources", "Who counted the steps, and whose count", [](CLI::App& command, SourcesRequest& request) {
            command
                .add_option("--order", request.order, "Names of sources, the most trusted first; the rest follow")
                ->type_name("NAME...");
        });
    grammar.command<DoctorRequest>(
        "doctor", "Check what is stored", [](CLI::App& command, DoctorRequest& request) {
            command.add_flag_callback(
                "--rebuild", [&request] { request.repair = DoctorRequest::Repair::rebuildTotals; },
                "Make the stored totals anew");
        });
    grammar.command<WatchRequest>("watch", "Stay: count steps, keep widgets up to date, and tell of the day");
    grammar.command<UpdateRequest>(
        "update", "Whether there is a newer Pedvar", [](CLI::App& command, UpdateRequest& request) {
            using enum UpdateRequest::Action;
            const auto action = [&](const char* name, UpdateRequest::Action wanted, const char* summary) {
                return command.add_flag_callback(name, [&request, wanted] { request.action = wanted; }, summary);
            };
            CLI::Option* const asking = action("--check", check, "Ask for the newest version now");
            CLI::Option* const opening = action("--open", open, "Open its page in the browser")->excludes(asking);
            action("--dismiss", dismiss, "Do not tell of this version again")->excludes(asking)->excludes(opening);
        });
    describeKeeping(grammar);
}

bool asksForHelp(std::span<const char* const> arguments) {
    return std::ranges::any_of(arguments, [](std::string_view argument) {
        return argument == "--help" || (argument.starts_with('-') && argument.find('h') == 1);
    });
}

/// The command given, or the program itself.
const CLI::App& commandGiven(const CLI::App& app) {
    const auto given = app.get_subcommands();
    return given.empty() ? app : *given.front();
}

/// What stands around `middle` in an English sentence of the library.
std::optional<std::pair<std::string_view, std::string_view>> around(std::string_view middle,
                                                                    std::string_view sentence) {
    const std::size_t place = sentence.find(middle);
    if (place == sentence.npos) return std::nullopt;
    return std::pair(sentence.substr(0, place), sentence.substr(place + middle.size()));
}

Phrase withoutValue(std::string_view flag) {
    return Phrase("{} takes no value; `pedvar --help` tells more.", {flag});
}

/// The library words its errors in English only; those that our grammar can meet are worded here.
Phrase wordingOf(const CLI::ParseError& error) {
    const std::string said = error.what();
    if (const auto parts = around("Could not convert: ", said)) {
        return withoutValue(parts->second.substr(0, parts->second.find(" = ")));
    }
    if (const auto parts = around(": At Most ", said)) {
        return Phrase("{} is given more than once; `pedvar --help` tells more.", {parts->first});
    }
    if (const auto parts = around(" was given a disallowed flag override", said)) {
        return withoutValue("--" + std::string(parts->first));
    }
    if (const auto parts = around(" is required", said)) {
        return Phrase("{} is missing; `pedvar --help` tells more.", {parts->first});
    }
    if (const auto parts = around(": 1 required ", said)) {
        return Phrase("{} needs a value; `pedvar --help` tells more.", {parts->first});
    }
    if (const auto parts = around(" excludes ", said)) {
        return Phrase("{0} and {1} do not go together; `pedvar --help` tells more.",
                      {parts->first, parts->second});
    }
    if (const auto parts = around(" requires ", said)) {
        return Phrase("{0} needs {1}; `pedvar --help` tells more.", {parts->first, parts->second});
    }
    return Phrase("{}; `pedvar --help` tells more.", {said});
}

struct Writing {
    const GlobalOptions& options;

    /// A recap that a person sees is a recap that was shown; scripts and looks from another moment change nothing.
    bool operator()(const RecapRequest&) const { return options.format == OutputFormat::screen && !options.now; }
    bool operator()(const WeightRequest& weight) const { return weight.value.has_value(); }
    bool operator()(const HeightRequest& height) const { return height.value.has_value(); }
    bool operator()(const ProfileRequest& profile) const { return profile.value.has_value(); }
    bool operator()(const RecordRequest&) const { return true; }
    bool operator()(const ImportRequest&) const { return true; }
    bool operator()(const RestoreRequest&) const { return true; }
    bool operator()(const GoalRequest& goal) const { return goal.goal.has_value(); }
    bool operator()(const WaterRequest& water) const { return isDrink(water) || water.undo; }
    bool operator()(const ContainersRequest& containers) const { return containers.name.has_value(); }
    bool operator()(const SettingsRequest& settings) const { return settings.value.has_value(); }
    bool operator()(const SourcesRequest& sources) const { return !sources.order.empty(); }
    bool operator()(const DoctorRequest& doctor) const { return doctor.repair != DoctorRequest::Repair::none; }
    bool operator()(const WatchRequest&) const { return true; }
    bool operator()(const UpdateRequest& update) const {
        return update.action == UpdateRequest::Action::check || update.action == UpdateRequest::Action::dismiss;
    }
    bool operator()(const ActivityRequest& activity) const {
        return activity.type || activity.deletion != ActivityRequest::Deletion::none;
    }
    bool operator()(const auto&) const { return false; }
};

/// "--delete=false" would be taken for "--delete".
void refuseValuesOfFlags(CLI::App& app) {
    for (CLI::Option* option :
         app.get_options([](const CLI::Option* each) { return each->get_expected_max() == 0; })) {
        option->disable_flag_override();
    }
    for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        refuseValuesOfFlags(*command);
}

}  // namespace

CommandResult<CommandLine> parseCommandLine(std::span<const char* const> arguments,
                                            const TextCatalogue& catalogue) {
    CommandLine line{.global = {}, .wish = Request{}};
    line.global.format = formatOf(arguments);  // what stands before it may end the reading
    CLI::App app("Steps, walks and goals from your own data.", "pedvar");
    Request request;
    Grammar grammar{app, request, arguments, asksForHelp(arguments)};

    const std::string version = "pedvar " PEDVAR_VERSION;
    app.set_version_flag("--version", version, "Print the version and end");
    app.set_help_flag("-h,--help", "Print this text and end");
    app.add_option("--data", line.global.dataFolder, "Keep the data in this folder")->type_name("DIR");
    app.add_option("--now", line.global.now, "Look from another moment (2024-05-01T18:30)")->type_name("TIME");
    // Its meaning is `formatOf`'s, which knows it also where the rest cannot be read.
    bool asksForJson = false;
    app.add_flag("--json", asksForJson, "Answer with one JSON document");
    app.require_subcommand(0, 1);  // none is told below, in our words
    describeCommands(grammar);
    refuseValuesOfFlags(app);

    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
    } catch (const CLI::CallForVersion&) {
        line.wish = Information{"version", PEDVAR_VERSION, version + "\n"};
        return line;
    } catch (const CLI::CallForHelp&) {
        const CLI::App& command = commandGiven(app);
        const std::string name = &command == &app ? "pedvar" : "pedvar " + command.get_name();
        const std::string help = helpText(command, name, Texts(catalogue));
        line.wish = Information{"help", help, help};
        return line;
    } catch (const CLI::ExtrasError& error) {
        if (app.get_subcommands().empty() && !app.remaining().empty()) {
            const std::string unknown = app.remaining().front();
            return usageError(unknown.starts_with('-')
                                  ? Phrase("There is no option \"{}\"; `pedvar --help` lists them.", {unknown})
                                  : Phrase("There is no command \"{}\"; `pedvar --help` lists them.", {unknown}));
        }
        const std::string extra = fmt::format("{}", fmt::join(app.remaining(true), " "));
        return usageError(Phrase("\"{}\" is not expected; `pedvar --help` tells more.", {extra}));
    } catch (const CLI::ParseError& error) {
        return usageError(wordingOf(error));
    }
    if (app.get_subcommands().empty()) {
        return usageError(Phrase("A command is needed; `pedvar --help` lists them."));
    }
    line.wish = std::move(request);
    return line;
}

std::optional<std::string> dataFolderOf(std::span<const char* const> arguments) {
    constexpr std::string_view option = "--data";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == option && i + 1 < arguments.size()) return arguments[i + 1];
        if (argument.starts_with("--data=")) return std::string(argument.substr(option.size() + 1));
    }
    return std::nullopt;
}

OutputFormat formatOf(std::span<const char* const> arguments) {
    const auto isJson = [](std::string_view argument) {
        return argument == "--json" || argument == "--json=true";
    };
    return std::ranges::any_of(arguments, isJson) ? OutputFormat::json : OutputFormat::screen;
}

bool needsSettings(const Request& request) {
    return !std::holds_alternative<DoctorRequest>(request) && !std::holds_alternative<WidgetRequest>(request) &&
           !std::holds_alternative<RestoreRequest>(request);
}

bool needsFolder(const Request& request) {
    return !std::holds_alternative<WidgetRequest>(request) && !std::holds_alternative<RestoreRequest>(request);
}

bool isWriting(const Request& request, const GlobalOptions& options) {
    return std::visit(Writing{options}, request);
}

}  // namespace pedvar
