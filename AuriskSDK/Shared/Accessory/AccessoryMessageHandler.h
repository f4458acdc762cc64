#pragma once

#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/Queue.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace aurisk {

/// Sends requests of type T one at a time and gives each its result of type R. It knows no bytes: the service that owns
/// it sends (`requestAction`) and feeds in what comes back (`excuted`). Results carry nothing that names their request,
/// so a result always belongs to the request in flight.
///
/// The handler does not hear of disconnections: waiting requests are still sent in turn, and end by their time-outs.
/// Scheduled steps hold the handler, so requests complete even after its service has gone. Both T and R need a
/// `description(value)`. Called on the dispatch queue alone, and calls back there; what it calls must not throw.
template <typename T, typename R>
class AccessoryMessageHandler : public std::enable_shared_from_this<AccessoryMessageHandler<T, R>> {
    struct Key {
        explicit Key() = default;
    };

public:
    using RequestAction = std::function<void(const T&)>;
    using ResultAction = std::function<void(const std::optional<R>&)>;

    /// Before each sending the handler waits this long, so that writes to a device keep their distance.
    static constexpr Seconds pauseBeforeSending{ 0.1 };

    static std::shared_ptr<AccessoryMessageHandler> create(DispatchQueue& queue, RequestAction request)
    {
        return std::make_shared<AccessoryMessageHandler>(Key{}, queue, std::move(request));
    }
    AccessoryMessageHandler(Key, DispatchQueue& queue, RequestAction request)
        : _requestAction(std::move(request))
        , _dispatchQueue(queue)
    {
    }

    /// Whether a request is on its way: from the moment it is scheduled until its result is delivered.
    bool isExcuting() const { return _sending != nullptr; }

    /// Sends from now on; requests made earlier have waited for it.
    void launch()
    {
        _start = true;
        executeNext();
    }

    /// Begins with no further request until `launch`. One that is on its way is still sent, and completes.
    void pause() { _start = false; }

    /// Completes every waiting request, the one on the air included, with none, in order, on the queue.
    void abort()
    {
        auto aborted = std::exchange(_messageQueue, {});
        _sending = nullptr;
        _dispatchQueue.async([self = this->shared_from_this(), aborted]() mutable {
            while (const auto message = aborted.dequeue())
                self->complete(**message, std::nullopt);
        });
    }

    /// Enqueues a request. `complete` is called once: with its result, or with none when `timeOut` has passed since its
    /// sending without one. No time-out waits for ever.
    void excute(T value, std::optional<Seconds> timeOut, ResultAction complete)
    {
        _messageQueue.enqueue(std::make_shared<Message>(std::move(value), nextTime(), timeOut, std::move(complete)));
        executeNext();
    }

    /// The first request in the queue while one is on its way, else none. Inside a completion that is the next one
    /// already.
    std::optional<T> currentValue() const
    {
        const auto head = _messageQueue.front();
        return head && _sending ? std::optional<T>((*head)->value) : std::nullopt;
    }

    /// Delivers the result (none: a time-out) of the request in flight. False for a result that finds none in flight,
    /// or one that has its result already; that is dropped: late and duplicated replies never complete a request that
    /// is not on the air.
    bool excuted(std::optional<R> result)
    {
        if (!_sending || !_sending->isOnAir)
            return false;
        _sending->isOnAir = false;
        _dispatchQueue.async([self = this->shared_from_this(), message = _sending, result = std::move(result)] {
            self->deliver(message, result);
        });
        return true;
    }

private:
    struct Message {
        Message(T request, Seconds now, std::optional<Seconds> limit, ResultAction complete)
            : value(std::move(request))
            , time(now)
            , timeOut(limit)
            , resultAction(std::move(complete))
        {
        }
        T value;
        Seconds time; ///< of creation, then of sending: what ties a time-out to its sending
        std::optional<Seconds> timeOut;
        ResultAction resultAction;
        bool isOnAir = false; ///< sent, and no result yet
    };
    using MessageReference = std::shared_ptr<Message>;

    void executeNext()
    {
        const auto head = _messageQueue.front();
        if (_sending || !_start || !head)
            return;
        _sending = *head;
        _dispatchQueue.asyncAfter(
            pauseBeforeSending, [self = this->shared_from_this(), message = _sending] { self->send(message); });
    }

    void send(const MessageReference& message)
    {
        if (_sending != message) // aborted in the pause
            return;
        message->time = nextTime();
        message->isOnAir = true;
        _requestAction(message->value);
        log([&] { return "request: " + description(message->value); });
        if (message->timeOut)
            _dispatchQueue.asyncAfter(*message->timeOut,
                [self = this->shared_from_this(), sent = message->time] { self->checkTimeOut(sent); });
    }

    /// Sending times, not messages, are compared: a timer of an earlier sending finds another time at the head.
    void checkTimeOut(Seconds sent)
    {
        if (const auto head = _messageQueue.front(); head && (*head)->time == sent)
            excuted(std::nullopt);
    }

    void deliver(const MessageReference& message, const std::optional<R>& result)
    {
        if (_messageQueue.front() != message) // something else has completed it in the meantime
            return;
        _messageQueue.dequeue();
        complete(*message, result);
        if (_sending == message) // the completion may have aborted everything and begun anew
            _sending = nullptr;
        executeNext();
    }

    void complete(Message& message, const std::optional<R>& result)
    {
        log([&] { return "result: " + (result ? description(*result) : std::string("timeOut")); });
        if (const auto action = std::exchange(message.resultAction, nullptr))
            action(result);
    }

    /// Now, but always later than the last time given out, so that no two sendings compare equal.
    Seconds nextTime()
    {
        const auto later = std::nextafter(_lastTime.count(), std::numeric_limits<double>::infinity());
        return _lastTime = std::max(_dispatchQueue.now(), Seconds(later));
    }

    template <typename Text> void log(Text text) const
    {
        if (AuriskLog::enable())
            AuriskLog::log(std::string(tag) + " -- " + text());
    }

    static constexpr std::string_view tag = "AccessoryMessageHandler";

    Queue<MessageReference> _messageQueue; ///< its head is the one on its way, where there is one
    MessageReference _sending; ///< the one on its way: waiting out its pause, or on the air
    RequestAction _requestAction;
    bool _start = false;
    DispatchQueue& _dispatchQueue;
    Seconds _lastTime{ 0 };
};

} // namespace aurisk
