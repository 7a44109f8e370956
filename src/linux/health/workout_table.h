/// Workouts in the health store.
#pragma once

#include "linux/health/samples.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

class Connection;

/// The entry of a workout's metadata that holds the identifier given by its writer.
inline constexpr std::string_view externalUUIDKey = "HKExternalUUID";

/// A route file as it is kept.
struct DeflatedRoute {
    std::string name;
    std::size_t size;  // of the file
    std::vector<std::byte> bytes;
};

class WorkoutTable {
public:
    /// What is added belongs to `import`.
    explicit WorkoutTable(Connection& connection, std::optional<std::int64_t> import = {})
        : connection_(connection), import_(import) {}

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
    /// By what its writer calls it, whatever else has changed.
    std::optional<std::int64_t> findByUUID(const WorkoutRow& workout);
    std::int64_t insert(const WorkoutRow& workout);

    Connection& connection_;
    std::optional<std::int64_t> import_;
};

}  // namespace pedvar
