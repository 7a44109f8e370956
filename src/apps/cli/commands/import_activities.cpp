#include "apps/cli/commands/import_activities.h"

#include "apps/cli/gpx_file.h"
#include "linux/system/system_random.h"
#include "routes/imported_activity.h"

#include <fmt/format.h>

#include <algorithm>

namespace pedvar {
namespace {

CommandResult<ImportedActivity> readActivity(const std::string& path, ActivityType type,
                                             Application& application) {
    const auto document = readGPXFile(path, application.clock().now());
    if (!document) return std::unexpected(document.error());
    if (document->segments.empty()) return std::unexpected(withoutPoints(path));
    SystemRandom random;
    auto imported = importedActivity(*document, type, random);
    if (!imported) return std::unexpected(withoutTimes(path, application.text()));
    return std::move(*imported);
}

ImportedGPX importActivity(const std::string& path, ActivityType type, Application& application) {
    ImportedGPX result{.file = path, .activity = {}, .error = {}};
    const auto imported = readActivity(path, type, application);
    if (!imported) {
        result.error = imported.error();
        return result;
    }
    SessionHistory& history = application.sessions();
    result.pointsWithoutTime = imported->pointsWithoutTime;
    if (const auto same = sameActivity(imported->session, history)) {
        const auto saved = std::ranges::find(history.savedSessions(), *same,
                                             [](const SavedSession& each) { return each.session.id; });
        result.activity = activityOf(*saved);
        return result;
    }
    const auto added = commandResult(history.add(imported->session));
    if (!added) {
        result.error = added.error();
        return result;
    }
    result.isNew = true;
    result.activity = activityOf({imported->session, imported->session.route.size()});
    return result;
}

}  // namespace

std::vector<ImportedGPX> importActivities(const std::vector<std::string>& paths, ActivityType type,
                                          Application& application) {
    std::vector<ImportedGPX> result;
    for (const std::string& path : paths) result.push_back(importActivity(path, type, application));
    return result;
}

JsonArray importedDocument(const std::vector<ImportedGPX>& imported, const Texts& text) {
    JsonArray result;
    for (const ImportedGPX& gpx : imported) {
        result.push_back({JsonObject{
            {"file", {gpx.file}},
            {"id", gpx.activity ? JsonValue{gpx.activity->id.text()} : JsonValue{}},
            {"added", {gpx.isNew}},
            {"pointsWithoutTime", {static_cast<std::int64_t>(gpx.pointsWithoutTime)}},
            {"error", gpx.error ? errorDocument(*gpx.error, text) : JsonValue{}},
        }});
    }
    return result;
}

std::string importedView(const std::vector<ImportedGPX>& imported, const Screen& screen,
                         const Calendar& calendar) {
    std::string result;
    for (const ImportedGPX& gpx : imported) {
        if (!gpx.activity) {
            if (imported.size() > 1) result += harmless(screen.text.of(gpx.error->message)) + "\n";
            continue;
        }
        const std::string title = titleOf(*gpx.activity, screen, calendar);
        const std::string distance = screen.figures.distance(gpx.activity->distance.value_or(0));
        const std::string id = shortId(gpx.activity->id);
        result += (gpx.isNew ? screen.text("Added: {0}, {1} ({2})", title, distance, id)
                             : screen.text("Already there: {0}, {1} ({2})", title, distance, id)) +
                  "\n";
        if (gpx.pointsWithoutTime > 0) result += leftOut(gpx.pointsWithoutTime, screen) + "\n";
    }
    return result;
}

}  // namespace pedvar
