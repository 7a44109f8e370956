/// Counting samples of overlapping sources once.
#pragma once

#include "linux/health/samples.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace pedvar {

/// From `start` on and before `end`.
struct Span {
    Milliseconds start;
    Milliseconds end;

    bool contains(Milliseconds moment) const { return start <= moment && moment < end; }
    bool operator==(const Span&) const = default;
};

/// Time covered by some spans: disjoint and in order.
class Coverage {
public:
    /// Adds spans that are in order of their starts.
    void add(const std::vector<Span>& ordered);

    /// Walks over the coverage beside spans that are in order of their starts.
    class Walk {
    public:
        explicit Walk(const Coverage& coverage)
            : next_(coverage.spans_.data()), end_(next_ + coverage.spans_.size()) {}

        /// How much of `span` is covered. Starts must not go back from call to call.
        Milliseconds covered(Span span);

    private:
        const Span* next_;
        const Span* end_;
    };

private:
    std::vector<Span> spans_;
    std::vector<Span> merged_;  // kept for its memory
};

/// What is looked at to see whether a sample counts: its duration, of an instant the millisecond that it begins.
constexpr Span countedSpan(Span sample) {
    return {sample.start, std::max(sample.end, sample.start + 1)};
}

/// The part of `value` that counts when `covered` of `counted` belongs to others.
constexpr double countedShare(double value, Span counted, Milliseconds covered) {
    if (covered == 0) return value;
    const Milliseconds length = counted.end - counted.start;
    return value * static_cast<double>(length - covered) / static_cast<double>(length) + 0.0;  // never -0
}

/// Counts samples by rank: a sample with the share of its duration that no sample of a lower rank number covers,
/// an instant whole unless such a sample covers it. Samples of one rank all count. Linear in the number of
/// samples.
class OverlapCount {
public:
    explicit OverlapCount(std::size_t rankCount) : ranks_(rankCount) {}

    /// Adds a sample; those of one rank in order of their starts.
    void add(std::size_t rank, Span span, double value) {
        ranks_[rank].spans.push_back(span);
        ranks_[rank].values.push_back(value);
    }

    /// Calls `credit(rank, span, counted)` for each sample, rank by rank.
    template <class Credit>
    void count(Credit&& credit) const {
        Coverage higher;
        for (std::size_t rank = 0; rank < ranks_.size(); ++rank) {
            const auto& [spans, values] = ranks_[rank];
            Coverage::Walk walk(higher);
            for (std::size_t i = 0; i < spans.size(); ++i) {
                const Span counted = countedSpan(spans[i]);
                credit(rank, spans[i], countedShare(values[i], counted, walk.covered(counted)));
            }
            if (rank + 1 < ranks_.size()) higher.add(spans);
        }
    }

private:
    struct Rank {
        std::vector<Span> spans;
        std::vector<double> values;
    };
    std::vector<Rank> ranks_;
};

}  // namespace pedvar
