/// Coroutines on the main executor.
///
/// A `Task` is lazy and belongs to whoever awaits it. The executor and the stop token come from the awaiting task;
/// at the root they come from the `TaskScope` that runs it. Nothing resumes inside somebody else's call: timers,
/// answers and waits post the resumption, so state does not change between two awaits but by the task's own doing.
///
/// Cancellation is asked for with a stop token and seen as a value; no exception stands for it. Destroying a scope
/// destroys its coroutines where they stand, and late answers to them are dropped.
#pragma once

#include "core/executor.h"

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <vector>

namespace pedvar {

template <class T>
class Task;

namespace detail {

/// What a task inherits from the one that awaits it.
struct TaskContext {
    MainExecutor* executor = nullptr;
    std::stop_token stop;
};

/// Resumes a suspended coroutine later, unless it is gone by then.
class Resumption {
public:
    Resumption() = default;
    explicit Resumption(std::coroutine_handle<> handle)
        : handle_(std::make_shared<std::coroutine_handle<>>(handle)) {}

    /// The resumption as a job. Of several jobs of one resumption only the first that runs resumes.
    Job job() const {
        return [weak = std::weak_ptr(handle_)] {
            if (const auto handle = weak.lock(); handle && *handle) std::exchange(*handle, nullptr).resume();
        };
    }

private:
    std::shared_ptr<std::coroutine_handle<>> handle_;
};

class PromiseBase {
public:
    TaskContext context;

    /// Starts the coroutine on behalf of `parent`. False when it ran to its end, so that the parent goes on
    /// without growing the stack, however many tasks it awaits in a row.
    bool start(std::coroutine_handle<> self, std::coroutine_handle<> parent) {
        isStarting_ = true;
        self.resume();
        if (self.done()) return false;
        isStarting_ = false;
        parent_ = parent;
        return true;
    }

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> self) const noexcept {
            const PromiseBase& promise = self.promise();
            return promise.isStarting_ ? std::noop_coroutine() : promise.parent_;
        }
        void await_resume() const noexcept {}
    };

    std::suspend_always initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }
    void unhandled_exception() { exception_ = std::current_exception(); }

protected:
    void rethrow() const {
        if (exception_) std::rethrow_exception(exception_);
    }

private:
    std::coroutine_handle<> parent_;
    std::exception_ptr exception_;
    bool isStarting_ = false;
};

template <class T>
class Promise : public PromiseBase {
public:
    Task<T> get_return_object();
    template <class Value>
    void return_value(Value&& value) {
        value_.emplace(std::forward<Value>(value));
    }
    T take() {
        rethrow();
        return std::move(*value_);
    }

private:
    std::optional<T> value_;
};

template <>
class Promise<void> : public PromiseBase {
public:
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void take() const { rethrow(); }
};

}  // namespace detail

/// Work that yields a `T` once it is awaited. Exceptions travel to the awaiting task.
template <class T = void>
class [[nodiscard]] Task {
public:
    using promise_type = detail::Promise<T>;

    Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Task() {
        if (handle_) handle_.destroy();
    }

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> parent) {
        handle_.promise().context = parent.promise().context;
        return handle_.promise().start(handle_, parent);
    }
    T await_resume() { return handle_.promise().take(); }

private:
    friend promise_type;
    explicit Task(std::coroutine_handle<promise_type> handle) : handle_(handle) {}

    std::coroutine_handle<promise_type> handle_;
};

template <class T>
Task<T> detail::Promise<T>::get_return_object() {
    return Task<T>(std::coroutine_handle<Promise<T>>::from_promise(*this));
}

inline Task<void> detail::Promise<void>::get_return_object() {
    return Task<void>(std::coroutine_handle<Promise<void>>::from_promise(*this));
}

/// `co_await sleepFor(d)`: true after `d`; false, without waiting on, when the task is or gets cancelled.
class sleepFor {
public:
    explicit sleepFor(Seconds duration) : duration_(duration) {}

    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> self) {
        const detail::TaskContext& context = self.promise().context;
        stop_ = context.stop;
        if (stop_.stop_requested()) return false;
        resumption_ = detail::Resumption(self);
        timer_ = context.executor->after(duration_, resumption_.job());
        wake_.emplace(stop_, Wake{this, context.executor});
        return true;
    }
    bool await_resume() const { return !stop_.stop_requested(); }

private:
    struct Wake {
        sleepFor* sleep;
        MainExecutor* executor;
        void operator()() const { executor->post(sleep->resumption_.job()); }
    };

    Seconds duration_;
    std::stop_token stop_;
    detail::Resumption resumption_;
    Timer timer_;
    std::optional<std::stop_callback<Wake>> wake_;
};

/// `co_await isCancelled()`: whether the awaiting task was asked to stop.
class isCancelled {
public:
    bool await_ready() const noexcept { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> self) {
        answer_ = self.promise().context.stop.stop_requested();
        return false;
    }
    bool await_resume() const { return answer_; }

private:
    bool answer_ = false;
};

/// One answer from a callback interface: hand out `resolver()`, then await the completion.
///
/// The resolver may be called from any thread, once; the answer arrives through the executor. An answer that comes
/// after the completion is gone is dropped.
template <class T>
class Completion {
public:
    explicit Completion(MainExecutor& executor) : executor_(executor), state_(std::make_shared<State>()) {}

    auto resolver() {
        return [executor = &executor_, weak = std::weak_ptr(state_)](T value) {
            executor->post([weak, value = std::move(value)]() mutable {
                const auto state = weak.lock();
                if (!state || state->value) return;
                state->value.emplace(std::move(value));
                if (state->waiting) std::exchange(state->waiting, nullptr).resume();
            });
        };
    }

    bool await_ready() const { return state_->value.has_value(); }
    void await_suspend(std::coroutine_handle<> self) { state_->waiting = self; }
    T await_resume() { return std::move(*state_->value); }

private:
    struct State {
        std::optional<T> value;
        std::coroutine_handle<> waiting;
    };

    MainExecutor& executor_;
    std::shared_ptr<State> state_;
};

class TaskScope;

/// A handle on a running root task. Copies are the same task; dropping them all does not stop it.
class CancellableTask {
public:
    /// Asks the task to stop. What it awaits decides how soon it ends.
    void cancel() { state_->stop.request_stop(); }
    bool isFinished() const { return state_->isFinished; }

    /// `co_await task.finished()`: returns once the task has ended.
    auto finished() const { return Finished{state_, {}}; }

private:
    friend TaskScope;

    struct State {
        std::stop_source stop;
        std::coroutine_handle<> root;
        bool isFinished = false;
        std::vector<Job> waiters;
    };

    struct Finished {
        std::shared_ptr<State> state;
        detail::Resumption resumption;
        bool await_ready() const { return state->isFinished; }
        void await_suspend(std::coroutine_handle<> self) {
            resumption = detail::Resumption(self);
            state->waiters.push_back(resumption.job());
        }
        void await_resume() const {}
    };

    explicit CancellableTask(std::shared_ptr<State> state) : state_(std::move(state)) {}

    std::shared_ptr<State> state_;
};

/// Owns root tasks. Make it the last member of a manager: destroying it destroys its coroutines where they stand,
/// before anything that they use. Never destroyed from inside one of them.
class TaskScope {
public:
    explicit TaskScope(MainExecutor& executor) : executor_(executor) {}
    TaskScope(const TaskScope&) = delete;
    TaskScope& operator=(const TaskScope&) = delete;
    ~TaskScope() {
        for (const auto& state : std::exchange(running_, {})) {
            if (state->root) std::exchange(state->root, nullptr).destroy();
        }
    }

    /// Runs `task` from the executor's next turn on.
    CancellableTask spawn(Task<> task) {
        auto state = std::make_shared<State>();
        state->root = run(*this, std::move(task), state).handle;
        running_.push_back(state);
        executor_.post([weak = std::weak_ptr(state)] {
            if (const auto alive = weak.lock(); alive && alive->root) alive->root.resume();
        });
        return CancellableTask(std::move(state));
    }

private:
    using State = CancellableTask::State;

    struct Root {
        struct promise_type {
            detail::TaskContext context;

            promise_type(TaskScope& scope, const Task<>&, const std::shared_ptr<State>& state)
                : context{&scope.executor_, state->stop.get_token()} {}
            Root get_return_object() { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }
            std::suspend_always initial_suspend() const noexcept { return {}; }
            std::suspend_never final_suspend() const noexcept { return {}; }
            void return_void() const noexcept {}
            [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
        };
        std::coroutine_handle<promise_type> handle;
    };

    static Root run(TaskScope& scope, Task<> task, std::shared_ptr<State> state) {
        co_await task;
        scope.finish(*state);
    }

    void finish(State& state) {
        state.root = nullptr;
        state.isFinished = true;
        for (Job& waiter : state.waiters) executor_.post(std::move(waiter));
        state.waiters.clear();
        std::erase_if(running_, [&](const auto& other) { return other.get() == &state; });
    }

    MainExecutor& executor_;
    std::vector<std::shared_ptr<State>> running_;
};

}  // namespace pedvar
