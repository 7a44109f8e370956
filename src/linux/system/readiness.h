/// Waiting for descriptors without polling.
#pragma once

#include "core/event.h"
#include "core/executor.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace pedvar {

/// Tells on the main executor when descriptors become readable. One thread sleeps for all of them.
class Readiness {
public:
    using Action = std::move_only_function<void()>;

    /// Keeps the reference.
    explicit Readiness(MainExecutor& executor);
    Readiness(const Readiness&) = delete;
    Readiness& operator=(const Readiness&) = delete;
    ~Readiness();

    /// Calls `act` each time that there is something to read, until the subscription ends: before the descriptor
    /// is closed. `act` reads what is there.
    [[nodiscard]] Subscription onReadable(int descriptor, Action act);

private:
    struct Watched;

    void wait();
    void act(Watched& watched);

    MainExecutor& executor_;
    int epoll_;
    int end_;  // readable when the thread is to end
    std::mutex mutex_;
    std::map<std::uint64_t, std::weak_ptr<Watched>> watched_;  // guarded by `mutex_`
    std::uint64_t lastIdentifier_ = 0;
    std::thread thread_;
};

}  // namespace pedvar
