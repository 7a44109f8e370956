#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/import_views.h"
#include "apps/cli/health.h"
#include "apps/cli/interruption.h"
#include "apps/cli/progress_bar.h"
#include "linux/import/health_importer.h"

#include <unistd.h>
#include <stop_token>

namespace pedvar {
namespace {

ImportReport readExports(const ImportRequest& request, Health& health, const Application& application) {
    const Screen screen = application.screen();
    ProgressBar bar(screen.figures, screen.text, terminalBehind(STDERR_FILENO, ColorOutput::never));
    const Interruption interruption;
    std::stop_source stop;
    const auto showProgress = [&](const ImportProgress& progress) {
        if (interruption.hasHappened()) stop.request_stop();
        bar.show(static_cast<double>(progress.bytesDone), static_cast<double>(progress.bytesTotal));
    };
    const std::vector<std::filesystem::path> paths(request.paths.begin(), request.paths.end());
    SampleWriter writer(health.database);
    return HealthImporter(writer).run(paths, showProgress, stop.get_token());
}

constexpr std::int64_t highestAge = 130;  // years; nobody has lived longer

/// In full years; none for a birthday that nobody alive can have.
std::optional<std::int64_t> ageOn(Day today, std::optional<std::chrono::year_month_day> birth) {
    if (!birth) return std::nullopt;
    const std::chrono::year_month_day day(today);
    const bool isBeforeBirthday = std::pair(day.month(), day.day()) < std::pair(birth->month(), birth->day());
    const std::int64_t age =
        static_cast<int>(day.year()) - static_cast<int>(birth->year()) - (isBeforeBirthday ? 1 : 0);
    return 0 <= age && age <= highestAge ? std::optional(age) : std::nullopt;
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

}  // namespace

CommandResult<Report> run(const ImportRequest& request, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const ImportReport report = readExports(request, **health, application);
    auto problem = problemOf(report, application.text());
    if (report.counts.read > 0 || report.person.dateOfBirth || report.person.sex) {
        const auto followed = follow(report, application);
        if (!followed && !problem) problem = followed.error();
    }
    if (application.wantsJson()) return Report{importDocument(report), std::move(problem)};
    return Report{importView(report, application.screen()) + newBadgeLines(application), std::move(problem)};
}

}  // namespace pedvar
