#include "apps/cli/commands/import_views.h"

#include "apps/cli/commands/day_views.h"
#include "apps/cli/moment.h"
#include "core/reflection.h"

namespace pedvar {
namespace {

constexpr auto allReasons = [] {
    std::array<SkipReason, skipReasonCount> reasons{};
    for (std::size_t i = 0; i < reasons.size(); ++i) reasons[i] = static_cast<SkipReason>(i);
    return reasons;
}();

JsonObject countsDocument(const ImportCounts& counts) {
    JsonObject skipped;
    for (const SkipReason reason : allReasons) {
        const std::int64_t count = counts.skipped[reason];
        if (count > 0) skipped.emplace_back(std::string(nameOf(reason)), JsonValue{count});
    }
    return {
        {"read", {counts.read}},
        {"added", {counts.added}},
        {"alreadyThere", {counts.alreadyThere}},
        {"skipped", {std::move(skipped)}},
        {"workouts", {counts.workouts}},
        {"routes", {counts.routes}},
    };
}

JsonValue fileDocument(const ImportedFile& file, const Texts& text) {
    JsonObject result{{"file", {file.name}}};
    for (auto& member : countsDocument(file.counts)) result.push_back(std::move(member));
    result.emplace_back("error", file.error ? errorDocument(errorOf(file), text) : JsonValue());
    return {std::move(result)};
}

std::string describe(SkipReason reason, const Texts& text) {
    switch (reason) {
        case SkipReason::notAQuantity:
            return text("not a quantity");
        case SkipReason::unknownUnit:
            return text("unknown unit");
        case SkipReason::badValue:
            return text("no number");
        case SkipReason::badDate:
            return text("impossible date");
        case SkipReason::missingAttribute:
            return text("incomplete");
        case SkipReason::malformed:
            return text("unreadable");
        case SkipReason::tooVaried:
            return text("too many kinds");
    }
    return {};
}

std::string skippedLine(const SkipCounts& skipped, const Screen& screen) {
    std::string reasons;
    for (const SkipReason reason : allReasons) {
        if (skipped[reason] == 0) continue;
        if (!reasons.empty()) reasons += ", ";
        reasons += screen.text("{}: {}", describe(reason, screen.text), screen.figures.number(skipped[reason]));
    }
    return screen.figures.number(skipped.total()) + (reasons.empty() ? "" : " (" + reasons + ")");
}

}  // namespace

CommandError errorOf(const ImportedFile& file) {
    CommandError error = errorOf(*file.error);
    if (file.endedEarly) error.kind = ErrorKind::truncated;
    return error;
}

JsonObject importDocument(const ImportReport& report, const Texts& text) {
    JsonObject result = countsDocument(report.counts);
    JsonArray files;
    for (const ImportedFile& file : report.files) files.push_back(fileDocument(file, text));
    result.emplace_back("files", JsonValue{std::move(files)});
    return result;
}

std::string importView(const ImportReport& report, const Screen& screen) {
    if (report.counts.read == 0 && !report.isComplete()) return {};
    const ImportCounts& counts = report.counts;
    const Figures& figures = screen.figures;
    std::string result;
    for (const ImportedFile& file : report.files) {
        if (!file.error || file.counts.read > 0) result += harmless(file.name) + "\n";
    }
    std::vector<std::pair<std::string, std::string>> lines{
        {screen.text("Records read"), figures.number(counts.read)},
        {screen.text("Added"), figures.number(counts.added)},
        {screen.text("Already there"), figures.number(counts.alreadyThere)},
        {screen.text("Skipped"), skippedLine(counts.skipped, screen)},
    };
    if (counts.workoutsRead > 0) {
        lines.emplace_back(screen.text("Workouts added"),
                           screen.text.plural("{} of {}, with {} route", "{} of {}, with {} routes", counts.routes,
                                              figures.number(counts.workouts), figures.number(counts.workoutsRead),
                                              figures.number(counts.routes)));
    }
    if (counts.workoutsSkipped > 0) {
        lines.emplace_back(screen.text("Workouts skipped"), figures.number(counts.workoutsSkipped));
    }
    if (counts.routesMissing > 0)
        lines.emplace_back(screen.text("Routes missing"), figures.number(counts.routesMissing));
    if (counts.repairedBytes > 0) {
        lines.emplace_back(screen.text("Bytes repaired"),
                           figures.number(static_cast<std::int64_t>(counts.repairedBytes)));
    }
    return result + "\n" + labelled(lines);
}

JsonObject undoneDocument(const UndoneImport& undone, const Calendar& calendar) {
    return {
        {"begun", {isoText(undone.begun, calendar)}},
        {"samples", {undone.samples}},
        {"workouts", {undone.workouts}},
        {"routes", {undone.routes}},
        {"sources", {undone.sources}},
    };
}

std::string undoneView(const UndoneImport& undone, const Screen& screen, const Calendar& calendar) {
    const Figures& figures = screen.figures;
    return screen.text("Taken back: the import of {0}, {1}.", figures.date(calendar.day(undone.begun)),
                       figures.time(calendar.localTime(undone.begun))) +
           "\n\n" +
           labelled({
               {screen.text("Records"), figures.number(undone.samples)},
               {screen.text("Workouts"), figures.number(undone.workouts)},
               {screen.text("Routes"), figures.number(undone.routes)},
               {screen.text("Sources"), figures.number(undone.sources)},
           });
}

}  // namespace pedvar
