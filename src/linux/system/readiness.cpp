#include "linux/system/readiness.h"

#include "core/check.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace pedvar {

namespace {

constexpr std::uint64_t endIdentifier = 0;

/// Told once, then not again before it is asked for anew.
constexpr std::uint32_t onceReadable = EPOLLIN | EPOLLONESHOT;

}  // namespace

struct Readiness::Watched {
    int descriptor;
    std::uint64_t identifier;
    Action act;
    bool isOver = false;  // and the descriptor may be another one's by now
};

Readiness::Readiness(MainExecutor& executor)
    : executor_(executor), epoll_(epoll_create1(EPOLL_CLOEXEC)), end_(eventfd(0, EFD_CLOEXEC)) {
    epoll_event ending{EPOLLIN, {.u64 = endIdentifier}};
    check(epoll_ >= 0 && end_ >= 0 && epoll_ctl(epoll_, EPOLL_CTL_ADD, end_, &ending) == 0,
          "there is no way to wait for descriptors");
    thread_ = std::thread([this] { wait(); });
}

Readiness::~Readiness() {
    check(eventfd_write(end_, 1) == 0, "the thread that waits cannot be ended");
    thread_.join();
    close(end_);
    close(epoll_);
}

Subscription Readiness::onReadable(int descriptor, Action act) {
    auto watched = std::make_shared<Watched>(descriptor, ++lastIdentifier_, std::move(act));
    {
        const std::scoped_lock lock(mutex_);
        std::erase_if(watched_, [](const auto& entry) { return entry.second.expired(); });
        watched_.emplace(watched->identifier, watched);
    }
    epoll_event event{onceReadable, {.u64 = watched->identifier}};
    check(epoll_ctl(epoll_, EPOLL_CTL_ADD, descriptor, &event) == 0, "a descriptor cannot be waited for");
    return Subscription(std::shared_ptr<void>(watched.get(), [epoll = epoll_, watched](void*) {
        epoll_ctl(epoll, EPOLL_CTL_DEL, watched->descriptor, nullptr);
        watched->isOver = true;
    }));
}

void Readiness::wait() {
    while (true) {
        epoll_event event{};
        if (epoll_wait(epoll_, &event, 1, -1) < 1) continue;
        if (event.data.u64 == endIdentifier) return;
        const std::scoped_lock lock(mutex_);
        const auto found = watched_.find(event.data.u64);
        if (found == watched_.end()) continue;
        executor_.post([this, weak = found->second] {
            const auto watched = weak.lock();
            if (watched && !watched->isOver) act(*watched);
        });
    }
}

void Readiness::act(Watched& watched) {
    watched.act();
    if (watched.isOver) return;
    epoll_event event{onceReadable, {.u64 = watched.identifier}};
    epoll_ctl(epoll_, EPOLL_CTL_MOD, watched.descriptor, &event);
}

}  // namespace pedvar
