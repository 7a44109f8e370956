#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/import_activities.h"
#include "apps/cli/commands/import_views.h"
#include "apps/cli/gpx_file.h"
#include "apps/cli/health.h"
#include "apps/cli/interruption.h"
#include "apps/cli/progress_bar.h"
#include "linux/health/health_administration.h"
#include "linux/import/document_look.h"
#include "linux/import/health_importer.h"

#include <unistd.h>
#include <algorithm>
#include <stop_token>

namespace pedvar {
namespace {

ImportReport readExports(const std::vector<std::string>& files, Health& health, const Application& application) {
    const Screen screen = application.screen();
    ProgressBar bar(screen.figures, screen.text, terminalBehind(STDERR_FILENO, ColorOutput::never));
    const Interruption interruption;
    std::stop_source stop;
    const auto showProgress = [&](const ImportProgress& progress) {
        if (interruption.hasHappened()) stop.request_stop();
        bar.show(static_cast<double>(progress.bytesDone), static_cast<double>(progress.bytesTotal));
    };
    const std::vector<std::filesystem::path> paths(files.begin(), files.end());
    SampleWriter writer(health.database);
    return HealthImporter(writer).run(paths, showProgress, stop.get_token());
}

/// In full years; none for a birthday that nobody alive can have.
std::optional<std::int64_t> ageOn(Day today, std::optional<std::chrono::year_month_day> birth) {
    if (!birth) return std::nullopt;
    const std::chrono::year_month_day day(today);
    const bool isBeforeBirthday = std::pair(day.month(), day.day()) < std::pair(birth->month(), birth->day());
    const std::int64_t age =
        static_cast<int>(day.year()) - static_cast<int>(birth->year()) - (isBeforeBirthday ? 1 : 0);
    return isValidAge(age) ? std::optional(age) : std::nullopt;
}

/// Brings what is kept beside the health store in line with it.
CommandResult<void> follow(const ImportReport& report, Application& application) {
    SettingsStore& settings = application.settings();
    const ExportedPerson& person = report.person;
    if (const auto age = ageOn(application.today(), person.dateOfBirth); age || person.sex) {
        const auto adopted = commandResult(settings.adoptCharacteristics(age, person.sex));
        if (!adopted) return adopted;
    }
    return application.refresh();
}

std::string newBadgeLines(const Application& application) {
    std::string lines;
    for (const Achievement& badge : application.newBadges()) {
        lines += application.text()("New badge: {}", application.achievementTexts().title(badge.key)) + "\n";
    }
    return lines.empty() ? lines : "\n" + lines;
}

/// Why the import ends with failure, the gravest first.
std::optional<CommandError> problemOf(const ImportReport& report, const Texts& text) {
    if (report.failure) return errorOf(*report.failure);
    if (report.wasStopped) {
        return CommandError{
            ErrorKind::interrupted,
            text("Stopped. What was read so far is kept; running the same import again completes it.")};
    }
    for (const ImportedFile& file : report.files) {
        if (file.error) return errorOf(file);
    }
    return std::nullopt;
}

/// The files of an import by what they hold.
struct SortedFiles {
    std::vector<std::string> exports;
    std::vector<std::string> gpx;
};

/// What is neither goes where the person says that it belongs.
SortedFiles sorted(const ImportRequest& request) {
    SortedFiles files;
    for (const std::string& path : request.paths) {
        bool isGPX = isGPXFile(path);
        if (!isGPX && request.activityType) {
            const auto head = headOf(openFile(path));
            const auto kind = head ? lookOf(*head).kind : DocumentLook::Kind::other;
            std::error_code error;
            isGPX = kind != DocumentLook::Kind::healthExport && kind != DocumentLook::Kind::archive &&
                    !std::filesystem::is_directory(path, error);
        }
        (isGPX ? files.gpx : files.exports).push_back(path);
    }
    return files;
}

/// Of what the activities of GPX files were; none when there are no such files.
CommandResult<std::optional<ActivityType>> typeOf(const ImportRequest& request, const SortedFiles& files,
                                                  const Texts& text) {
    if (!request.activityType) {
        if (files.gpx.empty()) return std::nullopt;
        return usageError(text("\"{}\" is a GPX file; add --as walk, run, hike or cycle to say what it was.",
                               files.gpx.front()));
    }
    const auto type = activityTypeNamed(*request.activityType, text);
    if (!type) return std::unexpected(type.error());
    if (files.gpx.empty())
        return usageError(text("--as is for GPX files, and \"{}\" is none.", files.exports.front()));
    return *type;
}

struct ExportsImported {
    ImportReport report;
    std::optional<CommandError> problem;
};

CommandResult<ExportsImported> importExports(const std::vector<std::string>& paths, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    ExportsImported result{readExports(paths, **health, application), std::nullopt};
    const ImportReport& report = result.report;
    result.problem = problemOf(report, application.text());
    if (report.counts.read > 0 || report.person.dateOfBirth || report.person.sex) {
        const auto followed = follow(report, application);
        if (!followed && !result.problem) result.problem = followed.error();
    }
    return result;
}

std::optional<CommandError> problemOf(const std::vector<ImportedGPX>& imported) {
    const auto failed =
        std::ranges::find_if(imported, [](const ImportedGPX& gpx) { return gpx.error.has_value(); });
    return failed == imported.end() ? std::nullopt : failed->error;
}

CommandResult<Report> undo(Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const auto undone = commandResult(HealthAdministration((*health)->database).undoImport());
    if (!undone) return std::unexpected(undone.error());
    if (!*undone) {
        return std::unexpected(
            CommandError{ErrorKind::failed, application.text()("There is no import to take back.")});
    }
    const auto refreshed = application.refresh();
    const auto problem = refreshed ? std::nullopt : std::optional(refreshed.error());
    const Calendar calendar = application.settings().calendar();
    if (application.wantsJson()) return Report{undoneDocument(**undone, calendar), problem};
    return Report{undoneView(**undone, application.screen(), calendar), problem};
}

}  // namespace

CommandResult<Report> run(const ImportRequest& request, Application& application) {
    if (request.isUndo) return undo(application);
    const SortedFiles files = sorted(request);
    const auto type = typeOf(request, files, application.text());
    if (!type) return std::unexpected(type.error());
    JsonObject document;
    std::string view;
    std::optional<CommandError> problem;
    if (!files.exports.empty()) {
        const auto imported = importExports(files.exports, application);
        if (!imported) return std::unexpected(imported.error());
        problem = imported->problem;
        document = importDocument(imported->report, application.text());
        view = importView(imported->report, application.screen()) + newBadgeLines(application);
    }
    if (*type) {
        const auto imported = importActivities(files.gpx, **type, application);
        if (!problem) problem = problemOf(imported);
        document.emplace_back("activities", JsonValue{importedDocument(imported, application.text())});
        if (!view.empty()) view += "\n";
        view += importedView(imported, application.screen(), application.settings().calendar());
    }
    if (application.wantsJson()) return Report{std::move(document), std::move(problem)};
    return Report{std::move(view), std::move(problem)};
}

}  // namespace pedvar
