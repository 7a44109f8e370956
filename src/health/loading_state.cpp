#include "health/loading_state.h"

#include "core/check.h"

#include <algorithm>
#include <limits>

namespace pedvar {

LoadingState::Load LoadingState::begin() {
    if (loadingCount_ == 0) {
        loadingWatchdog_ = executor_.after(std::chrono::seconds(maxLoadingSeconds), [this] {
            loadingCount_ = 0;
            reset();
        });
        loadingIndicatorTask_ = executor_.after(std::chrono::nanoseconds(loadingIndicatorDelay), [this] {
            if (isLoadingData) showLoadingIndicator = true;
        });
    }
    check(loadingCount_ < std::numeric_limits<std::int64_t>::max(), "too many loads in flight");
    ++loadingCount_;
    isLoadingData = true;
    return Load(*this);
}

void LoadingState::end() {
    loadingCount_ = std::max<std::int64_t>(loadingCount_ - 1, 0);  // the watchdog may have set it to 0
    if (loadingCount_ < 1) reset();
}

void LoadingState::reset() {
    isLoadingData = false;
    showLoadingIndicator = false;
    loadingWatchdog_.cancel();
    loadingIndicatorTask_.cancel();
}

}  // namespace pedvar
