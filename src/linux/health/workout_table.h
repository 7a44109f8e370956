/// Workouts in the health store.
#pragma once

#include "linux/health/samples.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pedvar {

class Connection;

/// A route file as it is kept.
struct DeflatedRoute {
    std::string name;
    std::size_t size;  // of the file
    std::vector<std::byte> bytes;
};

class WorkoutTable {
public:
    explicit WorkoutTable(Connection& connection) : connection_(connection) {}

    /// The routes of `workout` that are not there yet, deflated. Takes its time: before the transaction.
    std::vector<DeflatedRoute> newRoutes(const WorkoutRow& workout);

    struct Added {
        bool isNew;
        std::int64_t routes;
    };
    /// Adds what is not there yet.
    Added add(const WorkoutRow& workout, std::span<const DeflatedRoute> routes);

private:
    std::optional<std::int64_t> find(const WorkoutRow& workout);
    std::int64_t insert(const WorkoutRow& workout);

    Connection& connection_;
};

}  // namespace pedvar
