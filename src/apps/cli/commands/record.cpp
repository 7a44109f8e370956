#include "apps/cli/commands/record.h"

#include "apps/cli/activity_list.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/kernel_files.h"
#include "apps/cli/receiver_news.h"
#include "apps/cli/recorder.h"
#include "apps/cli/recording_desk.h"
#include "apps/cli/recording_views.h"
#include "linux/steps/iio_pedometer.h"

#include <cstring>
#include <optional>

namespace pedvar {
namespace {

using Ending = RecordingDesk::Ending;

CommandResult<GpsdAddress> gpsdAddress(const std::optional<std::string>& typed, const Texts& text) {
    GpsdAddress address;
    if (!typed) return address;
    std::string_view rest = *typed;
    if (rest.starts_with('[') && rest.contains(']')) {
        address.host = rest.substr(1, rest.find(']') - 1);
        rest.remove_prefix(rest.find(']') + 1);
    } else {
        address.host = rest.substr(0, rest.find(':'));
        rest.remove_prefix(address.host.size());
    }
    if (rest.starts_with(':')) address.port = rest.substr(1);
    const auto port = wholeNumberNamed(address.port);
    const bool isRead = rest.empty() || rest.starts_with(':');
    if (!isRead || address.host.empty() || !port || *port < 1 || *port > 65'535) {
        return usageError(text("\"{}\" is no HOST:PORT; one is written like localhost:2947.", *typed));
    }
    return address;
}

/// What an earlier process has left, in the state of its last checkpoint. One that is older than twelve hours has
/// gone to the history.
CommandResult<std::optional<InProgressState>> leftRecording(CheckpointStore& checkpoints, const Clock& clock) {
    return commandResult<std::optional<InProgressState>>(checkpoints.restore(clock.now()));
}

/// With the day where that is not today.
std::string startText(const ActivitySession& session, const Application& application) {
    const Calendar calendar = application.calendar();
    const Figures figures = application.screen().figures;
    const LocalTime start = calendar.localTime(session.startTime);
    const Day day = std::chrono::floor<std::chrono::days>(start);
    const bool isToday =
        day == std::chrono::floor<std::chrono::days>(calendar.localTime(application.clock().now()));
    if (isToday) return figures.time(start);
    return application.text()("{0} {1}", figures.date(day), figures.time(start));
}

/// A recording with everything that it needs of this machine.
class LiveRecording {
public:
    LiveRecording(Application& application, const GpsdAddress& address)
        : application_(application),
          receiver_(application.loop(), application.clock(), address,
                    {.horizontal = application.linuxSettings().gpsHorizontalFactor,
                     .vertical = application.linuxSettings().gpsVerticalFactor}),
          pedometer_(application.loop(), application.clock(), application.defaults(), kernelFiles()),
          ended_(application.loop()),
          recorder_({application.loop(), application.clock(), application.zone(), random_, receiver_, pedometer_,
                     application.documents(), application.sessions(), application.settings(), application.log(),
                     healthFile(application)}),
          desk_(application.loop(), application.clock(), recorder_.manager, application, ended_.resolver()),
          news_(receiver_, address, application.text(),
                [this](const std::string& message) { desk_.say(message); }) {}

    DefaultsResult begin(ActivityType type) { return recorder_.manager.startRecording(type); }
    void say(const std::string& message) { desk_.say(message); }
    void sayWhatIsMissing();

    /// Until the person ends it.
    Ending run() {
        const LiveInput input(application_.loop(), desk_.keys(), desk_.handlers());
        desk_.open();
        const Ending ending = application_.loop().run(awaited());
        if (ending == Ending::stopped) application_.loop().run(recorder_.workouts.finished());
        return ending;
    }

    const ActivityRecorderManager& recorder() const { return recorder_.manager; }

private:
    Task<Ending> awaited() { co_return co_await ended_; }

    Application& application_;
    SystemRandom random_;
    GpsdLocationManager receiver_;
    IIOPedometer pedometer_;
    Completion<Ending> ended_;
    Recorder recorder_;
    RecordingDesk desk_;
    ReceiverNews news_;
};

void LiveRecording::sayWhatIsMissing() {
    const Texts& text = application_.text();
    if (!pedometer_.isStepCountingAvailable()) {
        say(text("This machine has no step counter, so steps are not counted."));
    } else if (recorder_.manager.motionAccessDenied) {
        say(text(
            "The step counter in {} may not be used, so steps are not counted. A rule of udev's can allow it.",
            harmless(pedometer_.device()->string())));
    }
}

Report leftReport(const ActivityRecorderManager& recorder, const Application& application) {
    const Texts& text = application.text();
    std::optional<CommandError> problem;
    if (const auto& reason = recorder.storageProblem.value())
        problem = CommandError{ErrorKind::unwritable, *reason};
    if (application.wantsJson()) {
        JsonObject document = statusDocument(recorder, application.clock().now(), application.calendar(), text);
        document.front().second = {std::string("left")};
        return Report{std::move(document), std::move(problem)};
    }
    const std::string_view type = caseName(recorder.activityType.value());
    std::string view = problem
                           ? text(
                                 "The end of the recording could not be stored. Within twelve hours\n"
                                 "`pedvar record {}` goes on with what was stored before.\n",
                                 type)
                           : text(
                                 "The recording is kept. Within twelve hours `pedvar record {}` goes on with it;\n"
                                 "`pedvar record --finish` puts it into the history as it is.\n",
                                 type);
    return Report{std::move(view), std::move(problem)};
}

CommandResult<Report> recordLive(const RecordRequest& request, ActivityType type, Application& application) {
    const Texts& text = application.text();
    const auto address = gpsdAddress(request.gpsd, text);
    if (!address) return std::unexpected(address.error());
    const auto lock = takeLock(application, Lock::recorder);
    if (!lock) return std::unexpected(lock.error());
    const std::size_t finishedBefore = application.sessions().savedSessions().size();
    CheckpointStore checkpoints(application.documents(), application.sessions());
    const auto left = leftRecording(checkpoints, application.clock());
    if (!left) return std::unexpected(left.error());
    if (*left && (*left)->session.activityType != type) {
        const ActivitySession& session = (*left)->session;
        return std::unexpected(CommandError{
            ErrorKind::otherRecording,
            text("The recording of {0} ({1}) is not finished: `pedvar record {2}` goes on with it, and "
                 "`pedvar record --finish` puts it into the history.",
                 startText(session, application), text.lookUp(displayName(session.activityType)),
                 caseName(session.activityType))});
    }
    LiveRecording recording(application, *address);
    if (application.sessions().savedSessions().size() > finishedBefore) {
        recording.say(text("A recording that was left more than twelve hours ago is in the history now."));
    }
    if (*left) {
        const double gap = (application.clock().now() - (*left)->checkpointDate).count();
        const std::string gone = application.screen().figures.duration(std::max(gap, 0.0));
        recording.say((*left)->isPaused
                          ? text("Going on with the recording of {0} after a gap of {1}; it is paused.",
                                 startText((*left)->session, application), gone)
                          : text("Going on with the recording of {0} after a gap of {1}, which its time includes.",
                                 startText((*left)->session, application), gone));
    } else if (const auto begun = commandResult(recording.begin(type)); !begun) {
        return std::unexpected(begun.error());
    }
    recording.sayWhatIsMissing();
    if (recording.run() == Ending::left) return leftReport(recording.recorder(), application);
    return finishedReport(*recording.recorder().currentSession.value(), application);
}

Task<> written(WorkoutWriter& workouts) {
    workouts.request();
    co_await workouts.finished();
}

/// Ends a recording that nobody goes on with, as of its last checkpoint.
CommandResult<Report> finishLeft(Application& application) {
    const Texts& text = application.text();
    const auto lock = takeLock(application, Lock::recorder);
    if (!lock) return std::unexpected(lock.error());
    const SessionHistory& history = application.sessions();
    const std::size_t finishedBefore = history.savedSessions().size();
    CheckpointStore checkpoints(application.documents(), application.sessions());
    const auto left = leftRecording(checkpoints, application.clock());
    if (!left) return std::unexpected(left.error());
    if (*left) {
        const auto finished = commandResult(checkpoints.finish(retired(**left)));
        if (!finished) return std::unexpected(finished.error());
    } else if (history.savedSessions().size() == finishedBefore) {
        return std::unexpected(
            CommandError{ErrorKind::nothingRecorded, text("There is no recording that was left.")});
    }
    HealthDatabase database(healthFile(application));
    SqliteWorkoutStore workoutStore(database);
    WorkoutWriter workouts(application.loop(), workoutStore, history, application.documents(), application.log());
    application.loop().run(written(workouts));
    const UUID id = history.savedSessions().front().session.id;
    return finishedReport(*history.wholeSession(id), application);
}

}  // namespace

CommandResult<ProcessLock> takeLock(const Application& application, Lock which) {
    const bool isReplay = which == Lock::replay;
    const std::filesystem::path file = application.folder() / (isReplay ? "replay.lock" : "recorder.lock");
    auto lock = ProcessLock::take(file);
    if (lock) return std::move(*lock);
    const Texts& text = application.text();
    if (const int error = lock.error().error; error != 0) {
        return std::unexpected(CommandError{ErrorKind::unwritable, Phrase("\"{}\" cannot be written: {}.",
                                                                          {file.string(), std::strerror(error)})});
    }
    const auto owner = lock.error().owner;
    const auto refusal = [&] {
        if (isReplay && owner) {
            return text("Process {} plays a recording back already, and only one can at a time. Wait for its end.",
                        *owner);
        }
        if (isReplay) {
            return text(
                "Another process plays a recording back already, and only one can at a time. Wait for its end.");
        }
        if (owner) {
            return text(
                "Process {0} records already, and only one can at a time. `kill {0}` leaves its recording, which "
                "can be gone on with or finished.",
                *owner);
        }
        return text("Another process records already, and only one can at a time. End it there first.");
    };
    return std::unexpected(CommandError{ErrorKind::alreadyRecording, refusal()});
}

std::filesystem::path healthFile(const Application& application) {
    return application.folder() / "health.sqlite";
}

Report finishedReport(const ActivitySession& session, const Application& application) {
    const Calendar calendar = application.calendar();
    const Activity activity = activityOf({session, session.route.size()});
    if (application.wantsJson()) return Report{activityDocument(activity, calendar)};
    const Screen screen = application.screen();
    return Report{screen.bold(titleOf(activity, screen, calendar)) + "\n\n" +
                  factsOf(activity, std::nullopt, screen)};
}

CommandResult<Report> run(const RecordRequest& request, Application& application) {
    const Texts& text = application.text();
    if (request.finish == RecordRequest::Finish::yes) {
        if (request.type) return usageError(text("--finish needs no kind of activity."));
        return finishLeft(application);
    }
    if (!request.type) {
        return usageError(text("What is recorded? One of walk, run, hike, cycle."));
    }
    const auto type = activityTypeNamed(*request.type, text);
    if (!type) return std::unexpected(type.error());
    return request.replay ? replay(request, *type, application) : recordLive(request, *type, application);
}

}  // namespace pedvar
