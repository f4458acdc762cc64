#include "Tools/aurisk/InputLines.h"

#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/Dispatch.h"

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <array>
#include <cerrno>
#include <optional>

#include <sys/epoll.h>
#include <unistd.h>

namespace aurisk::tool {

namespace {

/// Asio would make the descriptor itself non-blocking, and with it the shell's terminal and the tool's own output. So
/// it is given one that becomes readable when the other does.
class Reading final : public InputLines {
public:
    Reading(int descriptor, Handlers handlers)
        : _descriptor(descriptor)
        , _handlers(std::move(handlers))
    {
        const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
        epoll_event readable{ .events = EPOLLIN, .data = {} };
        if (::epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &readable) == 0)
            _readiness.emplace(mainQueueContext(), epoll);
        else
            ::close(epoll); // what cannot be waited for is a file, which never blocks
    }

    void readSoon()
    {
        const auto read = [weak = weak_from_this()](const asio::error_code& cancelled) {
            if (const auto self = std::static_pointer_cast<Reading>(weak.lock()); self && !cancelled)
                self->readOnce();
        };
        if (_readiness)
            _readiness->async_wait(asio::posix::stream_descriptor::wait_read, read);
        else
            DispatchQueue::main().async([read] { read({}); });
    }

private:
    void readOnce()
    {
        std::array<char, 4096> bytes{};
        const auto count = ::read(_descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            return readSoon();
        if (count < 0 && errno == EIO && isInBackground())
            return readLater();
        if (count <= 0)
            return end();
        _text.append(bytes.data(), std::size_t(count));
        const auto alive = shared_from_this(); // a line may be the end of this
        for (auto end = _text.find('\n'); end != std::string::npos; end = _text.find('\n')) {
            const auto line = _text.substr(0, end);
            _text.erase(0, end + 1);
            _handlers.line(line);
        }
        readSoon();
    }

    /// Whatever is typed is for somebody else, until the shell brings this to the foreground.
    bool isInBackground() const
    {
        const auto foreground = ::tcgetpgrp(_descriptor);
        return foreground != -1 && foreground != ::getpgrp();
    }

    void readLater()
    {
        DispatchQueue::main().asyncAfter(Seconds(1), [weak = weak_from_this()] {
            if (const auto self = std::static_pointer_cast<Reading>(weak.lock()))
                self->readSoon();
        });
    }

    void end()
    {
        if (!_text.empty())
            _handlers.line(std::exchange(_text, {}));
        _handlers.ended();
    }

    int _descriptor;
    Handlers _handlers;
    std::optional<asio::posix::stream_descriptor> _readiness;
    std::string _text;
};

} // namespace

std::shared_ptr<InputLines> InputLines::start(int descriptor, Handlers handlers)
{
    auto reading = std::make_shared<Reading>(descriptor, std::move(handlers));
    reading->readSoon();
    return reading;
}

} // namespace aurisk::tool
