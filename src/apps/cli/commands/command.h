/// The commands, one function each.
#pragma once

#include "apps/cli/command_line.h"
#include "apps/cli/error.h"
#include "core/json_value.h"

#include <optional>
#include <string>
#include <variant>

namespace pedvar {

class Application;

/// What a command answers: a JSON document where one was asked for, otherwise text for a person, as UTF-8.
struct Report {
    std::variant<JsonObject, std::string> content;
    std::optional<CommandError> problem =
        std::nullopt;  // ends the command with failure, below what it has to show
};

CommandResult<Report> run(const ImportRequest& request, Application& application);
CommandResult<Report> run(const TodayRequest& request, Application& application);
CommandResult<Report> run(const DayRequest& request, Application& application);
CommandResult<Report> run(const WeekRequest& request, Application& application);
CommandResult<Report> run(const MonthRequest& request, Application& application);
CommandResult<Report> run(const StreaksRequest& request, Application& application);
CommandResult<Report> run(const AwardsRequest& request, Application& application);
CommandResult<Report> run(const WaterRequest& request, Application& application);
CommandResult<Report> run(const ContainersRequest& request, Application& application);
CommandResult<Report> run(const GoalRequest& request, Application& application);
CommandResult<Report> run(const SettingsRequest& request, Application& application);
CommandResult<Report> run(const SourcesRequest& request, Application& application);
CommandResult<Report> run(const DoctorRequest& request, Application& application);

}  // namespace pedvar
