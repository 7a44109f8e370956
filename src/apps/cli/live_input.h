/// Keys and signals while a command runs.
#pragma once

#include "core/executor.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace pedvar {

/// Hears what the person types and what the system asks, on a thread of its own. One at a time in a process.
///
/// While it lives, the signals that ask the process to end (Ctrl-C, SIGTERM, SIGHUP, SIGQUIT) do not end it, nor
/// does it when nobody reads its output any more; `Handlers::end` is called instead. With keys, the terminal hands
/// each key over at once and does not show it, for as long as this process has its foreground; when the process is
/// stopped, and by the destructor, it is given back as it was.
class LiveInput {
public:
    enum class Keys { heard, ignored };
    struct Handlers {
        std::function<void(char)> key;
        std::function<void()> end;
        // With keys only.
        std::function<void()> hide = [] {};  // the process is about to be stopped
        std::function<void()> show = [] {};  // it goes on, or the terminal has another size
    };

    /// Keeps the reference. The handlers are called on the executor, which has to outlive what is queued there.
    LiveInput(MainExecutor& executor, Keys keys, Handlers handlers);
    ~LiveInput();
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;

private:
    void listen();
    /// Has `job` run on the executor, unless this has been destroyed by then.
    void post(void (LiveInput::*job)());
    /// Takes the terminal when this process has its foreground.
    void look();
    void giveBack();
    void stopProcess();
    void goOn();

    MainExecutor& executor_;
    const Keys keys_;
    const Handlers handlers_;
    std::atomic<bool> hearsKeys_ = false;
    std::shared_ptr<LiveInput*> self_;
    std::thread thread_;
};

/// Whether `descriptor` is a terminal in whose background this process runs: another one's screen and keys.
bool isInBackground(int descriptor);

}  // namespace pedvar
