/// Checkpoints and the history of sessions: what they write, and whether it stays the same as they grow.
///
/// session_bench [FOLDER]: FOLDER has room for 2 GB. Without one it takes memory where that has the room, as the
/// disk is not what is measured. It calls itself as `session_bench --start DATA` to measure how long a process
/// takes that loads the history of DATA.
#include "bench.h"
#include "linux/system/sqlite_document_parts.h"
#include "linux/system/system_random.h"
#include "process.h"
#include "recording/checkpoint_store.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

using namespace pedvar;
using namespace pedvar::bench;

namespace {

constexpr double diskPage = 4096;     // bytes
constexpr int fixesInCheckpoint = 5;  // one a second
constexpr int pointsOfAnHour = 3600;

[[noreturn]] void fail(const std::string& reason) {
    std::fprintf(stderr, "session_bench: %s\n", reason.c_str());
    std::exit(1);
}

void require(const DefaultsResult& result) {
    if (!result) fail(result.error().message);
}

/// What this process has handed to write(2) so far, in bytes.
double bytesWritten() {
    std::ifstream io("/proc/self/io");
    std::string name;
    double bytes = 0;
    while (io >> name >> bytes) {
        if (name == "wchar:") return bytes;
    }
    fail("/proc/self/io does not say what was written");
}

SystemRandom randomSource;

/// A fix as receivers give it and the recorder smooths it: coordinates use all their digits.
LocationPoint fix(int second) {
    return {.id = randomSource.uuid(),
            .latitude = 46.0569 + 1e-5 * second + 1e-6 * std::sin(second),
            .longitude = 14.5058 + 1e-6 * std::cos(second),
            .timestamp = Date{Seconds{738'000'000.0 + second}},
            .altitude = 300 + 10 * std::sin(second / 300.0),
            .horizontalAccuracy = 4.71,
            .verticalAccuracy = 3.06,
            .speed = 1.4 + 0.1 * std::sin(second),
            .course = 180 + 10 * std::cos(second)};
}

/// The data of one person, and what the program builds over it.
struct Person {
    explicit Person(const std::filesystem::path& folder) : defaults(folder, SqliteDefaults::Access::readWrite) {}

    SqliteDefaults defaults;
    SqliteDocumentParts documents{defaults};
    SessionHistory history{documents};
    CheckpointStore checkpoints{documents, history};
};

/// A recording as its recorder holds it.
struct Ride {
    InProgressState state;

    explicit Ride(int points) {
        state.session = {.id = randomSource.uuid(), .activityType = ActivityType::cycle, .isActive = true};
        state.session.averagePace = 3.123456789012345;
        state.elevationLoss = state.currentElevation = 301.2345678901234;
        state.sessionStartDate = state.session.startTime = Date{Seconds{738'000'000.123456}};
        add(points);
    }

    void add(int points) {
        for (int i = 0; i < points; ++i)
            state.routePoints.push_back(fix(static_cast<int>(state.routePoints.size())));
        const auto seconds = static_cast<double>(state.routePoints.size());
        state.session.distance = state.currentDistance = state.totalDistance = seconds * 4.123456789;
        state.session.duration = state.currentDuration = state.elapsedTime = seconds + 0.123456;
        state.session.route = state.routePoints;
        state.checkpointDate = Date{Seconds{738'000'000.123456 + seconds}};
    }
};

struct Checkpoints {
    Person person;
    Ride ride;
    double mostBytes = 0;

    Checkpoints(const std::filesystem::path& folder, int points) : person(folder), ride(points) { save(); }

    void save() { require(person.checkpoints.save(ride.state, CheckpointTiming::forced)); }
    void next() {
        ride.add(fixesInCheckpoint);
        const double before = bytesWritten();
        save();
        mostBytes = std::max(mostBytes, bytesWritten() - before);
    }
};

void benchCheckpoints(const std::filesystem::path& folder) {
    Checkpoints early(folder / "early", 1'000), late(folder / "late", 100'000);
    const auto times = inTurn(200, {[&] { early.next(); }, [&] { late.next(); }});
    row("bytes of a checkpoint at 100,000 points, the most of 200, in pages of 4 KB", late.mostBytes / diskPage, 5,
        std::to_string(late.mostBytes / diskPage) + " pages, at 1,000 points " +
            std::to_string(early.mostBytes / diskPage));
    row("a checkpoint at 100,000 points against one at 1,000", times[1] / times[0], 1.2,
        milliseconds(times[1]) + " to " + milliseconds(times[0]));
}

void benchTenHours(const std::filesystem::path& folder) {
    constexpr double mostBytes = 150e6;
    const double before = bytesWritten();
    Checkpoints ride(folder / "ride", 0);
    const double seconds = secondsOf([&] {
        for (int i = 0; i < 10 * pointsOfAnHour / fixesInCheckpoint; ++i) ride.next();
        ActivitySession session = retired(ride.ride.state);
        require(ride.person.checkpoints.finish(session));
    });
    const double bytes = bytesWritten() - before;
    row("all that a ten-hour ride writes, against 150 MB", bytes / mostBytes, 1,
        std::to_string(bytes / 1e6) + " MB in " + milliseconds(seconds));
}

ActivitySession hourOfWalking() {
    Ride ride(pointsOfAnHour);
    return retired(ride.state);
}

void addHours(Person& person, int count) {
    for (int i = 0; i < count; ++i) require(person.history.add(hourOfWalking()));
}

/// Runs this program to its end as one that loads the history in `data`.
void start(const std::filesystem::path& data) {
    runProcess({"/proc/self/exe", "--start", data.string()});
}

void benchHistory(const std::filesystem::path& folder) {
    Person few(folder / "few"), many(folder / "many"), none(folder / "none");
    addHours(few, 9);
    addHours(many, 990);
    std::vector<ActivitySession> sessions;
    for (int i = 0; i < 20; ++i) sessions.push_back(hourOfWalking());
    std::size_t next = 0;
    const auto times = inTurn(10, {[&] { require(few.history.add(sessions[next])); },
                                   [&] { require(many.history.add(sessions[next++])); }});
    row("adding the 1,000th session against the tenth", times[1] / times[0], 1.2,
        milliseconds(times[1]) + " to " + milliseconds(times[0]));

    require(none.defaults.write({{&none.defaults.standard(), "goal", std::int64_t{8000}}}));
    const auto starts = inTurn(51, {[&] { start(folder / "none"); }, [&] { start(folder / "many"); }});
    row("a start with 1,000 sessions of an hour against one with none", starts[1] / starts[0], 3,
        milliseconds(starts[1]) + " to " + milliseconds(starts[0]));
}

int loadHistory(const std::filesystem::path& data) {
    SqliteDefaults defaults(data, SqliteDefaults::Access::readOnly);
    SqliteDocumentParts documents(defaults);
    const SessionHistory history(documents);
    keep(history.savedSessions());
    return defaults.problems().empty() ? 0 : 1;
}

std::filesystem::path roomyFolder() {
    constexpr std::uintmax_t room = 2'000'000'000;  // bytes
    const std::filesystem::path memory = "/dev/shm";
    std::error_code unknown;
    const auto space = std::filesystem::space(memory, unknown);
    return !unknown && space.available >= room ? memory : std::filesystem::temp_directory_path();
}

}  // namespace

int main(int count, char** words) {
    if (count == 3 && std::string_view(words[1]) == "--start") return loadHistory(words[2]);
    std::string folder = (count > 1 ? words[1] : roomyFolder()) / "session_bench-XXXXXX";
    if (!mkdtemp(folder.data())) fail("there is no folder to write to");
    benchCheckpoints(folder);
    benchTenHours(folder);
    benchHistory(folder);
    std::filesystem::remove_all(folder);
}
