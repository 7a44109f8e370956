/// Keys and signals while a command runs.
#pragma once

#include "core/executor.h"

#include <functional>
#include <thread>

namespace pedvar {

/// Hears what the person types and what the system asks, on a thread of its own. One at a time in a process.
///
/// While it lives, the signals that ask the process to end (Ctrl-C, SIGTERM, SIGHUP, SIGQUIT) do not end it, nor
/// does it when nobody reads its output any more; `Handlers::end` is called instead. With keys, the terminal hands
/// each key over at once and does not show it; the destructor gives it back as it was.
class LiveInput {
public:
    enum class Keys { heard, ignored };
    struct Handlers {
        std::function<void(char)> key;
        std::function<void()> end;
    };

    /// Keeps the reference. The handlers are called on the executor, which has to outlive what is queued there.
    LiveInput(MainExecutor& executor, Keys keys, Handlers handlers);
    ~LiveInput();
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;

private:
    void listen(bool withKeys);

    MainExecutor& executor_;
    Handlers handlers_;
    std::thread thread_;
};

}  // namespace pedvar
