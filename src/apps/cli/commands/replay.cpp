#include "apps/cli/activity_list.h"
#include "apps/cli/commands/record.h"
#include "apps/cli/gpx_file.h"
#include "apps/cli/kept_log.h"
#include "apps/cli/recorder.h"
#include "apps/cli/recording_desk.h"
#include "linux/replay/replay_receiver.h"
#include "linux/replay/replay_time.h"
#include "platform/fault_point.h"
#include "recording/pending_workouts.h"
#include "routes/imported_activity.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <list>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

namespace pedvar {
namespace {

using Ending = RecordingDesk::Ending;

constexpr Seconds longestRecording{31 * 86'400.0};  // what spans more has a wrong time in it

/// Numbers that are the same for the same recording, so that it becomes the same session each time.
class ReplayRandom : public RandomSource {
public:
    /// `begin` differs where a replay goes on, so that its points have new numbers.
    ReplayRandom(UUID recording, ActivityType type, std::size_t begin) {
        std::vector<std::uint32_t> words{static_cast<std::uint32_t>(type), static_cast<std::uint32_t>(begin)};
        for (const char character : recording.text()) words.push_back(static_cast<unsigned char>(character));
        std::seed_seq seed(words.begin(), words.end());
        engine_.seed(seed);
    }

    UUID::Bytes bytes() override {
        UUID::Bytes bytes{};
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(engine_());
        return bytes;
    }

private:
    std::mt19937_64 engine_;
};

/// A recording to be played back.
struct Recorded {
    ActivitySession imported;     // what an import of the file makes of it; it is the same for the same file
    std::list<CLLocation> fixes;  // by time, those of one moment as in the file; never empty

    UUID session(ActivityType type) const { return ReplayRandom(imported.id, type, 0).uuid(); }
    Date start() const { return fixes.front().timestamp; }
};

CommandResult<Recorded> readRecording(const std::string& path, ActivityType type, const Application& application) {
    const Texts& text = application.text();
    const auto document = readGPXFile(path, application.clock().now(), GPXReadings::recorded);
    if (!document) return std::unexpected(document.error());
    if (document->segments.empty()) return std::unexpected(withoutPoints(path));
    SystemRandom random;
    auto activity = importedActivity(*document, type, random);
    if (!activity) return std::unexpected(withoutTimes(path, text));
    if (activity->pointsWithoutTime > 0) tell(leftOut(activity->pointsWithoutTime, application.screen()));
    const Date start = activity->session.startTime;
    const Date end = *activity->session.endTime;
    if (end - start > longestRecording) {
        const auto day = [&](Date moment) {
            return application.screen().figures.longDate(application.calendar().day(moment));
        };
        return std::unexpected(CommandError{
            ErrorKind::noTimes,
            text(
                "\"{0}\": The times go from {1} to {2}, more than a month, which is no recording. Take the points "
                "with wrong times out of the file.",
                path, day(start), day(end))});
    }
    Recorded recorded{.imported = std::move(activity->session), .fixes = {}};
    for (const GPXSegment& segment : document->segments) {
        for (std::size_t i = 0; i < segment.points.size(); ++i) {
            const CLLocation& fix = segment.points[i];
            const bool isTimed = segment.hasTime[i] && start <= fix.timestamp && fix.timestamp <= end;
            if (isTimed) recorded.fixes.push_back(fix);
        }
    }
    recorded.fixes.sort(
        [](const CLLocation& left, const CLLocation& right) { return left.timestamp < right.timestamp; });
    return recorded;
}

CommandResult<std::optional<double>> speedNamed(const std::string& name, const Texts& text) {
    if (name == "max") return std::nullopt;
    if (name == "1") return 1;
    if (name == "10") return 10;
    return usageError(text("\"{}\" is no speed of a replay; valid: 1, 10, max.", name));
}

/// The stores of a replay, apart from those of the person until it is saved.
class ReplayStores {
public:
    explicit ReplayStores(const std::filesystem::path& folder)
        : defaults_(folder, SqliteDefaults::Access::readWrite, std::chrono::seconds(5),
                    SqliteDefaults::Durability::endOfProcess),  // it can be played again
          documents(defaults_),
          history(documents) {}

private:
    SqliteDefaults defaults_;

public:
    SqliteDocumentParts documents;
    SessionHistory history;
};

struct Replayed {
    Ending ending;
    std::optional<ActivitySession> session;  // the finished one
    std::vector<std::string> logs;
};

/// What is left in the state of its last checkpoint, if it is the same recording.
CommandResult<std::optional<InProgressState>> leftReplay(ReplayStores& stores, UUID session) {
    CheckpointStore checkpoints(stores.documents, stores.history);
    // Nothing is too old: the clock is that of the recording.
    auto left = checkpoints.restore(Date::min());
    if (!left) return std::unexpected(errorOf(left.error()));
    if (!*left || (*left)->session.id == session) return std::move(*left);
    if (const auto cleared = commandResult(checkpoints.clear()); !cleared) return std::unexpected(cleared.error());
    return std::nullopt;
}

/// Plays the fixes from where it was left, if it was.
class Player {
public:
    Player(const Recorded& recorded, ActivityType type, std::optional<double> speed,
           const std::optional<InProgressState>& left, ReplayStores& stores, const std::filesystem::path& folder,
           Application& application)
        : fixes_(recorded.fixes),
          type_(type),
          begin_(left ? left->checkpointDate : recorded.start()),
          hasPoints_(left && !left->routePoints.isEmpty()),
          random_(recorded.imported.id, type, left ? left->routePoints.size() + 1 : 0),
          time_(begin_, speed),
          recorder_({time_, time_, application.zone(), random_, receiver_, pedometer_, stores.documents,
                     stores.history, application.settings(), log_, folder / "health.sqlite"}),
          storageFailed_(recorder_.manager.storageProblem.observe([this](const auto& problem) {
              if (problem) time_.interrupt();
          })),
          desk_(time_, time_, recorder_.manager, application, [this](Ending ending) {
              ending_ = ending;
              time_.interrupt();
          }) {}

    CommandResult<Replayed> play() {
        ActivityRecorderManager& recorder = recorder_.manager;
        if (!recorder.isRunning()) {
            if (const auto begun = commandResult(recorder.startRecording(type_)); !begun) {
                return std::unexpected(begun.error());
            }
        }
        const LiveInput input(time_, desk_.keys(), desk_.handlers());
        desk_.open();
        playFixes();
        if (!ending_ && !recorder.storageProblem.value()) desk_.stop();
        if (!ending_) return std::unexpected(errorOf(DefaultsError{*recorder.storageProblem.value()}));
        time_.run(recorder_.workouts.finished());
        Replayed replayed{.ending = *ending_, .session = std::nullopt, .logs = std::move(log_.texts)};
        if (*ending_ == Ending::stopped) replayed.session = recorder.currentSession.value();
        return replayed;
    }

private:
    /// A fix comes before the tick of the same moment.
    void playFixes() {
        for (const CLLocation& fix : fixes_) {
            const bool wasPlayed = hasPoints_ ? fix.timestamp <= begin_ : fix.timestamp < begin_;
            if (wasPlayed) continue;
            time_.passTo(std::max(fix.timestamp, time_.now()), ReplayTime::AtEnd::wait);
            if (time_.isInterrupted()) return;
            receiver_.receive(fix);
        }
        time_.passTo(time_.now(), ReplayTime::AtEnd::run);
    }

    const std::list<CLLocation>& fixes_;
    ActivityType type_;
    Date begin_;
    bool hasPoints_;
    ReplayRandom random_;
    KeptLog log_;
    ReplayTime time_;
    ReplayReceiver receiver_;
    NoPedometer pedometer_;
    Recorder recorder_;
    std::optional<Ending> ending_;
    Subscription storageFailed_;  // it can be played again when there is room
    RecordingDesk desk_;
};

/// A replay whose stores are damaged begins anew.
void removeDamaged(const std::filesystem::path& folder) {
    const SqliteDefaults stores(folder, SqliteDefaults::Access::readOnly);
    std::error_code ignored;
    if (!stores.damages().empty()) std::filesystem::remove_all(folder, ignored);
}

CommandResult<Replayed> played(const Recorded& recorded, ActivityType type, std::optional<double> speed,
                               const std::filesystem::path& folder, Application& application) {
    removeDamaged(folder);
    ReplayStores stores(folder);
    const UUID session = recorded.session(type);
    // A replay may have been cut off when it was finished, but not yet saved.
    if (auto finished = stores.history.wholeSession(session)) {
        return Replayed{.ending = Ending::stopped, .session = std::move(finished), .logs = {}};
    }
    const auto left = leftReplay(stores, session);
    if (!left) return std::unexpected(left.error());
    if (*left) {
        tell(application.text()("Going on with the replay of this file after {}.",
                                application.screen().figures.duration((*left)->currentDuration)));
    }
    return Player(recorded, type, speed, *left, stores, folder, application).play();
}

Task<> written(WorkoutWriter& workouts) {
    workouts.request();
    co_await workouts.finished();
}

/// Puts the session into the history, unless it is there, and its workout into the health store.
CommandResult<void> save(const ActivitySession& session, Application& application) {
    SessionHistory& history = application.sessions();
    const auto added = commandResult(history.add(session, 0, PendingWorkouts::noting(session.id)));
    if (!added) return added;
    faultPoint("replay in history");
    HealthDatabase database(healthFile(application));
    SqliteWorkoutStore workoutStore(database);
    WorkoutWriter workouts(application.loop(), workoutStore, history, application.documents(), application.log());
    application.loop().run(written(workouts));
    return {};
}

/// The session that the history has of what was recorded: an earlier replay of it, or an import of the same walk.
std::optional<ActivitySession> earlierSession(const Recorded& recorded, ActivityType type,
                                              const SessionHistory& history) {
    if (auto replayed = history.wholeSession(recorded.session(type))) return replayed;
    const auto same = sameActivity(recorded.imported, history);
    return same ? history.wholeSession(*same) : std::nullopt;
}

JsonArray textsOf(const std::vector<std::string>& texts) {
    JsonArray result;
    for (const std::string& text : texts) result.push_back({text});
    return result;
}

Report report(const ActivitySession& session, const std::vector<std::string>& logs,
              const Application& application) {
    Report result = finishedReport(session, application);
    if (auto* const document = std::get_if<JsonObject>(&result.content)) {
        document->emplace_back("logs", JsonValue{textsOf(logs)});
    }
    return result;
}

}  // namespace

CommandResult<Report> replay(const RecordRequest& request, ActivityType type, Application& application) {
    const auto speed = speedNamed(request.speed, application.text());
    if (!speed) return std::unexpected(speed.error());
    const auto recorded = readRecording(*request.replay, type, application);
    if (!recorded) return std::unexpected(recorded.error());
    const auto lock = takeLock(application, Lock::replay);
    if (!lock) return std::unexpected(lock.error());
    const std::filesystem::path folder = application.folder() / "replay";
    const bool isSaved = request.save == RecordRequest::Save::yes;
    std::error_code ignored;

    if (const auto there = isSaved ? earlierSession(*recorded, type, application.sessions()) : std::nullopt) {
        tell(application.text()("This recording is in the history already."));
        if (there->id == recorded->session(type)) {
            // It may have been cut off before its workout was written.
            if (const auto saved = save(*there, application); !saved) return std::unexpected(saved.error());
        }
        std::filesystem::remove_all(folder, ignored);
        return report(*there, {}, application);
    }
    const auto replayed = played(*recorded, type, *speed, folder, application);
    if (!replayed) return std::unexpected(replayed.error());
    if (replayed->ending == Ending::left) {
        return std::unexpected(CommandError{
            ErrorKind::interrupted, application.text()("The replay was left; the same command goes on with it.")});
    }
    if (isSaved) {
        if (const auto saved = save(*replayed->session, application); !saved)
            return std::unexpected(saved.error());
    }
    std::filesystem::remove_all(folder, ignored);
    return report(*replayed->session, replayed->logs, application);
}

}  // namespace pedvar
