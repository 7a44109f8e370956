/// Where a person looks on while a recording runs.
#pragma once

#include "apps/cli/application.h"
#include "apps/cli/live_input.h"
#include "apps/cli/live_screen.h"
#include "recording/activity_recorder_manager.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

namespace pedvar {

/// Shows the recording once a second: on the terminal, or with `--json` as a line of standard output. Carries out
/// the keys. Lives on the executor.
class RecordingDesk {
public:
    enum class Ending {
        stopped,  // the session is in the history
        left,     // to go on another time, in the state of its checkpoint
    };

    /// Keeps references. `end` is called once.
    RecordingDesk(MainExecutor& executor, const Clock& clock, ActivityRecorderManager& recorder,
                  const Application& application, std::function<void(Ending)> end);
    ~RecordingDesk();
    RecordingDesk(const RecordingDesk&) = delete;
    RecordingDesk& operator=(const RecordingDesk&) = delete;

    /// What the person does at it.
    LiveInput::Keys keys() const { return hasScreen_ ? LiveInput::Keys::heard : LiveInput::Keys::ignored; }
    LiveInput::Handlers handlers();

    /// Begins to show.
    void open();
    /// Tells the person something: below the values, or on standard error.
    void say(const std::string& message);

    void stop();

private:
    void press(char key);
    void leave();
    void tick();
    void show(LiveScreen::Importance importance);
    void finish(Ending ending);

    MainExecutor& executor_;
    const Clock& clock_;
    ActivityRecorderManager& recorder_;
    const Application& application_;
    std::function<void(Ending)> end_;
    Screen screen_;
    Calendar calendar_;
    bool hasScreen_;
    bool showsHelp_ = false;
    bool isOver_ = false;
    LiveScreen lines_;
    std::deque<std::string> messages_;  // the latest ones
    Subscription storageProblem_;
    Subscription stepProblem_;
    Timer timer_;
};

}  // namespace pedvar
