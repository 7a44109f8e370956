/// What the person typed.
#pragma once

#include "apps/cli/error.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace pedvar {

enum class OutputFormat { screen, json };

/// Options of every command.
struct GlobalOptions {
    std::optional<std::string> dataFolder;
    std::optional<std::string> now;
    OutputFormat format = OutputFormat::screen;
};

struct ImportRequest {
    std::vector<std::string> paths;
};
struct TodayRequest {};
struct DayRequest {
    std::string day;
};
struct WeekRequest {
    std::string day = "today";
};
struct MonthRequest {
    std::optional<std::string> month;
};
struct StreaksRequest {};
struct AwardsRequest {
    std::optional<std::string> category;
};
struct WaterRequest {
    std::optional<std::string> amount;
    std::optional<std::string> unit;
    std::optional<std::string> drink;
    std::optional<std::string> container;
    bool undo = false;
    bool history = false;
};
struct ContainersRequest {
    std::optional<std::string> name;
    std::optional<std::string> amount;
    std::optional<std::string> unit;
    std::optional<std::string> drink;
    std::optional<std::string> newName;
    bool isDefault = false;
    bool isRemoval = false;
};
struct GoalRequest {
    std::optional<std::string> goal;
};
struct SettingsRequest {
    std::optional<std::string> key;
    std::optional<std::string> value;
};
struct SourcesRequest {
    std::vector<std::string> order;
};
struct DoctorRequest {
    enum class Repair { none, rebuildTotals };
    Repair repair = Repair::none;
};

using Request =
    std::variant<ImportRequest, TodayRequest, DayRequest, WeekRequest, MonthRequest, StreaksRequest, AwardsRequest,
                 WaterRequest, ContainersRequest, GoalRequest, SettingsRequest, SourcesRequest, DoctorRequest>;

/// Asked for with `--help` or `--version`.
struct Information {
    std::string key;  // names it in JSON
    std::string text;
};

struct CommandLine {
    GlobalOptions global;
    std::variant<Request, Information> wish;
};

/// Reads the arguments behind the program's name. Values are only split apart here; what they mean is for the
/// command to say.
CommandResult<CommandLine> parseCommandLine(std::span<const char* const> arguments);

/// The format in which to answer, also when the command line is wrong elsewhere.
OutputFormat formatOf(std::span<const char* const> arguments);

/// Whether something was drunk.
inline bool isDrink(const WaterRequest& request) {
    return request.amount || request.drink || request.container;
}

/// Whether the command changes what is stored.
bool isWriting(const Request& request);

}  // namespace pedvar
