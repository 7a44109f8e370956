/// The health store: quantity samples of many sources, and the questions that can be asked of them.
#pragma once

#include "core/date.h"
#include "core/event.h"
#include "core/units.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// A kind of quantity, known by its identifier ("HKQuantityTypeIdentifierStepCount").
struct HKQuantityType {
    std::string identifier;
    auto operator<=>(const HKQuantityType&) const = default;
};

inline constexpr const char* HKQuantityTypeIdentifierStepCount = "HKQuantityTypeIdentifierStepCount";
inline constexpr const char* HKQuantityTypeIdentifierDistanceWalkingRunning =
    "HKQuantityTypeIdentifierDistanceWalkingRunning";
inline constexpr const char* HKQuantityTypeIdentifierDistanceCycling = "HKQuantityTypeIdentifierDistanceCycling";
inline constexpr const char* HKQuantityTypeIdentifierActiveEnergyBurned =
    "HKQuantityTypeIdentifierActiveEnergyBurned";
inline constexpr const char* HKQuantityTypeIdentifierBasalEnergyBurned =
    "HKQuantityTypeIdentifierBasalEnergyBurned";
inline constexpr const char* HKQuantityTypeIdentifierAppleExerciseTime =
    "HKQuantityTypeIdentifierAppleExerciseTime";
inline constexpr const char* HKQuantityTypeIdentifierFlightsClimbed = "HKQuantityTypeIdentifierFlightsClimbed";
inline constexpr const char* HKQuantityTypeIdentifierHeartRate = "HKQuantityTypeIdentifierHeartRate";
inline constexpr const char* HKQuantityTypeIdentifierBodyMass = "HKQuantityTypeIdentifierBodyMass";
inline constexpr const char* HKQuantityTypeIdentifierHeight = "HKQuantityTypeIdentifierHeight";
inline constexpr const char* HKQuantityTypeIdentifierDietaryWater = "HKQuantityTypeIdentifierDietaryWater";

/// An application or device that wrote samples.
struct HKSource {
    std::int64_t id = 0;  // of this store
    std::string name;
    bool isOwn = false;  // written by Pedvar
    bool operator==(const HKSource&) const = default;
};

/// An amount with its unit.
class HKQuantity {
public:
    HKQuantity(HKUnit unit, double value) : dimension_(unit.dimension), kept_(unit.toKept(value)) {}

    Dimension dimension() const { return dimension_; }
    /// The amount in `unit`, which has to be of the same dimension.
    double doubleValue(HKUnit unit) const;

private:
    Dimension dimension_;
    double kept_;
};

/// An amount that stands for the time from `start` to `end`; the same moment twice for an instant.
struct HKQuantitySample {
    HKQuantityType type;
    HKQuantity quantity;
    Date start;
    Date end;
    HKSource source = {};  // set by the store
};

struct HKError {
    std::string domain;
    std::int64_t code = 0;
    std::string localizedDescription;
    bool operator==(const HKError&) const = default;
};

template <class T>
using HKResult = std::expected<T, HKError>;

/// Called once, from any thread.
template <class T>
using HKHandler = std::move_only_function<void(HKResult<T>)>;

enum class HKAuthorizationRequestStatus { unknown = 0, shouldRequest = 1, unnecessary = 2 };

/// Bits; combine with |.
enum class HKQueryOptions : unsigned { none = 0, strictStartDate = 1 };

/// Bits; combine with |. Sums count overlapping sources once.
enum class HKStatisticsOptions : unsigned { cumulativeSum = 16, discreteAverage = 2, separateBySource = 1 };

constexpr HKStatisticsOptions operator|(HKStatisticsOptions a, HKStatisticsOptions b) {
    return static_cast<HKStatisticsOptions>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr bool contains(HKStatisticsOptions options, HKStatisticsOptions option) {
    return (static_cast<unsigned>(options) & static_cast<unsigned>(option)) != 0;
}

/// Samples that overlap [start, end); with `strictStartDate` those with start <= sample start < end.
struct HKPredicate {
    Date start;
    Date end;
    HKQueryOptions options = HKQueryOptions::none;
    std::vector<HKSource> sources = {};  // any source when empty
};

/// What a statistics query found in its interval. Without samples there is no sum and no average.
class HKStatistics {
public:
    Interval interval;
    std::optional<HKQuantity> sum;
    std::optional<HKQuantity> average, minimum, maximum;
    /// With `separateBySource`: what of the sum each source contributed, in order of priority.
    std::vector<std::pair<HKSource, HKQuantity>> sumBySource;

    std::optional<HKQuantity> sumQuantity() const { return sum; }
};

struct HKStatisticsQuery {
    HKQuantityType quantityType;
    HKPredicate quantitySamplePredicate;
    HKStatisticsOptions options;
    HKHandler<HKStatistics> completionHandler;
};

/// Clock units of a collection query's intervals: exactly one of the two is above 0.
struct DateComponents {
    int day = 0;
    int hour = 0;
    bool operator==(const DateComponents&) const = default;
};

/// Sums of consecutive intervals of the zone's clock from the anchor on, as many as it takes to reach the
/// predicate's end; empty ones included. An hour that the clocks skip is an empty interval, one that they show
/// twice is one.
struct HKStatisticsCollectionQuery {
    HKQuantityType quantityType;
    HKPredicate quantitySamplePredicate;
    HKStatisticsOptions options;
    Date anchorDate;
    DateComponents intervalComponents;
    HKHandler<std::vector<HKStatistics>> initialResultsHandler;
};

enum class HKSampleSort { none, startDateAscending, startDateDescending, endDateAscending, endDateDescending };

struct HKSampleQuery {
    HKQuantityType sampleType;
    HKPredicate predicate;
    std::size_t limit = 0;  // 0 is no limit
    HKSampleSort sort = HKSampleSort::none;
    HKHandler<std::vector<HKQuantitySample>> resultsHandler;
};

/// What was made of the sums of `type` before `until`.
struct DerivedDocument {
    std::string key;
    HKQuantityType type;
    Date until;
    std::string text;
};

/// What `HKHealthStore::recall` finds: nothing once a sum that the text was made of has changed. `state` changes
/// with the samples of the type.
struct RecalledText {
    std::optional<std::string> text;
    std::int64_t state = 0;
};

enum class HKUpdateFrequency { immediate = 1, hourly = 2, daily = 3, weekly = 4 };

/// Everything that Pedvar asks to read or write.
struct HKTypeSets {
    std::vector<std::string> toShare;
    std::vector<std::string> read;
};

struct HKWorkoutQuery;  // stored_workouts.h
struct HKWorkoutRouteQuery;

/// Answers once to each question, from any thread.
///
/// Sums of cumulative quantities count once where sources overlap in time: a sample counts with the share of its
/// duration that no source of higher priority covers, an instant whole unless such a source covers it, and all of
/// it in the interval that holds its start. Samples longer than four hours rank last; they count in intervals of
/// whole days and in no shorter ones.
class HKHealthStore {
public:
    virtual ~HKHealthStore() = default;

    virtual void getRequestStatusForAuthorization(const HKTypeSets& types,
                                                  HKHandler<HKAuthorizationRequestStatus> completion) = 0;
    virtual void requestAuthorization(const HKTypeSets& types, HKHandler<void> completion) = 0;

    virtual void execute(HKStatisticsQuery query) = 0;
    virtual void execute(HKStatisticsCollectionQuery query) = 0;
    virtual void execute(HKSampleQuery query) = 0;
    virtual void execute(HKWorkoutQuery query) = 0;
    virtual void execute(HKWorkoutRouteQuery query) = 0;

    virtual void recall(std::string key, HKQuantityType type, HKHandler<RecalledText> completion) = 0;
    /// Keeps the document, unless the samples of its type are no longer in `state`.
    virtual void keep(DerivedDocument document, std::int64_t state, HKHandler<void> completion) = 0;

    /// Stores all samples or none, as written by Pedvar.
    virtual void save(std::vector<HKQuantitySample> samples, HKHandler<void> completion) = 0;
    /// Deletes those of the samples that Pedvar wrote, all or none; one that is not there is passed over.
    virtual void deleteSamples(std::vector<HKQuantitySample> samples, HKHandler<void> completion) = 0;

    virtual void enableBackgroundDelivery(const HKQuantityType& type, HKUpdateFrequency frequency,
                                          HKHandler<void> completion) = 0;
    /// Calls `observer` on the main executor after samples of `type` were added.
    [[nodiscard]] virtual Subscription observeNewSamples(const HKQuantityType& type,
                                                         std::move_only_function<void()> observer) = 0;
};

}  // namespace pedvar
