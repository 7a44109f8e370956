#include "linux/health/overlap_count.h"

#include <algorithm>

namespace pedvar {

void Coverage::add(const std::vector<Span>& ordered) {
    if (ordered.empty()) return;
    merged_.clear();
    const auto append = [this](Span span) {
        if (!merged_.empty() && span.start <= merged_.back().end) {
            merged_.back().end = std::max(merged_.back().end, span.end);
        } else {
            merged_.push_back(span);
        }
    };
    auto old = spans_.begin();
    for (const Span& span : ordered) {
        for (; old != spans_.end() && old->start <= span.start; ++old) append(*old);
        append(span);
    }
    std::for_each(old, spans_.end(), append);
    std::swap(spans_, merged_);
}

Milliseconds Coverage::Walk::covered(Span span) {
    while (next_ != end_ && next_->end <= span.start) ++next_;
    Milliseconds covered = 0;
    for (const Span* other = next_; other != end_ && other->start < span.end; ++other) {
        covered += std::min(other->end, span.end) - std::max(other->start, span.start);
    }
    return covered;
}

}  // namespace pedvar
