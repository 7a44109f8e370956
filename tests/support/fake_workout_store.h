/// A store of workouts in memory.
#pragma once

#include "platform/workout_store.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace pedvar {

class FakeWorkoutStore : public HKWorkoutStore {
public:
    struct Saved {
        HKWorkout workout;
        std::vector<CLLocation> route;
    };
    std::vector<Saved> saved;
    int saves = 0;  // asked for, those of known workouts and those that failed included
    std::optional<HKError> writeError, insertError, finishError;

    void save(const HKWorkout& workout, HKHandler<void> completion) override {
        ++saves;
        if (writeError) return completion(std::unexpected(*writeError));
        if (!find(workout.uuid)) saved.push_back({workout, {}});
        completion({});
    }

    std::unique_ptr<HKWorkoutRouteBuilder> routeBuilder() override { return std::make_unique<Builder>(*this); }

private:
    class Builder : public HKWorkoutRouteBuilder {
    public:
        explicit Builder(FakeWorkoutStore& store) : store_(store) {}
        void insertRouteData(std::vector<CLLocation> locations, HKHandler<void> completion) override {
            if (store_.insertError) return completion(std::unexpected(*store_.insertError));
            locations_.insert(locations_.end(), locations.begin(), locations.end());
            completion({});
        }
        void finishRoute(const HKWorkout& workout, HKHandler<void> completion) override {
            if (store_.finishError) return completion(std::unexpected(*store_.finishError));
            if (Saved* const of = store_.find(workout.uuid); of && of->route.empty()) of->route = locations_;
            completion({});
        }

    private:
        FakeWorkoutStore& store_;
        std::vector<CLLocation> locations_;
    };

    Saved* find(UUID uuid) {
        for (Saved& workout : saved) {
            if (workout.workout.uuid == uuid) return &workout;
        }
        return nullptr;
    }
};

}  // namespace pedvar
