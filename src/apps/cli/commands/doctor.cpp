#include "apps/cli/application.h"
#include "apps/cli/commands/amounts.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"
#include "hydration/hydration_documents.h"
#include "linux/health/health_administration.h"
#include "linux/system/sqlite_document_parts.h"
#include "recording/session_history.h"

#include <fmt/ranges.h>
#include <unistd.h>

namespace pedvar {
namespace {

struct Findings {
    std::vector<std::string> problems;
    std::int64_t staleDays = 0;
    std::vector<std::pair<std::string, std::int64_t>> rows;
    std::vector<std::string> setAside;  // keys of documents that could not be read
};

void add(Findings& findings, const StoreExamination& examination, const Screen& screen) {
    for (const std::string& damage : examination.damages) findings.problems.push_back(damage);
    for (const TotalsDifference& difference : examination.differences) {
        findings.problems.push_back(screen.text(
            "The total of {0} on {1} is {2}, its samples say {3}; `pedvar doctor --rebuild` makes it anew.",
            difference.type, difference.day, difference.kept, difference.counted));
    }
    for (const LoosePermissions& loose : examination.permissions) {
        findings.problems.push_back(
            screen.text("{0} has mode {1:04o}: others than you can reach your data. `chmod go= \"{0}\"` mends it.",
                        loose.path, loose.mode));
    }
    findings.staleDays = examination.staleDays;
    findings.rows = examination.rows;
}

Findings examine(Application& application) {
    Findings findings;
    for (const DefaultsError& damage : application.defaults().damages())
        findings.problems.push_back(damage.message);
    findings.setAside = application.defaults().standardFile().keysSetAside();
    SqliteDocumentParts parts(application.defaults());
    if (const auto count = SessionHistory(parts).unreadableCount(); count > 0) {
        findings.problems.push_back(application.text()(
            "{} of the activities cannot be read. They are left out, and set aside with the next change.", count));
    }
    const HydrationDocuments drinks(application.defaults(), application.settings());
    if (auto damage = damageOf(drinks.unreadableKeys(application.clock().now()), application.text())) {
        findings.problems.push_back(std::move(damage->message));
    }
    const std::string folder = application.folder().string();
    if (std::filesystem::exists(folder) && ::access(folder.c_str(), W_OK | X_OK) != 0) {
        findings.problems.push_back(
            application.text()("The folder {} cannot be written, so nothing new can be stored in it.", folder));
    }
    const auto health = application.health();
    if (!health) {
        findings.problems.push_back(health.error().message);
        return findings;
    }
    const auto examination = HealthAdministration((*health)->database).examine();
    if (examination) {
        add(findings, *examination, application.screen());
    } else {
        findings.problems.push_back(examination.error().message);
    }
    return findings;
}

CommandResult<void> rebuild(Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const auto rebuilt = commandResult(HealthAdministration((*health)->database).rebuildTotals());
    return rebuilt ? application.refresh() : rebuilt;
}

JsonObject document(const Findings& findings) {
    JsonArray problems;
    for (const std::string& problem : findings.problems) problems.push_back({problem});
    JsonArray setAside;
    for (const std::string& key : findings.setAside) setAside.push_back({key});
    JsonObject rows;
    for (const auto& [table, count] : findings.rows) rows.emplace_back(table, JsonValue{count});
    return {
        {"isSound", {findings.problems.empty()}}, {"problems", {std::move(problems)}},
        {"staleDays", {findings.staleDays}},      {"rows", {std::move(rows)}},
        {"setAside", {std::move(setAside)}},
    };
}

std::string view(const Findings& findings, Application& application) {
    const Screen screen = application.screen();
    std::vector<std::pair<std::string, std::string>> lines{
        {screen.text("Data folder"), harmless(application.folder().string())}};
    for (const auto& [table, count] : findings.rows) {
        lines.emplace_back(table, screen.text("{} rows", screen.figures.number(count)));
    }
    std::string result = labelled(lines) + "\n";
    if (findings.staleDays > 0) {
        result += screen.text("The totals of {} wait to be made; until then reading takes longer.\n",
                              screen.figures.days(findings.staleDays));
    }
    for (const std::string& key : findings.setAside) {
        result += screen.text("A document could not be read once; it is kept under \"{}\".\n", harmless(key));
    }
    for (const std::string& problem : findings.problems) result += harmless(problem) + "\n";
    return findings.problems.empty() ? result + screen.text("Everything is sound.") + "\n" : result;
}

}  // namespace

CommandResult<Report> run(const DoctorRequest& request, Application& application) {
    if (request.repair == DoctorRequest::Repair::rebuildTotals) {
        if (const auto rebuilt = rebuild(application); !rebuilt) return std::unexpected(rebuilt.error());
    }
    const Findings findings = examine(application);
    std::optional<CommandError> problem;
    if (!findings.problems.empty()) {
        problem = CommandError{ErrorKind::unsound, application.text()("What is stored is not in order.")};
    }
    if (application.wantsJson()) return Report{document(findings), std::move(problem)};
    return Report{view(findings, application), std::move(problem)};
}

}  // namespace pedvar
