#include "Tools/aurisk/Codec.h"

#include "Tools/aurisk/CodecOperations.h"

#include <fmt/core.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace aurisk::codec {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";

template <typename J> std::string written(const J& value)
{
    return value.dump(-1, ' ', false, J::error_handler_t::replace);
}

Json parse(std::string_view line)
{
    if (const auto zero = line.find('\0'); zero != line.npos)
        throw Unusable(fmt::format("no JSON: byte {} is zero", zero + 1)); // where the parser would take it for the end
    try {
        return Json::parse(line);
    } catch (const Json::parse_error& fault) {
        throw Unusable(fmt::format("no JSON from byte {} on", fault.byte));
    } catch (const Json::out_of_range&) {
        throw Unusable("a number that is too large to be held");
    }
}

/// The beginning of every answer to `line`: the identifier, where it has one.
std::string opening(const Json& line)
{
    constexpr int deepest = 500;
    const auto id = line.is_object() ? line.find("id") : line.end();
    if (id == line.end())
        return "{";
    if (json::isDeeper(*id, deepest))
        throw Unusable(Place{ "id" }, fmt::format("nested deeper than {} levels", deepest));
    return "{\"id\":" + written(*id) + ',';
}

Answer perform(const Members& line)
{
    const auto name = line.get<std::string>("op");
    if (const auto* found = operation(name))
        return found->perform(line);
    throw Unusable(Place{ "op" }, shown(name) + " is the name of no operation");
}

/// After a read or a write that failed: whether to try again, once `descriptor` is ready.
bool isWorthAnotherTry(int descriptor, short event)
{
    if (errno == EINTR)
        return true;
    pollfd ready{ descriptor, event, 0 };
    return (errno == EAGAIN || errno == EWOULDBLOCK) && (::poll(&ready, 1, -1) >= 0 || errno == EINTR);
}

/// False where nobody takes it any more.
bool writeAll(int output, std::string_view text)
{
    while (!text.empty()) {
        const auto count = ::write(output, text.data(), text.size());
        if (count >= 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (!isWorthAnotherTry(output, POLLOUT))
            return false;
    }
    return true;
}

void appendAnswer(std::string& answers, std::string_view line)
{
    if (const auto text = answer(line); !text.empty())
        answers += text + '\n';
}

} // namespace

std::string answer(std::string_view line)
{
    if (line.find_first_not_of(blanks) == line.npos)
        return {};
    std::string text = "{";
    const auto close = [&](std::string_view outcome, const auto& value) {
        return text + '"' + std::string(outcome) + "\":" + written(value) + '}';
    };
    try {
        const auto json = parse(line);
        text = opening(json);
        const ScopedContainment containment;
        return close("ok", perform(Members(json)));
    } catch (const PreconditionStop& stop) {
        return close("stop", Answer(stop.what()));
    } catch (const std::exception& fault) {
        return close("error", Answer(fault.what()));
    }
}

int runCodec(int input, int output)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that has enough is seen by the write that fails
    std::array<char, 1 << 16> chunk;
    std::string begun, answers; // a line whose end is yet to come; what has not been written yet
    for (;;) {
        const auto count = ::read(input, chunk.data(), chunk.size());
        if (count < 0 && isWorthAnotherTry(input, POLLIN))
            continue;
        if (count < 0) {
            fmt::print(stderr, "aurisk codec: the input cannot be read: {}\n", std::strerror(errno));
            return 1;
        }
        if (count == 0)
            break;
        std::string_view fresh(chunk.data(), static_cast<std::size_t>(count));
        for (auto end = fresh.find('\n'); end != fresh.npos; end = fresh.find('\n')) {
            appendAnswer(answers, begun.append(fresh.substr(0, end)));
            begun.clear();
            fresh.remove_prefix(end + 1);
        }
        begun += fresh;
        // What one read brings is answered by one write, so a pause of the input never holds an answer back.
        if (!writeAll(output, std::exchange(answers, {})))
            return 0;
    }
    appendAnswer(answers, begun);
    writeAll(output, answers);
    return 0;
}

} // namespace aurisk::codec
