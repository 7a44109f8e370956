#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/health.h"
#include "health/activity_reads.h"
#include "linux/health/health_administration.h"

namespace pedvar {
namespace {

JsonObject document(const std::vector<SourceSummary>& sources) {
    JsonArray entries;
    for (const SourceSummary& source : sources) {
        JsonObject entry{
            {"name", {source.name}},
            {"label", {source.label}},
            {"kind", {std::string(nameOf(source.kind))}},
            {"priority", {std::int64_t{source.priority}}},
            {"samples", {source.sampleCount}},
            {"rawSteps", {wholeNumber(source.rawSum)}},
            {"countedSteps", {wholeNumber(source.countedSum)}},
        };
        entries.push_back({std::move(entry)});
    }
    return {{"sources", {std::move(entries)}}};
}

std::string kindText(SourceKind kind, const Texts& text) {
    switch (kind) {
        case SourceKind::own:
            return text("Pedvar");
        case SourceKind::watch:
            return text("watch");
        case SourceKind::band:
            return text("band");
        case SourceKind::phone:
            return text("phone");
        case SourceKind::application:
            return text("application");
        case SourceKind::handTyped:
            return text("hand-typed");
    }
    return {};
}

std::string view(const std::vector<SourceSummary>& sources, const Screen& screen) {
    if (sources.empty()) return screen.text("There are no sources yet.") + "\n";
    const Figures& figures = screen.figures;
    const auto row = [](const std::array<std::string, 6>& cells) {
        return rightAligned(cells[0], 2) + "  " + leftAligned(cells[1], 11) + rightAligned(cells[2], 12) +
               rightAligned(cells[3], 14) + rightAligned(cells[4], 14) + "  " + cells[5] + "\n";
    };
    std::string result = row({"", screen.text("Kind"), screen.text("Samples"), screen.text("Steps"),
                              screen.text("Counted"), screen.text("Source")});
    for (const SourceSummary& source : sources) {
        result += row({figures.number(std::int64_t{source.priority}), kindText(source.kind, screen.text),
                       figures.number(source.sampleCount), figures.number(wholeNumber(source.rawSum)),
                       figures.number(wholeNumber(source.countedSum)), harmless(source.label)});
    }
    return result + "\n" +
           screen.text(
               "Where sources overlap in time, the one further up counts. To change the order:\n\n"
               "    pedvar sources --order \"first source\" \"second source\"\n");
}

}  // namespace

CommandResult<Report> run(const SourcesRequest& request, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthAdministration administration((*health)->database);
    if (!request.order.empty()) {
        const auto ordered = commandResult(administration.setOrder(request.order));
        if (!ordered) return std::unexpected(ordered.error());
        if (const auto refreshed = application.refresh(); !refreshed) return std::unexpected(refreshed.error());
    }
    const auto sources = commandResult(administration.sources(HKQuantityTypeIdentifierStepCount));
    if (!sources) return std::unexpected(sources.error());
    if (application.wantsJson()) return Report{document(*sources)};
    return Report{view(*sources, application.screen())};
}

}  // namespace pedvar
