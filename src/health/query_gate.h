/// Keeps the number of health store queries that run at once small.
#pragma once

#include "core/async.h"

#include <coroutine>
#include <cstdint>
#include <deque>

namespace pedvar {

/// `background` is for reads that the person does not wait for.
enum class QueryPriority { normal, background };

/// Admits six queries at a time. The others wait in two queues, first come, first served; normal ones go before
/// background ones. Lives on the main executor and outlives its slots and waiters.
class QueryGate {
public:
    static constexpr std::int64_t maxConcurrentQueries = 6;

    /// The right to run one query. Handed to the next waiter, or freed, when destroyed.
    class Slot {
    public:
        Slot() = default;
        Slot(Slot&& other) noexcept : gate_(std::exchange(other.gate_, nullptr)) {}
        Slot& operator=(Slot&& other) noexcept;
        ~Slot() { release(); }

        void release();

    private:
        friend QueryGate;
        explicit Slot(QueryGate& gate) : gate_(&gate) {}

        QueryGate* gate_ = nullptr;
    };

    /// Awaited once. A waiter that is destroyed leaves its queue, or hands on the slot it was given meanwhile. A
    /// cancelled task keeps its place and gets its slot like any other.
    class Waiter {
    public:
        Waiter(QueryGate& gate, QueryPriority priority) : gate_(gate), priority_(priority) {}
        Waiter(const Waiter&) = delete;
        Waiter& operator=(const Waiter&) = delete;
        ~Waiter();

        bool await_ready();
        template <class Promise>
        void await_suspend(std::coroutine_handle<Promise> self) {
            executor_ = self.promise().context.executor;
            resumption_ = detail::Resumption(self);
            gate_.queue(priority_).push_back(this);
        }
        Slot await_resume() { return std::move(slot_); }

    private:
        friend QueryGate;

        QueryGate& gate_;
        QueryPriority priority_;
        MainExecutor* executor_ = nullptr;
        detail::Resumption resumption_;
        Slot slot_;
    };

    QueryGate() = default;
    QueryGate(const QueryGate&) = delete;
    QueryGate& operator=(const QueryGate&) = delete;
    ~QueryGate();

    /// `co_await gate.acquireQuerySlot(priority)` yields a `Slot`.
    Waiter acquireQuerySlot(QueryPriority priority) { return Waiter(*this, priority); }

    std::int64_t activeQueryCount() const { return activeQueryCount_; }

private:
    std::deque<Waiter*>& queue(QueryPriority priority) {
        return priority == QueryPriority::background ? backgroundQueryWaiters_ : queryWaiters_;
    }
    void handOn();

    std::int64_t activeQueryCount_ = 0;
    std::deque<Waiter*> queryWaiters_;
    std::deque<Waiter*> backgroundQueryWaiters_;
};

}  // namespace pedvar
