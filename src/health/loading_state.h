/// Whether something is being loaded, and whether it takes long enough to say so.
#pragma once

#include "core/executor.h"
#include "core/published.h"

#include <cstdint>

namespace pedvar {

/// Counts the loads in flight. A load that ends soon never shows the indicator, and one that is stuck shows it for
/// a bounded time only.
class LoadingState {
public:
    static constexpr std::int64_t maxLoadingSeconds = 6;
    static constexpr std::uint64_t loadingIndicatorDelay = 400'000'000;  // nanoseconds

    /// One load in flight. Ends when destroyed.
    class Load {
    public:
        Load(Load&& other) noexcept : state_(std::exchange(other.state_, nullptr)) {}
        Load& operator=(Load&&) = delete;
        ~Load() {
            if (state_) state_->end();
        }

    private:
        friend LoadingState;
        explicit Load(LoadingState& state) : state_(&state) {}

        LoadingState* state_;
    };

    explicit LoadingState(MainExecutor& executor) : executor_(executor) {}

    Published<bool> isLoadingData;  // while loads are in flight, at most `maxLoadingSeconds` after the first
    Published<bool> showLoadingIndicator;  // when that has lasted for `loadingIndicatorDelay`

    [[nodiscard]] Load begin();
    std::int64_t loadingCount() const { return loadingCount_; }

private:
    void end();
    void reset();

    MainExecutor& executor_;
    std::int64_t loadingCount_ = 0;
    Timer loadingWatchdog_;
    Timer loadingIndicatorTask_;
};

}  // namespace pedvar
