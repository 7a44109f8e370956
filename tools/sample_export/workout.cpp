#include "sample_export/workout.h"

#include "sample_export/samples.h"

#include <algorithm>

namespace pedvar::sample {

namespace {

constexpr int recentDays = 8;
constexpr int pause = 45;         // seconds
constexpr int pointDistance = 5;  // seconds between two points of the route

std::string routeName(Span span, std::chrono::sys_days date) {
    const std::int64_t minute = (span.end + berlinOffset(span.end)) / 60 % minutesOfDay;
    const std::int64_t hour = minute / 60;
    std::array<char, 16> time;
    std::snprintf(time.data(), time.size(), "%d.%02d%s", static_cast<int>((hour + 11) % 12 + 1),
                  static_cast<int>(minute % 60), hour < 12 ? "am" : "pm");
    return "route_" + isoDate(date) + "_" + time.data() + ".gpx";
}

void writeMetadata(TextOutput& output) {
    output << "  <MetadataEntry key=\"HKIndoorWorkout\" value=\"0\"/>\n"
              "  <MetadataEntry key=\"HKTimeZone\" value=\"Europe/Berlin\"/>\n"
              "  <MetadataEntry key=\"HKWeatherTemperature\" value=\"66 degF\"/>\n"
              "  <MetadataEntry key=\"HKWeatherHumidity\" value=\"5800 %\"/>\n"
              "  <MetadataEntry key=\"HKElevationAscended\" value=\"1260 cm\"/>\n";
}

/// A place on a rectangular block.
struct Place {
    std::int64_t east, north;  // centimetres from the south-western corner
    int course;                // degrees
};

Place placeAfter(std::int64_t distance) {
    constexpr std::int64_t width = 61'000, depth = 43'000;  // centimetres
    std::int64_t left = distance % (2 * (width + depth));
    if (left < depth) return {0, left, 0};
    if ((left -= depth) < width) return {left, depth, 90};
    if ((left -= width) < depth) return {width, depth - left, 180};
    left -= depth;
    return {width - left, 0, 270};
}

}  // namespace

std::optional<Workout> plannedWorkout(const std::vector<Day>& days) {
    std::optional<Workout> longest;
    for (const Day& day : days) {
        if (day.number == 0 || day.number > recentDays) continue;
        for (const Walk& walk : day.walks()) {
            const bool isLonger = !longest || walk.end - walk.first > longest->walk.end - longest->walk.first;
            if (isLonger && day.isWatchWorn(walk.end)) longest = Workout{&day, walk, {}, {}};
        }
    }
    if (longest) {
        const auto [first, end, isPhoneCarried] = longest->walk;
        longest->span = {berlinTime(longest->day->date, first), berlinTime(longest->day->date, end)};
        longest->routeName = routeName(longest->span, longest->day->date);
    }
    return longest;
}

void writeWorkout(const Workout& workout, RecordWriter& writer) {
    TextOutput& output = writer.output();
    const Span span = workout.span;
    std::int64_t steps = 0, distance = 0;
    for (int minute = workout.walk.first; minute < workout.walk.end; ++minute) {
        const int taken = workout.day->steps[static_cast<std::size_t>(minute)];
        steps += taken;
        distance += centimeters(taken, taken >= briskSteps);
    }
    const auto statistics = [&](std::string_view type) -> TextOutput& {
        (output << "  <WorkoutStatistics type=\"HKQuantityTypeIdentifier" << type << "\" startDate=\"")
            .date(span.start);
        return (output << "\" endDate=\"").date(span.end) << "\"";
    };
    const auto event = [&](std::string_view type, std::int64_t time) {
        (output << "  <WorkoutEvent type=\"HKWorkoutEventType" << type << "\" date=\"").date(time) << "\"/>\n";
    };

    const Decimal minutes{(span.end - span.start - pause) * 1000 / 60, 3};
    output << " <Workout workoutActivityType=\"HKWorkoutActivityTypeWalking\" duration=\"" << minutes
           << "\" durationUnit=\"min\"";
    writer.writeSource(Source::watch, span.end);
    writer.writeSpan(span);
    output << ">\n";
    writeMetadata(output);
    const std::int64_t paused = span.start + (span.end - span.start) / 2;
    event("Pause", paused);
    event("Resume", paused + pause);
    statistics("StepCount") << " sum=\"" << steps << "\" unit=\"count\"/>\n";
    statistics("DistanceWalkingRunning") << " sum=\"" << Decimal{distance, 5} << "\" unit=\"km\"/>\n";
    statistics("ActiveEnergyBurned") << " sum=\"" << Decimal{smallCalories(static_cast<int>(steps)), 3}
                                     << "\" unit=\"Cal\"/>\n";
    statistics("HeartRate") << " average=\"112.4\" minimum=\"88\" maximum=\"131\" unit=\"count/min\"/>\n";
    writeMetadata(output);
    output << "  <WorkoutRoute";
    writer.writeSource(Source::watch, span.end);
    writer.writeSpan(span);
    output << ">\n   <MetadataEntry key=\"HKMetadataKeySyncVersion\" value=\"2\"/>\n"
           << "   <FileReference path=\"/workout-routes/" << workout.routeName
           << "\"/>\n  </WorkoutRoute>\n </Workout>\n";
}

bool writeRoute(const Workout& workout, std::int64_t exportTime, std::FILE* file) {
    TextOutput output(file, 0);
    Random random(static_cast<std::uint64_t>(workout.span.start));
    output << R"(<?xml version="1.0" encoding="UTF-8"?>)"
              "\n"
              R"(<gpx version="1.1" creator="Apple Health Export" xmlns="http://www.topografix.com/GPX/1/1")"
              R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:schemaLocation=")"
              R"(http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd">)"
              "\n  <metadata>\n    <time>";
    output.utcDate(exportTime) << "</time>\n  </metadata>\n  <trk>\n    <name>Route</name>\n    <trkseg>\n";
    std::int64_t distance = 0;    // centimetres
    std::int64_t height = 3'480;  // centimetres
    for (std::int64_t time = workout.span.start; time < workout.span.end; time += pointDistance) {
        const int speed = random.within(1'220, 1'470);  // millimetres a second
        const Place place = placeAfter(distance);
        // A metre is 8.983 millionths of a degree of latitude and, at 52.5 degrees, 14.75 of longitude.
        const Decimal longitude{13'350'100 + (place.east + random.within(-90, 90)) * 1'475 / 10'000, 6};
        const Decimal latitude{52'511'300 + (place.north + random.within(-90, 90)) * 898 / 10'000, 6};
        output << "      <trkpt lon=\"" << longitude << "\" lat=\"" << latitude << "\"><ele>" << Decimal{height, 2}
               << "</ele><time>";
        output.utcDate(time) << "</time><extensions><speed>" << Decimal{speed, 3} << "</speed><course>"
                             << Decimal{place.course * 100 + random.within(0, 300), 2} << "</course><hAcc>"
                             << Decimal{random.within(210, 480), 2} << "</hAcc><vAcc>"
                             << Decimal{random.within(180, 390), 2} << "</vAcc></extensions></trkpt>\n";
        distance += speed * pointDistance / 10;
        height += random.within(-14, 14);
    }
    output << "    </trkseg>\n  </trk>\n</gpx>\n";
    output.flush();
    return output.isGood();
}

}  // namespace pedvar::sample
