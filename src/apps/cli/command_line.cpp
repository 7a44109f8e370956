#include "apps/cli/command_line.h"

#include <fmt/format.h>
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

    /// Adds a command whose arguments `describe` binds to a request.
    template <class Wanted, class Describe>
    void command(const std::string& name, const std::string& summary, Describe describe) {
        CLI::App& command = *app.add_subcommand(name, summary);
        const auto request = std::make_shared<Wanted>();
        describe(command, *request);
        command.fallthrough();
        command.group("Commands");
        command.callback([this, request] { chosen = std::move(*request); });
    }
    template <class Wanted>
    void command(const std::string& name, const std::string& summary) {
        command<Wanted>(name, summary, [](CLI::App&, Wanted&) {});
    }
};

void describeCommands(Grammar& grammar) {
    grammar.command<ImportRequest>(
        "import", "Read a phone's health export", [](CLI::App& command, ImportRequest& request) {
            command.add_option("FILE", request.paths, "The XML document, the zip or the unpacked folder")
                ->required();
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
    grammar.command<GoalRequest>(
        "goal", "Show or set the daily goal", [](CLI::App& command, GoalRequest& request) {
            command.add_option("STEPS", request.goal, "The goal from today on, 1 to 1000000");
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
}

/// The command given, or the program itself.
const CLI::App& commandGiven(const CLI::App& app) {
    const auto given = app.get_subcommands();
    return given.empty() ? app : *given.front();
}

struct Writing {
    bool operator()(const ImportRequest&) const { return true; }
    bool operator()(const GoalRequest& goal) const { return goal.goal.has_value(); }
    bool operator()(const WaterRequest& water) const { return isDrink(water) || water.undo; }
    bool operator()(const ContainersRequest& containers) const { return containers.name.has_value(); }
    bool operator()(const SettingsRequest& settings) const { return settings.value.has_value(); }
    bool operator()(const SourcesRequest& sources) const { return !sources.order.empty(); }
    bool operator()(const DoctorRequest& doctor) const { return doctor.repair != DoctorRequest::Repair::none; }
    bool operator()(const auto&) const { return false; }
};

}  // namespace

CommandResult<CommandLine> parseCommandLine(std::span<const char* const> arguments) {
    CommandLine line{.global = {}, .wish = Request{}};
    line.global.format = formatOf(arguments);  // what stands before it may end the reading
    CLI::App app("Steps, walks and goals from your own data.", "pedvar");
    Request request;
    Grammar grammar{app, request};

    app.get_formatter()->column_width(26);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.set_version_flag("--version", "pedvar " PEDVAR_VERSION, "Print the version and end");
    app.set_help_flag("-h,--help", "Print this text and end");
    app.add_option("--data", line.global.dataFolder, "Keep the data in this folder")->type_name("DIR");
    app.add_option("--now", line.global.now, "Look from another moment (2024-05-01T18:30)")->type_name("TIME");
    app.add_flag_callback(
        "--json", [&line] { line.global.format = OutputFormat::json; }, "Answer with one JSON document");
    app.require_subcommand(0, 1);  // none is told below, in our words
    describeCommands(grammar);

    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
    } catch (const CLI::CallForVersion&) {
        line.wish = Information{"version", PEDVAR_VERSION};
        return line;
    } catch (const CLI::CallForHelp&) {
        std::string help = commandGiven(app).help();
        help.erase(help.find_last_not_of('\n') + 2);
        line.wish = Information{"help", std::move(help)};
        return line;
    } catch (const CLI::ExtrasError& error) {
        if (app.get_subcommands().empty() && !app.remaining().empty()) {
            const std::string unknown = app.remaining().front();
            return usageError(fmt::format("There is no {} \"{}\"; `pedvar --help` lists them.",
                                          unknown.starts_with('-') ? "option" : "command", unknown));
        }
        return usageError(fmt::format("{}; `pedvar --help` tells more.", error.what()));
    } catch (const CLI::ParseError& error) {
        return usageError(fmt::format("{}; `pedvar --help` tells more.", error.what()));
    }
    if (app.get_subcommands().empty()) return usageError("A command is needed; `pedvar --help` lists them.");
    line.wish = std::move(request);
    return line;
}

OutputFormat formatOf(std::span<const char* const> arguments) {
    const auto isJson = [](std::string_view argument) { return argument == "--json"; };
    return std::ranges::any_of(arguments, isJson) ? OutputFormat::json : OutputFormat::screen;
}

bool isWriting(const Request& request) {
    return std::visit(Writing{}, request);
}

}  // namespace pedvar
