#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

namespace aurisk {

/// A first-in, first-out container.
template <typename T> class Queue {
public:
    void enqueue(T element) { _elements.push_back(std::move(element)); }

    /// Removes the first element; none when empty.
    std::optional<T> dequeue()
    {
        if (_elements.empty())
            return std::nullopt;
        std::optional<T> first = std::move(_elements.front());
        _elements.pop_front();
        return first;
    }

    /// The first element, which stays; none when empty.
    std::optional<T> front() const { return isEmpty() ? std::nullopt : std::optional<T>(_elements.front()); }

    bool isEmpty() const { return _elements.empty(); }
    std::size_t count() const { return _elements.size(); }

private:
    std::deque<T> _elements;
};

} // namespace aurisk
