#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace fernhollow {

/// Keeps an observer registered; destroying it ends the observation.
class Observation {
public:
    Observation() = default;
    explicit Observation(std::shared_ptr<std::function<void()>> observer) : observer_(std::move(observer)) {}

private:
    std::shared_ptr<std::function<void()>> observer_;
};

/// A list of observers, which it calls before something changes. One thread only.
///
/// While it is being called, an observer may end its own or another observation, or begin a new one.
class Observable {
public:
    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    [[nodiscard]] Observation observe(std::function<void()> willChange) {
        if (!announcing_) {
            std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
        }
        auto observer = std::make_shared<std::function<void()>>(std::move(willChange));
        observers_.push_back(observer);
        return Observation(std::move(observer));
    }

    void announceChange() const {
        const bool nested = std::exchange(announcing_, true);
        for (std::size_t i = 0; i < observers_.size(); ++i) { // by index: observers may be added meanwhile
            if (const auto observer = observers_[i].lock()) {
                (*observer)();
            }
        }
        announcing_ = nested;
    }

private:
    std::vector<std::weak_ptr<std::function<void()>>> observers_;
    mutable bool announcing_ = false;
};

/// A field that calls its owner's observers and its own just before each change. Setting an equal
/// value is not a change.
template<class T>
class Published : public Observable {
public:
    explicit Published(Observable& owner, T initial = {}) : owner_(owner), value_(std::move(initial)) {}

    const T& get() const { return value_; }

    void set(T value) {
        if (value == value_) {
            return;
        }
        announce();
        value_ = std::move(value);
    }

    /// Changes the value in place, for values that are expensive to copy. It always counts as a change.
    template<class Change>
    void change(Change change) {
        announce();
        change(value_);
    }

private:
    void announce() const {
        owner_.announceChange();
        announceChange();
    }

    Observable& owner_;
    T value_;
};

} // namespace fernhollow
