#include "sample_export/samples.h"

#include "sample_export/random.h"

#include <algorithm>
#include <utility>

namespace pedvar::sample {

namespace {

/// Adds the samples of one walk after the other.
class Devices {
public:
    Devices(const Day& day, Density density)
        : day_(day),
          isDense_(density == Density::seconds),
          random_(0xde51ce5, static_cast<std::uint64_t>(day.date.time_since_epoch().count())) {}

    void addWatch(const Walk& walk) {
        const std::int64_t start = berlinTime(day_.date, walk.first) + random_.within(0, 3);
        for (int minute = walk.first; minute < walk.end && day_.isWatchWorn(minute); ++minute) {
            const std::int64_t from = start + (minute - walk.first) * 60;
            addPieces(Source::watch, {from, from + 60}, stepsOf(minute, minute + 1), isDense_ ? 5 : 1);
        }
    }

    void addPhone(const Walk& walk) {
        if (!walk.isPhoneCarried) return;
        const std::int64_t start = berlinTime(day_.date, walk.first) + random_.within(2, 20);
        for (int minute = walk.first; minute < walk.end;) {
            const int end = std::min(minute + random_.within(3, 9), walk.end);
            const Span span{start + (minute - walk.first) * 60, start + (end - walk.first) * 60};
            const int counted = std::max(1, stepsOf(minute, end) * random_.within(94, 104) / 100);
            addPieces(Source::phone, span, counted, isDense_ ? (end - minute) * 4 : 1);
            minute = end;
        }
    }

    std::vector<StepSample> samples;

private:
    int stepsOf(int first, int end) const {
        int steps = 0;
        for (int minute = first; minute < end; ++minute) steps += day_.steps[static_cast<std::size_t>(minute)];
        return steps;
    }

    /// Spreads the steps over `count` pieces; pieces without steps are no samples.
    void addPieces(Source source, Span span, int steps, int count) {
        const std::int64_t length = span.end - span.start;
        const bool isBrisk = steps * 60 >= briskSteps * length;
        for (int piece = 0; piece < count; ++piece) {
            const int counted = steps * (piece + 1) / count - steps * piece / count;
            const Span part{span.start + length * piece / count, span.start + length * (piece + 1) / count};
            if (counted > 0) samples.push_back({source, part, counted, isBrisk});
        }
    }

    const Day& day_;
    bool isDense_;
    Random random_;
};

}  // namespace

std::vector<StepSample> stepSamples(const Day& day, Density density) {
    Devices devices(day, density);
    for (const Walk& walk : day.walks()) {
        devices.addPhone(walk);
        devices.addWatch(walk);
    }
    return std::move(devices.samples);
}

std::int64_t centimeters(int steps, bool isBrisk) {
    return steps * (isBrisk ? 74 : 61);
}

std::int64_t smallCalories(int steps) {
    return steps * 42;
}

}  // namespace pedvar::sample
