/// A recorder among fakes, and a language for the walks that it records.
#pragma once

#include "linux/system/nlohmann_json_parser.h"
#include "recording/activity_recorder_manager.h"
#include "support/fake_companions.h"
#include "support/fake_defaults.h"
#include "support/fake_document_parts.h"
#include "support/fake_health_store.h"
#include "support/fake_locale.h"
#include "support/fake_log.h"
#include "support/fake_receivers.h"
#include "support/fake_workout_store.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// 0, 1, 2 and so on.
class CountingRandom : public RandomSource {
public:
    UUID::Bytes bytes() override {
        UUID::Bytes bytes{};
        ++count_;
        for (std::size_t i = 0; i < 8; ++i) bytes[i] = static_cast<std::uint8_t>(count_ >> (8 * i));
        return bytes;
    }

private:
    std::uint64_t count_ = 0;
};

inline constexpr double metresPerDegree = 110'574.275;  // of latitude, at the equator

/// What outlives the program: the stores, and the world.
struct World {
    std::vector<std::string> trace;
    VirtualTime time{Date{Seconds{738'000'000}}};
    FakeDocumentParts documents;
    FakeDefaults defaults{trace};
    FakeLog log;
    FakeWorkoutStore workoutStore;
    CountingRandom random;
    FakeZone zone{std::chrono::hours(0)};
    FakeLocale locale{zone};
    FakeHealthStore healthStore{zone};
    NlohmannJsonParser json;
    SettingsStore settings{defaults, json, locale};

    /// What the log says that begins with `text`.
    std::vector<std::string> lines(std::string_view text) const {
        std::vector<std::string> found;
        for (const std::string& line : log.lines) {
            const std::string message = line.substr(line.find(": ") + 2);
            if (message.starts_with(text)) found.push_back(message);
        }
        return found;
    }
};

/// One run of the program.
struct Launch {
    explicit Launch(World& world)
        : haptics(world.trace),
          live(world.trace),
          history(world.documents),
          checkpoints(world.documents, history),
          workouts(world.time, world.workoutStore, history, world.documents, world.log),
          recorder(world.time, world.time, world.random, {receiver, pedometer, haptics, live},
                   {world.healthStore, checkpoints, history, workouts, world.settings}, world.log) {}

    FakeLocationManager receiver;
    FakePedometer pedometer;
    FakeHaptics haptics;
    FakeLiveActivity live;
    SessionHistory history;
    CheckpointStore checkpoints;
    WorkoutWriter workouts;
    ActivityRecorderManager recorder;
};

/// Walks north from 0° 0', with one good fix a second unless it is said otherwise.
class Walk {
public:
    Walk(World& world, Launch& launch) : world_(world), launch_(launch) {}

    CLLocation next{.altitude = 30, .horizontalAccuracy = 4, .verticalAccuracy = 3};

    Walk& autoPause(AutoPauseMode mode) {
        UserPreferences preferences;
        preferences.autoPauseEnabled = mode == AutoPauseMode::on;
        REQUIRE(world_.settings.savePreferences(preferences));
        return *this;
    }
    Walk& start(ActivityType type = ActivityType::walk) {
        REQUIRE(launch_.recorder.startRecording(type));
        return *this;
    }
    Walk& at(double metresPerSecond) {
        speed_ = metresPerSecond;
        return *this;
    }
    /// The tick of a second comes before its fix.
    Walk& lasting(Seconds duration) {
        for (Seconds left = duration; left > Seconds{}; left -= Seconds{1}) {
            world_.time.advance(Seconds{1});
            metres_ += speed_;
            fix();
        }
        return *this;
    }
    /// Is somewhere else at once.
    Walk& leap(double metres) {
        metres_ += metres;
        return *this;
    }
    /// A fix from now and here.
    Walk& fix() {
        next.latitude = metres_ / metresPerDegree;
        next.timestamp = world_.time.now();
        launch_.receiver.send(next);
        return *this;
    }
    Walk& fixWithin(double accuracy) {
        next.horizontalAccuracy = accuracy;
        return fix();
    }
    Walk& fixAtHeight(double altitude) {
        next.altitude = altitude;
        return lasting(Seconds{1});
    }

private:
    World& world_;
    Launch& launch_;
    double metres_ = 0;
    double speed_ = 1.4;
};

struct Recording : World {
    std::optional<Launch> launch{std::in_place, *this};
    Walk walk{*this, *launch};
    ActivityRecorderManager* recorder = &launch->recorder;

    /// The program dies and starts again, with the walker where it was.
    void killAndStart() {
        launch.reset();
        launch.emplace(*this);
        recorder = &launch->recorder;
        time.settle();
    }
    const Route& route() const { return (*recorder->currentSession)->route; }
};

}  // namespace pedvar
