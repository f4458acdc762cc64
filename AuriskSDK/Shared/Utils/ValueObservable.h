#pragma once

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Disposable.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace aurisk {

template <typename T> class AuriskValueObservable;

/// One registration with an observable. It and the observable hold each other until `dispose()`.
template <typename T>
class AuriskValueObserver : public AuriskDisposable, public std::enable_shared_from_this<AuriskValueObserver<T>> {
public:
    AuriskValueObserver(std::shared_ptr<AuriskValueObservable<T>> observable, std::function<void(T)> action)
        : _observable(std::move(observable))
        , _action(std::move(action))
    {
    }

    virtual void notify(const T& value)
    {
        if (_action)
            _action(value);
    }

    /// The action is not called any more for values set from now on.
    void dispose() override
    {
        if (_observable)
            _observable->remove(this->shared_from_this());
    }

private:
    std::shared_ptr<AuriskValueObservable<T>> _observable;
    std::function<void(T)> _action;
};

/// A registration that ends itself after its first call.
template <typename T> class AuriskSingleValueObserver : public AuriskValueObserver<T> {
public:
    using AuriskValueObserver<T>::AuriskValueObserver;

    void notify(const T& value) override
    {
        AuriskValueObserver<T>::notify(value);
        this->dispose();
    }
};

/// A value that tells others when it is set. Setting may happen on any thread that has the box to itself; actions run
/// on the main queue, each with the value that the box holds by then, so two quick settings may deliver the later value
/// twice.
template <typename T> class AuriskValueObservable : public std::enable_shared_from_this<AuriskValueObservable<T>> {
    struct Key {
        explicit Key() = default;
    };

public:
    static std::shared_ptr<AuriskValueObservable> create(T value)
    {
        return std::make_shared<AuriskValueObservable>(Key{}, std::move(value));
    }
    AuriskValueObservable(Key, T value)
        : _value(std::move(value))
    {
    }

    const T& value() const { return _value; }
    void setValue(T value) { set(std::move(value), true); }

    void set(T value, bool notify)
    {
        _value = std::move(value);
        if (notify)
            notifyAll();
    }

    /// Calls `action` at every setting from now on, until the result is disposed of. Not called for the value as it
    /// stands.
    std::shared_ptr<AuriskDisposable> observe(std::function<void(T)> action)
    {
        return add<AuriskValueObserver<T>>(std::move(action));
    }

    /// Calls `action` for the next setting, and for those that follow before that call has run.
    void observeOnce(std::function<void(T)> action) { add<AuriskSingleValueObserver<T>>(std::move(action)); }

    void notifyAll()
    {
        printLine("Observers for value: " + std::to_string(_observers.size()));
        for (std::size_t i = 0; i < _observers.size(); ++i)
            notify(_observers[i]);
    }

private:
    friend AuriskValueObserver<T>;

    template <typename Observer> std::shared_ptr<Observer> add(std::function<void(T)> action)
    {
        auto observer = std::make_shared<Observer>(this->shared_from_this(), std::move(action));
        _observers.push_back(observer);
        return observer;
    }

    void notify(const std::shared_ptr<AuriskValueObserver<T>>& observer)
    {
        DispatchQueue::main().async([self = this->shared_from_this(), observer] { observer->notify(self->_value); });
    }

    void remove(const std::shared_ptr<AuriskValueObserver<T>>& observer) { std::erase(_observers, observer); }

    std::vector<std::shared_ptr<AuriskValueObserver<T>>> _observers;
    T _value;
};

} // namespace aurisk
