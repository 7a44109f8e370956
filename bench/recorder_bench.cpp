/// The recorder: what a fix costs as the route grows, and a ride of ten hours.
///
/// recorder_bench [FOLDER]: without one it writes to memory, as the disk is not what is measured.
#include "bench.h"
#include "linux/system/absent_services.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/sqlite_document_parts.h"
#include "linux/system/system_random.h"
#include "recording/activity_recorder_manager.h"
#include "support/fake_health_store.h"
#include "support/fake_locale.h"
#include "support/fake_receivers.h"
#include "support/fake_workout_store.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

using namespace pedvar;
using namespace pedvar::bench;

namespace {

class NoLog : public PlatformLog {
public:
    void log(std::string_view, std::string_view, LogLevel, std::string_view message) override { keep(message); }
};

/// A ride north on a time of its own, with one fix a second.
class Ride {
public:
    explicit Ride(const std::filesystem::path& folder) : defaults_(folder, SqliteDefaults::Access::readWrite) {
        keep(recorder_.startRecording(ActivityType::cycle));
    }

    void goOn(int seconds) {
        for (; seconds > 0; --seconds) {
            time_.advance(Seconds{1});
            const double second = ++seconds_;
            receiver_.send({.latitude = -40 + 4e-5 * second + 1e-6 * std::sin(second),
                            .longitude = 14.5058 + 1e-6 * std::cos(second),
                            .altitude = 300 + 10 * std::sin(second / 300),
                            .horizontalAccuracy = 4.71,
                            .verticalAccuracy = 3.06,
                            .course = 180 + 10 * std::cos(second),
                            .speed = 4.4 + 0.1 * std::sin(second),
                            .timestamp = time_.now()});
        }
    }
    std::size_t points() const { return recorder_.routeCoordinates->size(); }
    bool stop() { return recorder_.stopRecording().has_value(); }

private:
    FakeZone zone_{std::chrono::hours(0)};
    FakeLocale locale_{zone_};
    NlohmannJsonParser json_;
    NoLog log_;
    NoHaptics haptics_;
    NoLiveActivity live_;
    VirtualTime time_{Date{Seconds{738'000'000}}};
    SqliteDefaults defaults_;
    SqliteDocumentParts documents_{defaults_};
    SettingsStore settings_{defaults_, json_, locale_};
    SessionHistory history_{documents_};
    CheckpointStore checkpoints_{documents_, history_};
    FakeHealthStore healthStore_{zone_};
    FakeWorkoutStore workoutStore_;
    WorkoutWriter workouts_{time_, workoutStore_, history_, documents_, log_};
    SystemRandom random_;
    FakeLocationManager receiver_;
    FakePedometer pedometer_;
    ActivityRecorderManager recorder_{time_,
                                      time_,
                                      random_,
                                      {receiver_, pedometer_, haptics_, live_},
                                      {healthStore_, checkpoints_, history_, workouts_, settings_},
                                      log_};
    double seconds_ = 0;
};

}  // namespace

int main(int count, char** words) {
    std::string folder = std::string(count > 1 ? words[1] : "/dev/shm") + "/recorder_bench-XXXXXX";
    if (!mkdtemp(folder.data())) {
        std::fprintf(stderr, "recorder_bench: there is no folder to write to\n");
        return 1;
    }
    const std::filesystem::path path = folder;
    Ride early(path / "early"), late(path / "late");
    late.goOn(100'000);
    early.goOn(1'000);
    const auto times = inTurn(200, {[&] { early.goOn(5); }, [&] { late.goOn(5); }});
    row("a fix in a route of " + std::to_string(late.points()) + " points against one in a route of " +
            std::to_string(early.points()),
        times[1] / times[0], 1.2, milliseconds(times[1] / 5) + " to " + milliseconds(times[0] / 5));

    Ride day(path / "day");
    bool isStored = false;
    const double seconds = secondsOf([&] {
        day.goOn(36'000);
        isStored = day.stop();
    });
    row("ten hours at one fix a second, against a second", seconds, 1, milliseconds(seconds));
    std::filesystem::remove_all(path);
    return isStored ? 0 : 1;
}
