#include "linux/location/gpsd_location_manager.h"

#include "linux/location/receiver_watch.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace pedvar {

namespace {

constexpr Seconds clockTolerance{5};  // what the recorder grants a fix
constexpr Seconds lastingDifference{5};
constexpr std::chrono::milliseconds glance{200};  // how often a thread that waits sees whether it is to stop
constexpr int mostUnheard = 100;  // reports; more wait only for a main thread that is stuck, and they get old

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
        // Signals are for other threads; writing to a daemon that has gone raises one too.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        while (!isStopped()) {
            listen();
            std::unique_lock lock(mutex_);
            stopped_.wait_for(lock, patience_.reconnecting, [this] { return !executor_; });
        }
    }

    /// As long as one connection lasts.
    void listen() {
        auto connection = GpsdConnection::open(address_);
        if (!connection) return tell({ReceiverCondition::State::noDaemon, connection.error()});
        ReceiverWatch watch(patience_, std::chrono::steady_clock::now());
        while (!isStopped()) {
            const GpsdMessage message = connection->next(std::min(glance, patience_.silence));
            if (const auto* const end = std::get_if<GpsdEnd>(&message)) {
                return tell({ReceiverCondition::State::noDaemon, end->reason});
            }
            const auto now = std::chrono::steady_clock::now();
            if (const auto state = watch.after(message, now)) tell({*state, {}});
            const auto* const report = std::get_if<GpsdReport>(&message);
            if (report && watch.isChosen(*report)) pass(*report);
            if (watch.isDead(now)) return;
        }
    }

    /// Once, until it is another one.
    void tell(const ReceiverCondition& present) {
        if (std::exchange(told_, present) == present) return;
        post([present](GpsdLocationManager& owner) { owner.condition = present; });
    }

    void pass(const GpsdReport& report) {
        {
            const std::scoped_lock lock(mutex_);
            if (unheard_ == mostUnheard) return;
            ++unheard_;
        }
        post([this, report](GpsdLocationManager& owner) {
            {
                const std::scoped_lock lock(mutex_);
                --unheard_;
            }
            owner.take(report);
        });
    }

    /// Runs `job` on the main executor, unless updates have been stopped by then.
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
    int unheard_ = 0;             // reports that have been posted and not been taken
    GpsdLocationManager* owner_;  // used on the main executor only
    const GpsdAddress address_;
    const GpsdPatience patience_;
    std::optional<ReceiverCondition> told_;
};

GpsdLocationManager::GpsdLocationManager(MainExecutor& executor, const Clock& clock, GpsdAddress address,
                                         const AccuracyFactors& factors, const GpsdPatience& patience)
    : executor_(executor), clock_(clock), address_(std::move(address)), factors_(factors), patience_(patience) {}

GpsdLocationManager::~GpsdLocationManager() {
    GpsdLocationManager::stopUpdatingLocation();
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
    clocksDifferSince_.reset();
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
        clocksDifferSince_.reset();
        clockDifference = std::nullopt;
        return;
    }
    // A clock that was set back is as good as one that differs from now on.
    if (!clocksDifferSince_ || arrival < *clocksDifferSince_) clocksDifferSince_ = arrival;
    const bool isNamed = clockDifference->has_value();
    if (!isNamed && arrival - *clocksDifferSince_ >= lastingDifference) clockDifference = difference;
}

}  // namespace pedvar
