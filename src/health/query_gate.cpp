#include "health/query_gate.h"

#include "core/check.h"

namespace pedvar {

QueryGate::Slot& QueryGate::Slot::operator=(Slot&& other) noexcept {
    if (this == &other) return *this;
    release();
    gate_ = std::exchange(other.gate_, nullptr);
    return *this;
}

void QueryGate::Slot::release() {
    if (QueryGate* gate = std::exchange(gate_, nullptr)) gate->handOn();
}

QueryGate::Waiter::~Waiter() {
    std::erase(gate_.queue(priority_), this);
}

bool QueryGate::Waiter::await_ready() {
    if (gate_.activeQueryCount_ >= maxConcurrentQueries) return false;
    ++gate_.activeQueryCount_;
    slot_ = Slot(gate_);
    return true;
}

QueryGate::~QueryGate() {
    check(activeQueryCount_ == 0, "a query outlives its gate");
}

void QueryGate::handOn() {
    for (auto* waiters : {&queryWaiters_, &backgroundQueryWaiters_}) {
        if (waiters->empty()) continue;
        Waiter& next = *waiters->front();
        waiters->pop_front();
        next.slot_ = Slot(*this);
        next.executor_->post(next.resumption_.job());
        return;
    }
    check(activeQueryCount_ > 0, "more query slots were released than acquired");
    --activeQueryCount_;
}

}  // namespace pedvar
