#include "AuriskSDK/Shared/Utils/AuriskLog.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <ctime>
#include <mutex>

#include <unistd.h>

namespace aurisk {

namespace {

std::atomic<bool> isEnabled = false;
std::mutex loggerMutex; // the logger is installed on one thread and called on others

void writeToStandardOutput(std::string_view text)
{
    while (!text.empty()) {
        const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return; // nobody reads it; a log has nowhere to complain
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        switch (character) {
        case '\\': result += "\\\\"; break;
        case '"': result += "\\\""; break;
        case '\n': result += "\\n"; break;
        case '\r': result += "\\r"; break;
        case '\t': result += "\\t"; break;
        case '\0': result += "\\0"; break;
        default:
            if (byte < 0x20 || byte == 0x7F)
                result += fmt::format("\\u{{{:02X}}}", byte);
            else
                result += character;
        }
    }
    return result + '"';
}

std::string plain(double value)
{
    auto text = fmt::format("{}", value);
    if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

/// yyyy-MM-dd HH:mm:ss.SSS, local time.
std::string timeStamp()
{
    const auto now = std::chrono::system_clock::now();
    const auto seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds
        = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    return fmt::format("{:%Y-%m-%d %H:%M:%S}.{:03}", local, milliseconds);
}

} // namespace

std::string LogItem::listed() const
{
    if (const auto* text = std::get_if<std::string_view>(&_value))
        return quoted(*text);
    return bare();
}

std::string LogItem::bare() const
{
    return std::visit(
        [](const auto& value) {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, double>)
                return plain(value);
            else
                return fmt::format("{}", value);
        },
        _value);
}

bool AuriskLog::enable() { return isEnabled; }

void AuriskLog::setEnable(bool enable) { isEnabled = enable; }

void AuriskLog::log(std::initializer_list<LogItem> items, std::string_view, std::string_view terminator)
{
    if (!isEnabled)
        return;
    std::string list, message;
    for (const auto& item : items) {
        list += (list.empty() ? "" : ", ") + item.listed();
        message += (message.empty() ? "" : " ") + item.bare();
    }
    writeToStandardOutput(fmt::format("[{}] [{}]{}", timeStamp(), list, terminator));
    if (const auto logger = shared().logger())
        logger->logWith(LogLevel::debug, message);
}

void AuriskLog::e(const BluetoothError& error)
{
    log(fmt::format("Error {}: {}", error.code, error.localizedDescription));
}

std::string AuriskLog::sdkVersion() { return "2025_05_09_V1.3"; }

AuriskLog& AuriskLog::shared()
{
    static auto* const instance = new AuriskLog;
    return *instance;
}

std::shared_ptr<LoggerDelegate> AuriskLog::logger() const
{
    const std::lock_guard lock(loggerMutex);
    return _logger.lock();
}

void AuriskLog::setLogger(std::weak_ptr<LoggerDelegate> logger)
{
    const std::lock_guard lock(loggerMutex);
    _logger = std::move(logger);
}

void printLine(std::string_view line) { writeToStandardOutput(fmt::format("{}\n", line)); }

} // namespace aurisk
