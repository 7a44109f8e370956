/// Telling observers that something happened.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace pedvar {

/// Keeps one observer registered; ends when destroyed.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> observer) : observer_(std::move(observer)) {}

    explicit operator bool() const { return observer_ != nullptr; }

private:
    std::shared_ptr<void> observer_;
};

/// Something that happens again and again. Observers are called in the order in which they registered; one that
/// registers while the others are told hears of the next time.
template <class... Arguments>
class Event {
public:
    using Observer = std::move_only_function<void(const Arguments&...)>;

    [[nodiscard]] Subscription observe(Observer observer) {
        auto held = std::make_shared<Observer>(std::move(observer));
        observers_.push_back(held);
        return Subscription(std::move(held));
    }

    void notify(const Arguments&... arguments) {
        std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
        const auto told = observers_;
        for (const auto& observer : told) {
            if (const auto alive = observer.lock()) (*alive)(arguments...);
        }
    }

private:
    std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace pedvar
