/// A field that screens watch.
#pragma once

#include "core/event.h"

#include <utility>

namespace pedvar {

/// A value whose changes are told. Assigning an equal value tells nobody.
template <class T>
class Published {
public:
    Published() = default;
    explicit Published(T value) : value_(std::move(value)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    Published& operator=(T value) {
        if (value_ == value) return *this;
        value_ = std::move(value);
        changed_.notify(value_);
        return *this;
    }

    const T& value() const { return value_; }
    operator const T&() const { return value_; }
    const T* operator->() const { return &value_; }
    const T& operator*() const { return value_; }

    [[nodiscard]] Subscription observe(typename Event<T>::Observer observer) {
        return changed_.observe(std::move(observer));
    }

private:
    T value_{};
    Event<T> changed_;
};

}  // namespace pedvar
