#include "sample_export/document.h"

#include "sample_export/samples.h"
#include "sample_export/workout.h"

#include <algorithm>
#include <array>

namespace pedvar::sample {

namespace {

constexpr std::string_view head = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE HealthData [
<!-- HealthKit Export Version: 14 -->
<!ELEMENT HealthData (ExportDate,Me,(Record|Correlation|Workout|ActivitySummary)*)>
<!ATTLIST HealthData locale CDATA #REQUIRED>
<!ELEMENT ExportDate EMPTY>
<!ATTLIST ExportDate value CDATA #REQUIRED>
<!ELEMENT Record (MetadataEntry*)>
<!ATTLIST Record
  type CDATA #REQUIRED
  unit CDATA #IMPLIED
  value CDATA #IMPLIED
  sourceName CDATA #REQUIRED
  startDate CDATA #REQUIRED
  endDate CDATA #REQUIRED
>
]>
<HealthData locale="en_DE">
)";

constexpr std::string_view me =
    R"( <Me HKCharacteristicTypeIdentifierDateOfBirth="1987-03-14")"
    R"( HKCharacteristicTypeIdentifierBiologicalSex="HKBiologicalSexFemale")"
    R"( HKCharacteristicTypeIdentifierBloodType="HKBloodTypeNotSet")"
    R"( HKCharacteristicTypeIdentifierFitzpatrickSkinType="HKFitzpatrickSkinTypeNotSet")"
    R"( HKCharacteristicTypeIdentifierCardioFitnessMedicationsUse="None"/>)"
    "\n";

constexpr std::string_view typedKey = "HKWasUserEntered";

/// Writes the records of one type after another, each through all days.
class RecordSections {
public:
    RecordSections(RecordWriter& writer, const std::vector<Day>& days, const Options& options)
        : writer_(writer), days_(days), options_(options) {}

    void writeAll() {
        forEachDay(&RecordSections::steps);
        forEachDay(&RecordSections::distance);
        forEachDay(&RecordSections::bodyMass);
        height();
        forEachDay(&RecordSections::heartRate);
        forEachDay(&RecordSections::activeEnergy);
        forEachDay(&RecordSections::basalEnergy);
        forEachDay(&RecordSections::flights);
        forEachDay(&RecordSections::exercise);
        forEachDay(&RecordSections::water);
        forEachDay(&RecordSections::sleep);
    }

private:
    using Section = void (RecordSections::*)(const Day&, Random&);

    void forEachDay(Section section) {
        ++stream_;
        for (const Day& day : days_) {
            const auto date = static_cast<std::uint64_t>(day.date.time_since_epoch().count());
            Random random(options_.seed, stream_ << 32 | date);
            (this->*section)(day, random);
        }
    }

    static Span at(const Day& day, int minute, int seconds, int length = 0) {
        const std::int64_t start = berlinTime(day.date, minute) + seconds;
        return {start, start + length};
    }

    void steps(const Day& day, Random&) {
        for (const StepSample& sample : stepSamples(day, options_.isDense ? Density::seconds : Density::minutes)) {
            writer_.write({"StepCount", sample.source, "count", sample.span, Decimal{sample.steps, 0}});
        }
    }

    void distance(const Day& day, Random&) {
        for (const StepSample& sample : stepSamples(day, Density::minutes)) {
            const Decimal kilometers{centimeters(sample.steps, sample.isBrisk), 5};
            writer_.write({"DistanceWalkingRunning", sample.source, "km", sample.span, kilometers});
        }
    }

    void bodyMass(const Day& day, Random& random) {
        if (day.number % 4 != 2) return;
        const int trend = std::min(day.number, 180) * 12 / 10;  // grams a day, in hundredths of a kilogram
        const Decimal kilograms{6'840 + trend + random.within(-6, 6) * 5, 2};
        const int minute = 7 * 60 + random.within(0, 15);
        const Span span = at(day, minute, random.within(0, 59));
        writer_.write({"BodyMass", Source::typedByHand, "kg", span, kilograms, typedKey, "1"});
    }

    void height() {
        const Span span = at(days_.front(), 9 * 60, 12);
        writer_.write({"Height", Source::typedByHand, "cm", span, Decimal{172, 0}, typedKey, "1"});
    }

    void heartRate(const Day& day, Random& random) {
        for (int minute = random.within(0, 9); minute < minutesOfDay; minute += random.within(8, 12)) {
            if (!day.isWatchWorn(minute)) continue;
            const int steps = day.steps[static_cast<std::size_t>(minute)];
            const int resting = minute < 6 * 60 + 30 ? 52 : 64;
            const Decimal beats{resting + steps * 42 / 100 + random.within(0, 11), 0};
            writer_.write({"HeartRate", Source::watch, "count/min", at(day, minute, random.within(0, 59)), beats,
                           "HKMetadataKeyHeartRateMotionContext", steps >= briskSteps ? "2" : "1"});
        }
    }

    void activeEnergy(const Day& day, Random&) {
        for (const StepSample& sample : stepSamples(day, Density::minutes)) {
            if (day.hasWatch && sample.source == Source::phone) continue;
            const Decimal kilocalories{smallCalories(sample.steps), 3};
            writer_.write({"ActiveEnergyBurned", sample.source, "Cal", sample.span, kilocalories});
        }
    }

    void basalEnergy(const Day& day, Random& random) {
        constexpr int hour = 60;
        for (int minute = 0; minute < minutesOfDay; minute += hour) {
            const Decimal kilocalories{random.within(55'500, 60'900), 3};
            if (!day.isWatchWorn(minute)) continue;
            writer_.write(
                {"BasalEnergyBurned", Source::watch, "Cal", at(day, minute, 0, hour * 60), kilocalories});
        }
    }

    void flights(const Day& day, Random& random) {
        for (const Walk& walk : day.walks()) {
            if (!random.happens(16)) continue;
            const Source source = walk.isPhoneCarried ? Source::phone : Source::watch;
            const int delay = random.within(0, 40);
            const Span span = at(day, walk.first, delay, random.within(9, 19));
            writer_.write({"FlightsClimbed", source, "count", span, Decimal{random.within(1, 2), 0}});
        }
    }

    void exercise(const Day& day, Random&) {
        for (int minute = 0; minute < minutesOfDay; ++minute) {
            if (day.steps[static_cast<std::size_t>(minute)] < briskSteps || !day.isWatchWorn(minute)) continue;
            writer_.write({"AppleExerciseTime", Source::watch, "min", at(day, minute, 0, 60), Decimal{1, 0}});
        }
    }

    void water(const Day& day, Random& random) {
        if (!random.happens(60)) return;
        for (int minute = 7 * 60 + random.within(0, 60); minute < 22 * 60; minute += random.within(100, 260)) {
            const Decimal milliliters{random.within(3, 10) * 50, 0};
            writer_.write({"DietaryWater", Source::drinksApp, "mL", at(day, minute, 0), milliliters});
        }
    }

    void sleep(const Day& day, Random& random) {
        const int bedtime = random.within(-75, 10);  // minutes after midnight
        const int rising = 6 * 60 + random.within(10, 70);
        const auto moment = [&](int minute) { return berlinTime(day.date, minute); };
        writer_.write({"SleepAnalysis",
                       Source::phone,
                       "",
                       {moment(bedtime), moment(rising)},
                       "HKCategoryValueSleepAnalysisInBed",
                       "HKTimeZone",
                       "Europe/Berlin"});
        constexpr std::array<std::string_view, 3> phases{"HKCategoryValueSleepAnalysisAsleepCore",
                                                         "HKCategoryValueSleepAnalysisAsleepDeep",
                                                         "HKCategoryValueSleepAnalysisAsleepREM"};
        std::size_t phase = 0;
        for (int minute = bedtime + 12; day.hasWatch && minute < rising - 30;) {
            const int end = minute + random.within(14, 48);
            const std::string_view name = phases[phase++ % phases.size()];
            writer_.write({"SleepAnalysis",
                           Source::watch,
                           "",
                           {moment(minute), moment(end)},
                           name,
                           "HKTimeZone",
                           "Europe/Berlin"});
            minute = end;
        }
    }

    RecordWriter& writer_;
    const std::vector<Day>& days_;
    const Options& options_;
    std::uint64_t stream_ = 0;
};

void writeSummary(const Day& day, TextOutput& output) {
    std::int64_t energy = 0;
    int exercise = 0, standing = 0;
    for (const Walk& walk : day.walks()) {
        for (int minute = walk.first; minute < walk.end; ++minute) {
            const int steps = day.steps[static_cast<std::size_t>(minute)];
            energy += smallCalories(steps);
            if (day.isWatchWorn(minute) && steps >= briskSteps) ++exercise;
        }
    }
    for (int hour = 0; hour < 24; ++hour) {
        const auto* first = day.steps.data() + hour * 60;
        if (day.hasWatch && std::any_of(first, first + 60, [](int steps) { return steps > 0; })) ++standing;
    }
    output << " <ActivitySummary dateComponents=\"" << isoDate(day.date) << "\" activeEnergyBurned=\""
           << Decimal{energy, 3}
           << "\" activeEnergyBurnedGoal=\"420\" activeEnergyBurnedUnit=\"Cal\" appleMoveTime=\"0\""
           << " appleMoveTimeGoal=\"0\" appleExerciseTime=\"" << std::int64_t{exercise}
           << "\" appleExerciseTimeGoal=\"30\" appleStandHours=\"" << std::int64_t{standing}
           << "\" appleStandHoursGoal=\"12\"/>\n";
}

}  // namespace

std::int64_t exportTime(const Options& options) {
    return berlinTime(options.lastDay, options.exportMinute);
}

bool writeDocument(const std::vector<Day>& days, const Options& options, std::FILE* file) {
    const std::int64_t now = exportTime(options);
    TextOutput output(file, berlinOffset(now));
    RecordWriter writer(output, now, options.seed);
    (output << head << " <ExportDate value=\"").date(now + 95) << "\"/>\n" << me;
    RecordSections(writer, days, options).writeAll();
    if (const auto workout = plannedWorkout(days)) writeWorkout(*workout, writer);
    for (const Day& day : days) writeSummary(day, output);
    output << "</HealthData>\n";
    output.flush();
    return output.isGood();
}

}  // namespace pedvar::sample
