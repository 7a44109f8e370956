#include "linux/location/gpsd_location_manager.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace pedvar {

namespace {

constexpr Seconds clockTolerance{5};
constexpr int fixesUntilLasting = 5;

using SteadyTime = std::chrono::steady_clock::time_point;

/// What the messages of one connection say of its receivers.
class ReceiverWatch {
public:
    explicit ReceiverWatch(const GpsdPatience& patience) : patience_(patience) {}

    using State = ReceiverCondition::State;

    /// None while it cannot be told yet.
    std::optional<State> after(const GpsdMessage& message) {
        const SteadyTime now = std::chrono::steady_clock::now();
        if (const auto* const receivers = std::get_if<GpsdReceivers>(&message)) {
            hasReceiver_ = receivers->count > 0;
            heard_ = now;
        } else if (const auto* const report = std::get_if<GpsdReport>(&message)) {
            hasReceiver_ = true;
            heard_ = now;
            hasReported_ = true;
            if (report->mode != GpsdReport::Mode::noFix) lastFix_ = now;
        }
        if (!hasReceiver_) return State::noReceiver;
        if (now - heard_ > patience_.silence) return State::silent;
        if (lastFix_ && now - *lastFix_ <= patience_.silence) return State::fix;
        return hasReported_ ? std::optional(State::noFix) : std::nullopt;
    }

    bool isDead() const { return hasReceiver_ && std::chrono::steady_clock::now() - heard_ > patience_.dead; }

private:
    GpsdPatience patience_;
    bool hasReceiver_ = true;  // until gpsd has told
    bool hasReported_ = false;
    SteadyTime heard_ = std::chrono::steady_clock::now();
    std::optional<SteadyTime> lastFix_;
};

}  // namespace

/// What the thread works on. Connecting can block for minutes, so the thread is left to itself when the updates
/// stop, and keeps this alive until it ends.
class GpsdLocationManager::Listener : public std::enable_shared_from_this<Listener> {
public:
    Listener(MainExecutor& executor, GpsdLocationManager& owner)
        : executor_(&executor), owner_(&owner), address_(owner.address_), patience_(owner.patience_) {}

    void start() {
        std::thread([self = shared_from_this()] { self->run(); }).detach();
    }

    /// On the main executor: nothing comes from here any more.
    void stop() {
        {
            const std::scoped_lock lock(mutex_);
            executor_ = nullptr;
        }
        owner_ = nullptr;
        stopped_.notify_all();
    }

private:
    void run() {
        while (!isStopped()) {
            listen();
            std::unique_lock lock(mutex_);
            stopped_.wait_for(lock, patience_.reconnecting, [this] { return !executor_; });
        }
    }

    void listen() {
        auto connection = GpsdConnection::open(address_);
        if (!connection) return tell({ReceiverCondition::State::noDaemon, connection.error()});
        ReceiverWatch watch(patience_);
        while (!isStopped() && !watch.isDead()) {
            constexpr std::chrono::milliseconds glance{200};
            const GpsdMessage message = connection->next(std::min(glance, patience_.silence));
            if (const auto* const end = std::get_if<GpsdEnd>(&message)) {
                return tell({ReceiverCondition::State::noDaemon, end->reason});
            }
            if (const auto state = watch.after(message)) tell({*state, {}});
            if (const auto* const report = std::get_if<GpsdReport>(&message)) {
                post([report = *report](GpsdLocationManager& owner) { owner.take(report); });
            }
        }
    }

    void tell(const ReceiverCondition& condition) {
        if (told_ == condition) return;
        told_ = condition;
        post([condition](GpsdLocationManager& owner) { owner.condition = condition; });
    }

    void post(std::function<void(GpsdLocationManager&)> job) {
        const std::scoped_lock lock(mutex_);
        if (!executor_) return;
        executor_->post([self = shared_from_this(), job = std::move(job)] {
            if (self->owner_) job(*self->owner_);
        });
    }

    bool isStopped() {
        const std::scoped_lock lock(mutex_);
        return !executor_;
    }

    std::mutex mutex_;
    std::condition_variable stopped_;
    MainExecutor* executor_;      // null when stopped
    GpsdLocationManager* owner_;  // used on the main executor only
    const GpsdAddress address_;
    const GpsdPatience patience_;
    std::optional<ReceiverCondition> told_;
};

GpsdLocationManager::GpsdLocationManager(MainExecutor& executor, const Clock& clock, GpsdAddress address,
                                         const AccuracyFactors& factors, const GpsdPatience& patience)
    : executor_(executor), clock_(clock), address_(std::move(address)), factors_(factors), patience_(patience) {}

GpsdLocationManager::~GpsdLocationManager() {
    stopUpdatingLocation();
}

void GpsdLocationManager::startUpdatingLocation() {
    if (listener_) return;
    listener_ = std::make_shared<Listener>(executor_, *this);
    listener_->start();
}

void GpsdLocationManager::stopUpdatingLocation() {
    if (!listener_) return;
    listener_->stop();
    listener_.reset();
    fixesOfOtherTime_ = 0;
}

void GpsdLocationManager::take(const GpsdReport& report) {
    const Date arrival = clock_.now();
    const auto location = locationIn(report, factors_, arrival);
    if (!location) return;
    if (report.time) watchClock(*report.time, arrival);
    if (delegate_) delegate_->didUpdateLocations({&*location, 1});
}

void GpsdLocationManager::watchClock(Date time, Date arrival) {
    const Seconds difference = time - arrival;
    if (std::chrono::abs(difference) <= clockTolerance) {
        fixesOfOtherTime_ = 0;
        clockDifference = std::nullopt;
    } else if (++fixesOfOtherTime_ == fixesUntilLasting) {
        clockDifference = difference;
    }
}

}  // namespace pedvar
