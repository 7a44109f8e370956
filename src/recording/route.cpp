#include "recording/route.h"

#include "core/check.h"

namespace pedvar {

Route::const_iterator Route::begin() const {
    static const std::deque<LocationPoint> none;
    return points_ ? points_->begin() : none.begin();
}

void Route::push_back(const LocationPoint& point) {
    check(isFinite(point), "a point of a route holds a number that no document can hold");
    if (!points_) points_ = std::make_shared<std::deque<LocationPoint>>();
    const bool hasAnotherGoneOn = points_->size() != size_;
    if (hasAnotherGoneOn) points_ = std::make_shared<std::deque<LocationPoint>>(begin(), end());
    points_->push_back(point);
    ++size_;
}

}  // namespace pedvar
