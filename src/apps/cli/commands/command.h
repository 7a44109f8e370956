/// The commands, one function each.
#pragma once

#include "apps/cli/command_line.h"
#include "apps/cli/error.h"
#include "core/json_value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace pedvar {

class Application;

/// Takes text for standard output, piece by piece.
using TextSink = std::function<void(std::string_view)>;

/// Writes an answer that is too long to be held, document and error or text as they have to appear. Called while
/// the application lives.
using LongAnswer = std::move_only_function<std::optional<CommandError>(const TextSink&)>;

/// What a command answers: a JSON document where one was asked for, otherwise text for a person, as UTF-8.
struct Report {
    std::variant<JsonObject, std::string, LongAnswer> content;
    std::optional<CommandError> problem =
        std::nullopt;  // ends the command with failure, below what it has to show
};

CommandResult<Report> run(const ImportRequest& request, Application& application);
CommandResult<Report> run(const BackupRequest& request, Application& application);
CommandResult<Report> run(const RestoreRequest& request, Application& application);
CommandResult<Report> run(const ExportDaysRequest& request, Application& application);
CommandResult<Report> run(const TodayRequest& request, Application& application);
CommandResult<Report> run(const DayRequest& request, Application& application);
CommandResult<Report> run(const WeekRequest& request, Application& application);
CommandResult<Report> run(const MonthRequest& request, Application& application);
CommandResult<Report> run(const StreaksRequest& request, Application& application);
CommandResult<Report> run(const PaceRequest& request, Application& application);
CommandResult<Report> run(const RankRequest& request, Application& application);
CommandResult<Report> run(const CompareRequest& request, Application& application);
CommandResult<Report> run(const CalendarRequest& request, Application& application);
CommandResult<Report> run(const RecapRequest& request, Application& application);
CommandResult<Report> run(const AwardsRequest& request, Application& application);
CommandResult<Report> run(const WaterRequest& request, Application& application);
CommandResult<Report> run(const ContainersRequest& request, Application& application);
CommandResult<Report> run(const WidgetRequest& request, Application& application);
CommandResult<Report> run(const GoalRequest& request, Application& application);
CommandResult<Report> run(const WeightRequest& request, Application& application);
CommandResult<Report> run(const HeightRequest& request, Application& application);
CommandResult<Report> run(const ProfileRequest& request, Application& application);
CommandResult<Report> run(const SettingsRequest& request, Application& application);
CommandResult<Report> run(const SourcesRequest& request, Application& application);
CommandResult<Report> run(const DoctorRequest& request, Application& application);
CommandResult<Report> run(const WatchRequest& request, Application& application);
CommandResult<Report> run(const UpdateRequest& request, Application& application);
CommandResult<Report> run(const RouteRequest& request, Application& application);
CommandResult<Report> run(const ActivitiesRequest& request, Application& application);
CommandResult<Report> run(const ActivityRequest& request, Application& application);
CommandResult<Report> run(const ExportRequest& request, Application& application);
CommandResult<Report> run(const RecordRequest& request, Application& application);

}  // namespace pedvar
