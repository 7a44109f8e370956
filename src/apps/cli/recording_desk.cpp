#include "apps/cli/recording_desk.h"

#include "apps/cli/recording_views.h"
#include "apps/cli/terminal.h"
#include "core/json_text.h"

#include <unistd.h>
#include <cstdio>
#include <utility>

namespace pedvar {
namespace {

constexpr Seconds refreshing{1};
constexpr std::size_t shownMessages = 3;

}  // namespace

RecordingDesk::RecordingDesk(MainExecutor& executor, const Clock& clock, ActivityRecorderManager& recorder,
                             const Application& application, std::function<void(Ending)> end)
    : executor_(executor),
      clock_(clock),
      recorder_(recorder),
      application_(application),
      end_(std::move(end)),
      screen_(application.screen()),
      calendar_(application.calendar()),
      hasScreen_(!application.wantsJson() && terminalBehind(STDOUT_FILENO, ColorOutput::never).isInteractive),
      storageProblem_(recorder.storageProblem.observe([this](const std::optional<Phrase>& problem) {
          if (problem && hasScreen_) return;  // it stands there while it lasts
          const Texts& text = application_.text();
          say(problem ? storageText(*problem, text) : text("The recording is stored again."));
      })),
      stepProblem_(recorder.stepProblem.observe([this](const std::optional<Phrase>& problem) {
          const Texts& text = application_.text();
          say(problem ? text("Steps cannot be counted now: {}. The recording goes on without them.",
                             harmless(text.of(*problem)))
                      : text("Steps are counted again."));
      })) {}

RecordingDesk::~RecordingDesk() {
    lines_.clear();
}

LiveInput::Handlers RecordingDesk::handlers() {
    return {.key = [this](char key) { press(key); },
            .end = [this] { leave(); },
            .hide = [this] { lines_.clear(); },
            .show = [this] { show(LiveScreen::Importance::high); }};
}

void RecordingDesk::open() {
    // A recording that is gone on with may have met it before anybody observed.
    const auto& problem = recorder_.storageProblem.value();
    if (problem && !hasScreen_) say(storageText(*problem, application_.text()));
    show(LiveScreen::Importance::high);
    timer_ = executor_.after(refreshing, [this] { tick(); });
}

void RecordingDesk::tick() {
    timer_ = executor_.after(refreshing, [this] { tick(); });
    if (application_.wantsJson()) {
        const std::string line =
            jsonText({statusDocument(recorder_, clock_.now(), calendar_, application_.text())}) + "\n";
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::fflush(stdout);
    } else {
        show(LiveScreen::Importance::usual);
    }
}

void RecordingDesk::show(LiveScreen::Importance importance) {
    if (!hasScreen_ || isOver_) return;
    const std::size_t width = LiveScreen::width();
    const Texts& text = screen_.text;
    std::vector<ScreenLine> lines = statusLines(recorder_, clock_.now(), screen_, width);
    const auto add = [&](const std::string& paragraph, Rank rank) {
        for (std::string& line : wrapped(paragraph, width)) lines.push_back({std::move(line), rank});
    };
    for (const std::string& message : messages_) {
        add(message, &message == &messages_.back() ? Rank::news : Rank::explanation);
    }
    lines.push_back({"", Rank::blank});
    if (showsHelp_) {
        add(text("p pauses, r goes on, s stops and puts the activity into the history. Ctrl-C leaves the "
                 "recording: the same command goes on with it within twelve hours. h hides this."),
            Rank::asked);
    } else {
        add(recorder_.isPaused ? text("r resume   s stop   h help") : text("p pause   s stop   h help"),
            Rank::keys);
    }
    lines_.show(lines, importance);
}

void RecordingDesk::say(const std::string& message) {
    if (isOver_ || !hasScreen_) return tell(message);
    messages_.push_back(harmless(message));
    if (messages_.size() > shownMessages) messages_.pop_front();
    show(LiveScreen::Importance::high);
}

void RecordingDesk::press(char key) {
    if (isOver_) return;
    switch (key) {
        case 'p':
            recorder_.pauseRecording();
            break;
        case 'r':
            recorder_.resumeRecording();
            break;
        case 's':
            stop();
            if (isOver_) return;
            say(application_.text()("The recording cannot end while it cannot be stored; press s again later."));
            break;
        case 'h':
            showsHelp_ = !showsHelp_;
            break;
        default:
            return;
    }
    show(LiveScreen::Importance::high);
}

void RecordingDesk::stop() {
    if (isOver_) return;
    if (recorder_.stopRecording()) finish(Ending::stopped);
}

void RecordingDesk::leave() {
    if (isOver_) return;
    recorder_.saveCheckpoint();
    finish(Ending::left);
}

void RecordingDesk::finish(Ending ending) {
    isOver_ = true;
    timer_.cancel();
    lines_.clear();
    end_(ending);
}

}  // namespace pedvar
