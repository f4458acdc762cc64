#include "AuriskSDK/Platform/BlueZ/SystemBus.h"

#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/BlueZ/BusMessage.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <systemd/sd-bus.h>

#include <cstring>

#include <fcntl.h>
#include <poll.h>

namespace aurisk::bluez {

namespace {

struct Unref {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, Unref>;
using Message = std::unique_ptr<sd_bus_message, Unref>;

constexpr int mostStepsInATurn = 64; ///< then timers and descriptors have theirs

std::string textOr(const char* text, const char* otherwise = "") { return text ? text : otherwise; }

BusError systemError(int negativeNumber)
{
    const int number = -negativeNumber;
    const bool isDenied = number == EACCES || number == EPERM;
    return { isDenied ? SD_BUS_ERROR_ACCESS_DENIED : SD_BUS_ERROR_DISCONNECTED, std::strerror(number) };
}

std::uint64_t microseconds(Seconds span)
{
    return std::uint64_t(std::chrono::duration_cast<std::chrono::microseconds>(countable(span)).count());
}

} // namespace

struct SystemBus::Library {
    explicit Library(SystemBus& owner)
        : self(owner)
        , timer(mainQueueContext())
        , descriptor(mainQueueContext())
    {
    }

    int connect()
    {
        sd_bus* opened = nullptr;
        if (const int result = sd_bus_open_system(&opened); result < 0)
            return result;
        bus.reset(opened);
        // The loop closes what it is given. A program that the application starts must not inherit it: the connection,
        // and whatever the daemon does for it, would last as long as that program.
        const int own = fcntl(sd_bus_get_fd(opened), F_DUPFD_CLOEXEC, 0);
        if (own < 0)
            return -errno;
        asio::error_code failed;
        descriptor.assign(own, failed);
        return failed ? -failed.value() : 0;
    }

    // The loop. Whatever is waited for is asked anew after each turn and after each call of ours, which may have
    // changed it.

    void pumpSoon()
    {
        if (std::exchange(isPumpPosted, true))
            return;
        asio::post(mainQueueContext(), [weak = self.weak_from_this()] {
            if (const auto alive = weak.lock(); alive && alive->_library)
                alive->_library->pump();
        });
    }

    /// To ask for more after a message would be a system call, mostly in vain: the loop knows of more by itself.
    void pump()
    {
        isPumpPosted = false;
        int result = 1;
        for (int step = 0; step < mostStepsInATurn && result > 0 && told.empty(); ++step)
            result = sd_bus_process(bus.get(), nullptr);
        if (result < 0)
            self.fail(systemError(result));
        else
            wait(); // before anything is told, by which the loop may be run
        auto& owner = self; // this has gone where whoever is told runs the loop, which tells of a loss
        for (const auto& tell : std::exchange(told, {}))
            if (owner._library)
                tell(owner);
    }

    void wait()
    {
        const int events = sd_bus_get_events(bus.get());
        if (events < 0)
            return self.fail(systemError(events));
        using Descriptor = asio::posix::stream_descriptor;
        if (events & POLLIN)
            wait(Descriptor::wait_read, isWaitingToRead);
        if (events & POLLOUT)
            wait(Descriptor::wait_write, isWaitingToWrite);
        waitUntilDue();
    }

    void wait(asio::posix::stream_descriptor::wait_type what, bool& isWaiting)
    {
        if (std::exchange(isWaiting, true))
            return;
        descriptor.async_wait(what, [weak = self.weak_from_this(), &isWaiting](const asio::error_code& cancelled) {
            const auto alive = weak.lock();
            if (!alive || !alive->_library || cancelled)
                return;
            isWaiting = false;
            alive->_library->pump();
        });
    }

    /// The library names the moment, counted as the steady clock counts, at which it has something to do at the latest.
    /// A timer that ends before that stays: most moments are limits of calls, which are answered long before.
    void waitUntilDue()
    {
        std::uint64_t due = 0;
        if (sd_bus_get_timeout(bus.get(), &due) < 0)
            return;
        if (due == 0)
            return pumpSoon();
        if (due >= timerIsDue)
            return;
        timerIsDue = due;
        timer.expires_at(asio::steady_timer::time_point(std::chrono::microseconds(due)));
        timer.async_wait([weak = self.weak_from_this()](const asio::error_code& cancelled) {
            const auto alive = weak.lock();
            if (!alive || !alive->_library || cancelled)
                return;
            alive->_library->timerIsDue = UINT64_MAX;
            alive->_library->pump();
        });
    }

    // What the library calls while it processes messages

    static int didAnswer(sd_bus_message* reply, void* library, sd_bus_error*)
    {
        static_cast<Library*>(library)->deliver(reply);
        return 0;
    }

    void deliver(sd_bus_message* message)
    {
        std::uint64_t number = 0;
        sd_bus_message_get_reply_cookie(message, &number);
        const auto waiting = self._answers.extract(number);
        if (waiting.empty())
            return;
        BusReply reply;
        if (const auto* error = sd_bus_message_get_error(message))
            reply.error = BusError{ textOr(error->name, SD_BUS_ERROR_FAILED), textOr(error->message) };
        else
            reply.values = readValues(message);
        told.push_back(
            [answered = std::move(waiting.mapped()), reply = std::move(reply)](SystemBus&) { answered(reply); });
    }

    static int didHear(sd_bus_message* message, void* library, sd_bus_error*)
    {
        BusSignal signal{ textOr(sd_bus_message_get_path(message)), textOr(sd_bus_message_get_interface(message)),
            textOr(sd_bus_message_get_member(message)), readValues(message) };
        static_cast<Library*>(library)->told.push_back([signal = std::move(signal)](SystemBus& owner) {
            if (owner._handlers.heard)
                owner._handlers.heard(signal);
        });
        return 0;
    }

    /// The daemon of the bus refuses a rule only where it cannot be read, or where there are too many.
    static int didInstall(sd_bus_message* reply, void*, sd_bus_error*)
    {
        if (const auto* error = sd_bus_message_get_error(reply))
            AuriskLog::log("the system bus does not tell of signals: " + textOr(error->message));
        return 0;
    }

    static int wasCalled(sd_bus_message* message, void* library, sd_bus_error*)
    {
        BusRequest request{ textOr(sd_bus_message_get_path(message)), textOr(sd_bus_message_get_interface(message)),
            textOr(sd_bus_message_get_member(message)), readValues(message), { sd_bus_message_ref(message), Unref() } };
        static_cast<Library*>(library)->told.push_back(
            [request = std::move(request)](SystemBus& owner) { owner._library->handOver(request); });
        return 1;
    }

    void handOver(const BusRequest& request)
    {
        for (const auto& [path, handler] : self._served)
            if (handler && (request.path == path || request.path.starts_with(path + "/"))) {
                const auto called = handler; // it may end the serving
                return called(request);
            }
        self.refuse(request, { SD_BUS_ERROR_UNKNOWN_OBJECT, "There is no such object." });
    }

    // Messages of ours

    Message call(const BusCall& call) const
    {
        sd_bus_message* message = nullptr;
        const int result = sd_bus_message_new_method_call(bus.get(), &message, call.destination.c_str(),
            call.path.c_str(), call.interface.c_str(), call.member.c_str());
        Message made(message);
        if (result < 0 || !appendValues(message, call.arguments))
            return nullptr;
        sd_bus_message_set_auto_start(message, 0);
        return made;
    }

    SystemBus& self;
    Bus bus;
    asio::steady_timer timer;
    asio::posix::stream_descriptor descriptor;
    std::vector<std::function<void(SystemBus&)>> told; ///< what is to be told of the message that has just come
    std::uint64_t timerIsDue = UINT64_MAX;
    bool isPumpPosted = false;
    bool isWaitingToRead = false;
    bool isWaitingToWrite = false;
};

std::shared_ptr<SystemBus> SystemBus::open(Handlers handlers)
{
    auto bus = std::make_shared<SystemBus>(Key(), std::move(handlers));
    bus->_library = std::make_unique<Library>(*bus);
    if (const int result = bus->_library->connect(); result < 0)
        bus->fail(systemError(result));
    else
        bus->_library->pumpSoon();
    return bus;
}

SystemBus::SystemBus(Key, Handlers handlers)
    : _handlers(std::move(handlers))
{
}

SystemBus::~SystemBus() = default;

void SystemBus::call(BusCall call, Seconds limit, Answer answered)
{
    const auto failSoon = [this](Answer waiting, BusError error) {
        if (waiting)
            DispatchQueue::main().async(
                [waiting = std::move(waiting), error = std::move(error), weak = weak_from_this()] {
                    if (!weak.expired())
                        waiting({ .error = error });
                });
    };
    if (!_library || _isLost)
        return failSoon(std::move(answered), { SD_BUS_ERROR_DISCONNECTED, "There is no system bus." });
    const auto message = _library->call(call);
    if (!message)
        return failSoon(
            std::move(answered), { SD_BUS_ERROR_INVALID_ARGS, "The call of " + call.member + " cannot be made." });

    int result = 0;
    if (!answered) {
        sd_bus_message_set_expect_reply(message.get(), 0);
        result = sd_bus_send(_library->bus.get(), message.get(), nullptr);
    } else {
        result = sd_bus_call_async(
            _library->bus.get(), nullptr, message.get(), &Library::didAnswer, _library.get(), microseconds(limit));
        std::uint64_t number = 0;
        if (result >= 0 && sd_bus_message_get_cookie(message.get(), &number) >= 0)
            _answers.emplace(number, std::move(answered));
    }
    if (result < 0)
        return failSoon(std::move(answered), systemError(result));
    _library->wait();
}

void SystemBus::hear(const std::string& rule)
{
    if (!_library)
        return;
    sd_bus_add_match_async(
        _library->bus.get(), nullptr, rule.c_str(), &Library::didHear, &Library::didInstall, _library.get());
    _library->wait();
}

void SystemBus::serve(const std::string& path, std::function<void(const BusRequest&)> called)
{
    const bool isNew = _served.insert_or_assign(path, std::move(called)).second;
    if (_library && isNew)
        sd_bus_add_fallback(_library->bus.get(), nullptr, path.c_str(), &Library::wasCalled, _library.get());
}

void SystemBus::stopServing(const std::string& path)
{
    if (const auto served = _served.find(path); served != _served.end())
        served->second = nullptr; // the library cannot be told while it calls
}

void SystemBus::answer(const BusRequest& request, const BusValues& values)
{
    sd_bus_message* reply = nullptr;
    if (!_library || sd_bus_message_new_method_return(request.call.get(), &reply) < 0)
        return;
    const Message made(reply);
    if (!appendValues(reply, values))
        return refuse(request, { SD_BUS_ERROR_FAILED, "The answer cannot be made." });
    sd_bus_send(_library->bus.get(), reply, nullptr);
    _library->wait();
}

void SystemBus::refuse(const BusRequest& request, const BusError& error)
{
    if (!_library)
        return;
    sd_bus_reply_method_errorf(request.call.get(), error.name.c_str(), "%s", error.message.c_str());
    _library->wait();
}

void SystemBus::emit(const BusSignal& signal)
{
    sd_bus_message* message = nullptr;
    if (!_library
        || sd_bus_message_new_signal(
               _library->bus.get(), &message, signal.path.c_str(), signal.interface.c_str(), signal.member.c_str())
            < 0)
        return;
    const Message made(message);
    if (appendValues(message, signal.values))
        sd_bus_send(_library->bus.get(), message, nullptr);
    _library->wait();
}

/// Every call is answered, the last of them before the loss is told.
void SystemBus::fail(const BusError& error)
{
    if (std::exchange(_isLost, true))
        return;
    DispatchQueue::main().async([weak = weak_from_this(), error] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->_library.reset();
        for (const auto& [number, answered] : std::exchange(self->_answers, {}))
            answered({ .error = error });
        if (const auto lost = self->_handlers.lost)
            lost(error);
    });
}

} // namespace aurisk::bluez
