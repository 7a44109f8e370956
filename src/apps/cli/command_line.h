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
    std::optional<std::string> activityType;  // of the GPX files among them
    bool isUndo = false;                      // of the last import
};
struct BackupRequest {
    std::string file;
    bool isForced = false;
};
struct RestoreRequest {
    std::string file;
};
struct ExportDaysRequest {
    std::string file;
    bool isForced = false;
};
struct RouteRequest {
    enum class Detail { summary, points };
    std::vector<std::string> paths;
    Detail detail = Detail::summary;
};
struct ActivitiesRequest {};
struct ActivityRequest {
    enum class Deletion { none, whenConfirmed, atOnce };
    std::string activity;
    std::optional<std::string> type;  // to change to
    Deletion deletion = Deletion::none;
};
struct ExportRequest {
    enum class Existing { keep, overwrite };
    std::string activity;
    std::optional<std::string> file;
    std::optional<std::string> hiddenRadius;
    Existing existing = Existing::keep;
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
struct WidgetRequest {
    std::optional<std::string> format;
    bool follows = false;
};
struct GoalRequest {
    std::optional<std::string> goal;
};
struct SettingsRequest {
    std::optional<std::string> key;
    std::optional<std::string> value;
};
struct PaceRequest {};
struct RankRequest {
    std::optional<std::string> steps;
    std::optional<std::string> age;
};
struct CompareRequest {
    std::string metric = "steps";
    std::string day = "today";
};
/// A month, a metric, or both in either order.
struct CalendarRequest {
    std::optional<std::string> first;
    std::optional<std::string> second;
};
struct RecapRequest {
    std::optional<std::string> month;
};
/// An amount of the body's to be stored; without a value the stored ones are shown.
struct BodyRequest {
    std::optional<std::string> value;
    std::optional<std::string> unit;
};
struct WeightRequest : BodyRequest {};
struct HeightRequest : BodyRequest {};
struct ProfileRequest {
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
struct UpdateRequest {
    enum class Action { show, check, open, dismiss };
    Action action = Action::show;
};
struct RecordRequest {
    enum class Finish { no, yes };
    enum class Save { no, yes };
    std::optional<std::string> type;
    Finish finish = Finish::no;
    std::optional<std::string> gpsd;
    std::optional<std::string> replay;
    std::string speed = "max";
    Save save = Save::no;
};
struct WatchRequest {};

using Request =
    std::variant<ImportRequest, TodayRequest, DayRequest, WeekRequest, MonthRequest, StreaksRequest, PaceRequest,
                 RankRequest, CompareRequest, CalendarRequest, RecapRequest, ActivitiesRequest, ActivityRequest,
                 RouteRequest, ExportRequest, RecordRequest, WatchRequest, AwardsRequest, WaterRequest,
                 ContainersRequest, WidgetRequest, GoalRequest, WeightRequest, HeightRequest, ProfileRequest,
                 SettingsRequest, SourcesRequest, DoctorRequest, UpdateRequest, BackupRequest, RestoreRequest,
                 ExportDaysRequest>;

/// Asked for with `--help` or `--version`.
struct Information {
    std::string key;  // names it in JSON
    std::string value;
    std::string screen;
};

struct CommandLine {
    GlobalOptions global;
    std::variant<Request, Information> wish;
};

/// Reads the arguments behind the program's name. Values are only split apart here; what they mean is for the
/// command to say. The catalogue is asked only for a text of help.
CommandResult<CommandLine> parseCommandLine(std::span<const char* const> arguments,
                                            const TextCatalogue& catalogue = EnglishTexts());

/// The folder that is named, also when the command line is wrong elsewhere.
std::optional<std::string> dataFolderOf(std::span<const char* const> arguments);

/// The format in which to answer, also when the command line is wrong elsewhere.
OutputFormat formatOf(std::span<const char* const> arguments);

/// Whether something was drunk.
inline bool isDrink(const WaterRequest& request) {
    return request.amount || request.drink || request.container;
}

/// Whether the command needs the settings, and ends when they cannot be read.
bool needsSettings(const Request& request);

/// Whether the command needs the data folder to stay in its place while it runs.
bool needsFolder(const Request& request);

/// Whether the command changes what is stored.
bool isWriting(const Request& request, const GlobalOptions& options = {});

}  // namespace pedvar
