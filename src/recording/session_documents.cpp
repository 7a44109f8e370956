#include "recording/session_documents.h"

#include "core/check.h"
#include "core/record_reader.h"

#include <algorithm>

namespace pedvar {

namespace {

constexpr std::size_t pointsInPart = 128;  // at most; some 40 KB

/// Puts a hole into the empty array that is the member `name`. No text in a document reads like it: quotation
/// marks within texts are escaped.
void makeHole(std::string& document, std::string_view name, const Hole& hole) {
    const std::string member = '"' + std::string(name) + "\":[";
    const std::size_t start = document.find(member + ']');
    check(start != std::string::npos, "a document has no empty array where its hole belongs");
    document.insert(start + member.size(), hole.text());
}

Hole routeHole(UUID session, std::size_t pointCount) {
    return {routeList(session), static_cast<std::int64_t>(pointCount)};
}

std::string pointsText(const Route& route, std::size_t first, std::size_t end) {
    std::string text;
    for (std::size_t i = first; i < end; ++i) {
        if (i > first) text += ',';
        text += encodeJson(route[i]).value();  // points of routes are finite
    }
    return text;
}

}  // namespace

std::string routeList(UUID session) {
    return session.text();
}

SetFrame arrayFrame(std::string_view key) {
    const Hole hole{.list = std::string(key)};
    return {std::string(key), '[' + hole.text() + ']'};
}

std::optional<std::string> sessionText(const ActivitySession& session, std::size_t pointCount) {
    ActivitySession withoutRoute = session;
    withoutRoute.route = {};
    auto text = encodeJson(withoutRoute);
    if (text) makeHole(*text, "route", routeHole(session.id, pointCount));
    return text;
}

std::optional<SavedSession> sessionIn(std::string_view text) {
    const TextAroundHoles around = takeHolesOut(text);
    auto session = readJson<ActivitySession>(around.text);
    if (!session) return std::nullopt;
    if (around.holes.empty()) return SavedSession{*session, session->route.size()};
    const Hole& hole = around.holes.front();
    const bool isInPlace = around.holes.size() == 1 && hole.list == routeList(session->id) && hole.count >= 0 &&
                           text.contains("\"route\":[" + hole.text() + "]");
    if (!isInPlace) return std::nullopt;
    return SavedSession{std::move(*session), static_cast<std::size_t>(hole.count)};
}

std::optional<std::string> checkpointText(const InProgressState& state) {
    InProgressState withoutRoute = state;
    withoutRoute.session.route = {};
    withoutRoute.routePoints = {};
    auto text = encodeJson(withoutRoute);
    if (!text) return std::nullopt;
    const Hole hole = routeHole(state.session.id, state.routePoints.size());
    makeHole(*text, "route", hole);
    makeHole(*text, "routePoints", hole);
    return text;
}

std::vector<PartsChange> routeAdditions(UUID session, const Route& route, std::size_t first) {
    std::vector<PartsChange> additions;
    while (first < route.size()) {
        const std::size_t end = std::min(first + pointsInPart, route.size());
        additions.push_back(
            AddPart{routeList(session), static_cast<std::int32_t>(first), pointsText(route, first, end)});
        first = end;
    }
    return additions;
}

Route routeIn(const std::vector<Part>& parts) {
    Route route;
    for (const Part& part : parts) {
        const auto points = readJson<Route>('[' + part.text + ']');
        if (!points) continue;
        for (const LocationPoint& point : *points) route.push_back(point);
    }
    return route;
}

}  // namespace pedvar
