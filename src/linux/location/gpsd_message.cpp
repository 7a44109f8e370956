#include "linux/location/gpsd_message.h"

#include "linux/system/nlohmann_json_parser.h"

#include <absl/time/time.h>

#include <cmath>

namespace pedvar {

namespace {

std::optional<std::string> textOf(const JsonValue& message, std::string_view name) {
    const JsonValue* const value = message.member(name);
    const auto* const text = value ? value->as<std::string>() : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

std::optional<double> numberOf(const JsonValue& message, std::string_view name) {
    const JsonValue* const value = message.member(name);
    const auto number = value ? value->number() : std::nullopt;
    return number && std::isfinite(*number) ? number : std::nullopt;
}

/// Errors, dilutions and speeds below 0 mean nothing.
std::optional<double> sizeOf(const JsonValue& message, std::string_view name) {
    const auto number = numberOf(message, name);
    return number && *number >= 0 ? number : std::nullopt;
}

/// To the millisecond, as receivers tell it.
std::optional<Date> momentOf(const JsonValue& message, std::string_view name) {
    const auto text = textOf(message, name);
    absl::Time time;
    if (!text || !absl::ParseTime(absl::RFC3339_full, *text, &time, nullptr)) return std::nullopt;
    if (time == absl::InfiniteFuture() || time == absl::InfinitePast()) return std::nullopt;
    constexpr double millisecondsInSecond = 1e3;
    return dateFromUnix(static_cast<double>(absl::ToUnixMillis(time)) / millisecondsInSecond);
}

GpsdReport::Mode modeOf(const JsonValue& message) {
    // Below 2 there is no fix, and 3 is one with altitude.
    const double mode = numberOf(message, "mode").value_or(0);
    if (mode >= 3) return GpsdReport::Mode::threeDimensional;
    return mode >= 2 ? GpsdReport::Mode::twoDimensional : GpsdReport::Mode::noFix;
}

GpsdReport reportIn(const JsonValue& message) {
    return {.receiver = textOf(message, "device").value_or(""),
            .mode = modeOf(message),
            .time = momentOf(message, "time"),
            .latitude = numberOf(message, "lat"),
            .longitude = numberOf(message, "lon"),
            .altitude = numberOf(message, "altMSL"),
            .horizontalError = sizeOf(message, "eph"),
            .longitudeError = sizeOf(message, "epx"),
            .latitudeError = sizeOf(message, "epy"),
            .verticalError = sizeOf(message, "epv"),
            .speed = sizeOf(message, "speed"),
            .course = sizeOf(message, "track")};
}

}  // namespace

GpsdMessage GpsdInterpreter::interpret(std::string_view line) {
    const auto message = NlohmannJsonParser().parse(line);
    if (!message) return GpsdSilence{};
    const std::string kind = textOf(*message, "class").value_or("");
    if (kind == "TPV") {
        GpsdReport report = reportIn(*message);
        const Dilution& dilution = dilutions_[report.receiver];
        report.horizontalDilution = dilution.horizontal;
        report.verticalDilution = dilution.vertical;
        return report;
    }
    if (kind == "SKY") {
        dilutions_[textOf(*message, "device").value_or("")] = {sizeOf(*message, "hdop"), sizeOf(*message, "vdop")};
    } else if (kind == "DEVICES") {
        receivers_.clear();
        const JsonValue* const list = message->member("devices");
        const auto* const devices = list ? list->as<JsonArray>() : nullptr;
        if (!devices) return GpsdSilence{};
        for (const JsonValue& device : *devices) {
            if (auto path = textOf(device, "path")) receivers_.insert(std::move(*path));
        }
        return GpsdReceivers{receivers_.size()};
    } else if (kind == "DEVICE") {
        // "activated" is the moment at which the receiver came, or the number 0 when it has gone.
        const auto path = textOf(*message, "path");
        if (!path) return GpsdSilence{};
        if (textOf(*message, "activated")) {
            receivers_.insert(*path);
        } else {
            receivers_.erase(*path);
        }
        return GpsdReceivers{receivers_.size()};
    }
    return GpsdSilence{};
}

}  // namespace pedvar
