#include "recording/recorder_log.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace pedvar {

namespace {

std::string shortest(double number) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string rounded(double number, int decimals) {
    std::array<char, 400> text{};  // the longest double has 309 digits before the point
    char* const end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals).ptr;
    return {text.data(), end};
}

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

/// "2024-05-03 10:00:00 +0000".
std::string dateText(Date date) {
    using namespace std::chrono;
    constexpr double farthest = 1e11;  // seconds; some 3,000 years
    const double seconds = std::clamp(unixSeconds(date), -farthest, farthest);
    const sys_seconds moment{std::chrono::seconds(static_cast<std::int64_t>(seconds))};
    const auto day = floor<days>(moment);
    const year_month_day civil{day};
    const hh_mm_ss clock{moment - day};
    return std::to_string(static_cast<int>(civil.year())) + "-" + twoDigits(static_cast<unsigned>(civil.month())) +
           "-" + twoDigits(static_cast<unsigned>(civil.day())) + " " + twoDigits(clock.hours().count()) + ":" +
           twoDigits(clock.minutes().count()) + ":" + twoDigits(clock.seconds().count()) + " +0000";
}

}  // namespace

void RecorderLog::stepCountingUnavailable() {
    say("⚠️ Step counting not available on this device");
}

void RecorderLog::motionAccessDenied() {
    say("⚠️ Motion & Fitness access denied - steps will not be counted");
}

void RecorderLog::pedometerStarted(Date from) {
    say("🚶 Starting pedometer updates from: " + dateText(from));
}

void RecorderLog::pedometerFailed(std::string_view reason) {
    say("❌ Pedometer error: " + std::string(reason));  // people hear of it where the recording is shown
}

void RecorderLog::stepsUpdated(std::int64_t steps) {
    say("👣 Steps updated: " + std::to_string(steps));
}

void RecorderLog::pedometerStopped() {
    say("🛑 Stopped pedometer updates");
}

void RecorderLog::invalidCoordinates(double latitude, double longitude) {
    say("⚠️ GPS: Invalid coordinates (" + shortest(latitude) + ", " + shortest(longitude) + ")");
}

void RecorderLog::signalReacquired() {
    say("📡 GPS: Signal reacquired, resetting smoothing");
}

void RecorderLog::signalLost() {
    say("📡 GPS: Signal loss detected, resetting smoothing");
}

void RecorderLog::waitingForAccuracy(double accuracy) {
    say("⚠️ GPS: Waiting for better accuracy (" + rounded(accuracy, 0) + "m)");
}

void RecorderLog::firstPoint(double accuracy) {
    say("📍 GPS: First point recorded with " + rounded(accuracy, 1) + "m accuracy");
}

void RecorderLog::jumpRejected(double distance) {
    say("⚠️ GPS: Rejecting jump of " + rounded(distance, 0) + "m");
}

void RecorderLog::newPlaceAccepted() {
    say("📍 GPS: Ten rejected fixes agree on a new place; going on there without counting the gap");
}

void RecorderLog::altitudeSpikeRejected(double difference) {
    say("⚠️ GPS: Rejecting altitude spike of " + rounded(difference, 0) + "m");
}

void RecorderLog::workoutFailed(const HKError& error) {
    complain("❌ HealthKit: Failed to save workout - " + error.localizedDescription);
}

void RecorderLog::routeInserted() {
    say("✅ GPS: Successfully inserted route data");
    say("🏁 GPS: Finalizing route...");
}

void RecorderLog::routeInsertionFailed(const HKError& error) {
    complain("❌ Failed to save workout route: " + error.localizedDescription);
}

void RecorderLog::routeFinalized() {
    say("✅ GPS: Route finalized successfully");
}

void RecorderLog::routeFinalizationFailed() {
    complain("Failed to finalize route");
}

void RecorderLog::say(std::string_view message) {
    log_.log(logSubsystem, recorderLogCategory, LogLevel::standard, message);
}

void RecorderLog::complain(std::string_view message) {
    log_.log(logSubsystem, recorderLogCategory, LogLevel::error, message);
}

}  // namespace pedvar
