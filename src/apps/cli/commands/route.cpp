#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/gpx_file.h"
#include "core/json_writer.h"
#include "routes/iso8601.h"
#include "routes/route_summary.h"

#include <fmt/format.h>

#include <algorithm>

namespace pedvar {
namespace {

/// One file: what was read of it, and why that is not a route.
struct RouteFile {
    std::string path;
    GPXDocument document;
    std::optional<CommandError> error;
};

RouteFile readFile(const std::string& path, Date now) {
    RouteFile file{.path = path, .document = {}, .error = {}};
    if (auto document = readGPXFile(path, now)) {
        file.document = std::move(*document);
        if (file.document.segments.empty()) file.error = withoutPoints(path);
    } else {
        file.error = document.error();
    }
    return file;
}

bool isReadable(const RouteFile& file) {
    return !file.error || file.error->kind == ErrorKind::noTrackPoints;
}

JsonValue elevationDocument(const std::optional<ElevationChange>& elevation) {
    if (!elevation) return {};
    return {JsonObject{{"gain", {elevation->gain}},
                       {"loss", {elevation->loss}},
                       {"lowest", {elevation->lowest}},
                       {"highest", {elevation->highest}}}};
}

JsonObject document(const RouteFile& file, const Texts& text) {
    JsonObject result{{"file", {file.path}}};
    if (isReadable(file)) {
        const RouteSummary summary = summaryOf(file.document);
        const auto& name = file.document.trackName;
        const auto number = [](std::size_t count) { return JsonValue{static_cast<std::int64_t>(count)}; };
        JsonArray segments;
        for (const std::size_t count : summary.segments) segments.push_back(number(count));
        result.emplace_back("trackName", name ? JsonValue{*name} : JsonValue{});
        result.emplace_back("segments", JsonValue{std::move(segments)});
        result.emplace_back("points", number(summary.points));
        result.emplace_back("withElevation", number(summary.withElevation));
        result.emplace_back("withTime", number(summary.withTime));
        result.emplace_back("hasRoutePoints", JsonValue{file.document.hasRoutePoints});
        result.emplace_back("distance", JsonValue{summary.distance});
        result.emplace_back("elevation", elevationDocument(summary.elevation));
    } else {
        for (const char* absent : {"trackName", "segments", "points", "withElevation", "withTime",
                                   "hasRoutePoints", "distance", "elevation"}) {
            result.emplace_back(absent, JsonValue{});
        }
    }
    result.emplace_back("error", file.error ? errorDocument(*file.error, text) : JsonValue{});
    return result;
}

/// The points from `first` on, not more than `count`, as elements of an array.
std::string pointsText(const GPXSegment& segment, std::size_t first, std::size_t count) {
    ISO8601Formatter formatter;
    JsonWriter json;
    json.beginArray();
    for (std::size_t i = first; i < std::min(first + count, segment.points.size()); ++i) {
        const CLLocation& point = segment.points[i];
        json.beginObject();
        json.name("latitude");
        json.write(point.latitude);
        json.name("longitude");
        json.write(point.longitude);
        json.name("altitude");
        if (point.verticalAccuracy >= 0) {
            json.write(point.altitude);
        } else {
            json.write(nullptr);
        }
        json.name("time");
        const std::string_view time = segment.hasTime[i] ? formatter.format(point.timestamp) : std::string_view();
        if (time.empty()) {
            json.write(nullptr);
        } else {
            json.write(time);
        }
        json.endObject();
    }
    json.endArray();
    const std::string array = std::move(json).text();
    return array.substr(1, array.size() - 2);
}

/// The member "route": an array of points for each segment.
void writeRoute(const GPXDocument& document, const TextSink& sink) {
    constexpr std::size_t pointsAtOnce = 1000;
    sink(",\"route\":[");
    for (std::size_t number = 0; number < document.segments.size(); ++number) {
        const GPXSegment& segment = document.segments[number];
        sink(number > 0 ? ",[" : "[");
        for (std::size_t first = 0; first < segment.points.size(); first += pointsAtOnce) {
            if (first > 0) sink(",");
            sink(pointsText(segment, first, pointsAtOnce));
        }
        sink("]");
    }
    sink("]");
}

std::string countsLine(const RouteSummary& summary, const Screen& screen) {
    const auto number = [&](std::size_t count) { return screen.figures.number(static_cast<std::int64_t>(count)); };
    const auto segments = static_cast<std::int64_t>(summary.segments.size());
    if (segments == 1) return number(summary.points);
    return screen.text.plural("{0} in {1} segment", "{0} in {1} segments", segments, number(summary.points),
                              number(summary.segments.size()));
}

std::string view(const RouteFile& file, const Screen& screen) {
    const RouteSummary summary = summaryOf(file.document);
    const Figures& figures = screen.figures;
    const auto share = [&](std::size_t count) {
        if (count == summary.points) return screen.text("of all points");
        if (count == 0) return screen.text("of no point");
        const auto some = static_cast<std::int64_t>(count);
        return screen.text.plural("of {} point", "of {} points", some, figures.number(some));
    };
    std::vector<std::pair<std::string, std::string>> lines;
    if (file.document.trackName) lines.emplace_back(screen.text("Name"), harmless(*file.document.trackName));
    lines.emplace_back(screen.text("Points"), countsLine(summary, screen));
    lines.emplace_back(screen.text("Times"), share(summary.withTime));
    lines.emplace_back(screen.text("Altitudes"), share(summary.withElevation));
    lines.emplace_back(screen.text("Distance"), figures.distance(summary.distance));
    if (const auto& elevation = summary.elevation) {
        lines.emplace_back(screen.text("Climb"),
                           screen.text("{0} up, {1} down, between {2} and {3}", figures.altitude(elevation->gain),
                                       figures.altitude(elevation->loss), figures.altitude(elevation->lowest),
                                       figures.altitude(elevation->highest)));
    }
    return screen.bold(harmless(file.path)) + "\n\n" + labelled(lines);
}

/// Of many files the failure of each is told where it stands, and at the end how many there were.
std::optional<CommandError> problemOf(const std::vector<CommandError>& errors, std::size_t fileCount,
                                      const Texts& text) {
    if (errors.empty()) return std::nullopt;
    if (fileCount == 1) return errors.front();
    return CommandError{errors.front().kind,
                        text("{0} of {1} files could not be read.", errors.size(), fileCount)};
}

LongAnswer documents(const RouteRequest& request, Date now, const Texts& text) {
    return [=](const TextSink& sink) {
        std::vector<CommandError> errors;
        sink("{\"files\":[");
        for (const std::string& path : request.paths) {
            if (&path != &request.paths.front()) sink(",");
            const RouteFile file = readFile(path, now);
            std::string members = jsonText({document(file, text)});
            members.pop_back();  // the bracket, which follows
            sink(members);
            if (request.detail == RouteRequest::Detail::points) writeRoute(file.document, sink);
            sink("}");
            if (file.error) errors.push_back(*file.error);
        }
        sink("]");
        auto problem = problemOf(errors, request.paths.size(), text);
        if (problem) sink(",\"error\":" + jsonText(errorDocument(*problem, text)));
        sink("}\n");
        return problem;
    };
}

}  // namespace

CommandResult<Report> run(const RouteRequest& request, Application& application) {
    const Date now = application.clock().now();
    if (application.wantsJson()) return Report{documents(request, now, application.text())};
    if (request.detail == RouteRequest::Detail::points) {
        return usageError(application.text()("--points is for scripts; add --json."));
    }
    const Screen screen = application.screen();
    std::string result;
    std::vector<CommandError> errors;
    for (const std::string& path : request.paths) {
        const RouteFile file = readFile(path, now);
        if (file.error) errors.push_back(*file.error);
        if (file.error && request.paths.size() == 1) break;
        if (!result.empty()) result += "\n";
        result += file.error ? harmless(screen.text.of(file.error->message)) + "\n" : view(file, screen);
    }
    return Report{std::move(result), problemOf(errors, request.paths.size(), application.text())};
}

}  // namespace pedvar
