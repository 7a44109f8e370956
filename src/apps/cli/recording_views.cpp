#include "apps/cli/recording_views.h"

#include "apps/cli/charts.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/moment.h"

#include <algorithm>
#include <utility>

namespace pedvar {
namespace {

constexpr double secondsPerMinute = 60;
constexpr double metersPerPaceUnit = 1000;

template <class Value>
JsonValue orNull(const std::optional<Value>& value) {
    return value ? JsonValue{*value} : JsonValue{};
}

/// None while nobody moves.
std::optional<double> paceOf(const ActivityRecorderManager& recorder) {
    return recorder.currentPace > 0 ? std::optional(recorder.currentPace.value()) : std::nullopt;
}

/// What was known of a fix says nothing once no further ones come.
bool hasFreshFix(const ActivityRecorderManager& recorder, Date now) {
    constexpr Seconds longestSilence{10};
    const auto& location = recorder.currentLocation.value();
    return location && (!recorder.isRecording || now - location->timestamp <= longestSilence);
}

std::string_view stateOf(const ActivityRecorderManager& recorder) {
    if (recorder.isPaused) return "paused";
    return recorder.isAutoPaused ? "autoPaused" : "recording";
}

std::string stateText(const ActivityRecorderManager& recorder, const Texts& text) {
    if (recorder.isPaused) return text("paused");
    return recorder.isAutoPaused ? text("standing still") : text("recording");
}

}  // namespace

std::string storageText(const Phrase& problem, const Texts& text) {
    return text("The recording goes on, but cannot be stored now. {}", harmless(text.of(problem)));
}

JsonObject statusDocument(const ActivityRecorderManager& recorder, Date now, const Calendar& calendar,
                          const Texts& text) {
    const GPSQuality quality = recorder.gpsQuality();
    const auto& location = recorder.currentLocation.value();
    const auto& problem = recorder.storageProblem.value();
    const auto& stepProblem = recorder.stepProblem.value();
    return {
        {"state", {std::string(stateOf(recorder))}},
        {"time", {isoText(now, calendar)}},
        {"duration", {recorder.currentDuration.value()}},
        {"distance", {recorder.totalDistance.value()}},
        {"pace", orNull(paceOf(recorder))},
        {"speed", {recorder.currentSpeed.value()}},
        {"averageSpeed", {recorder.averageSpeed.value()}},
        {"steps", {recorder.currentSteps.value()}},
        {"calories", {recorder.currentCalories.value()}},
        {"elevation", orNull(recorder.currentElevation.value())},
        {"elevationGain", {recorder.elevationGain.value()}},
        {"points", {static_cast<std::int64_t>(recorder.routeCoordinates->size())}},
        {"gpsAccuracy", location ? JsonValue{recorder.gpsAccuracy.value()} : JsonValue{}},
        {"gpsQuality", {std::string(quality.label)}},
        {"storageProblem", problem ? JsonValue{text.of(*problem)} : JsonValue{}},
        {"stepProblem", stepProblem ? JsonValue{text.of(*stepProblem)} : JsonValue{}},
    };
}

std::vector<ScreenLine> statusLines(const ActivityRecorderManager& recorder, Date now, const Screen& screen,
                                    std::size_t width) {
    const Figures& figures = screen.figures;
    const Texts& text = screen.text;
    const bool isFresh = hasFreshFix(recorder, now);
    const GPSQuality quality = isFresh ? recorder.gpsQuality() : gpsQuality(std::nullopt);
    const auto pace = isFresh ? paceOf(recorder) : std::nullopt;
    const auto elevation = recorder.currentElevation.value();
    const std::vector<std::pair<std::string, std::string>> values{
        {text.lookUp(displayName(recorder.activityType)), stateText(recorder, text)},
        {text("Time"), figures.duration(recorder.currentDuration)},
        {text("Distance"),
         text("{0} {1}", figures.number(recorder.totalDistance / figures.unitLength(), 2), figures.unitName())},
        {text("Pace"), pace ? figures.pace(*pace * secondsPerMinute / metersPerPaceUnit) : "–"},
        {text("Speed"), isFresh ? figures.speed(recorder.currentSpeed) : "–"},
        {text("Steps"), figures.number(recorder.currentSteps)},
        {text("Energy"), figures.energy(static_cast<double>(recorder.currentCalories.value()))},
        {text("Elevation"),
         elevation ? text("{0}, {1} up", figures.altitude(*elevation), figures.altitude(recorder.elevationGain))
                   : "–"},
        {text("GPS"), text.lookUp(quality.label)},
    };
    std::size_t labelWidth = 0;
    for (const auto& [label, value] : values) labelWidth = std::max(labelWidth, columns(label));
    std::vector<ScreenLine> lines{{"", Rank::blank}};
    for (const auto& [label, value] : values) {
        // State, time and distance.
        const Rank rank = lines.size() <= 3 ? Rank::essential : Rank::value;
        lines.push_back({leftAligned(label, labelWidth + 2) + value, rank});
    }
    lines.push_back({"", Rank::blank});
    const auto add = [&](const std::string& paragraph, Rank rank) {
        for (std::string& line : wrapped(paragraph, width)) lines.push_back({std::move(line), rank});
    };
    add(text.lookUp(quality.description), Rank::explanation);
    if (const auto& problem = recorder.storageProblem.value()) add(storageText(*problem, text), Rank::problem);
    return lines;
}

}  // namespace pedvar
