#pragma once

#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace aurisk {

enum class LogLevel : int {
    debug = 0,
    verbose = 1,
    info = 5,
    assert = 10,
    warning = 15,
    error = 20,
};

template <>
inline constexpr auto enumCases<LogLevel> = std::to_array<EnumCase<LogLevel>>({
    { LogLevel::debug, "debug", "D" },
    { LogLevel::verbose, "verbose", "V" },
    { LogLevel::info, "info", "I" },
    { LogLevel::assert, "assert", "A" },
    { LogLevel::warning, "warning", "W" },
    { LogLevel::error, "error", "E" },
});

/// One letter: "D", "V", "I", "A", "W" or "E".
constexpr std::string_view name(LogLevel level) { return enumCase(level)->label; }

/// A host's own logger. Called on whichever thread logs; it must not log itself.
class LoggerDelegate {
public:
    virtual ~LoggerDelegate() = default;
    virtual void logWith(LogLevel level, const std::string& message) = 0;
};

/// One of the values that a log record lists: a text, a number or a Boolean.
class LogItem {
public:
    LogItem(std::string_view text)
        : _value(text)
    {
    }
    LogItem(const std::string& text)
        : _value(std::string_view(text))
    {
    }
    LogItem(const char* text)
        : _value(std::string_view(text))
    {
    }
    LogItem(bool value)
        : _value(value)
    {
    }
    LogItem(double value)
        : _value(value)
    {
    }
    template <std::integral Number> LogItem(Number value)
    {
        if constexpr (std::is_signed_v<Number>)
            _value = static_cast<std::int64_t>(value);
        else
            _value = static_cast<std::uint64_t>(value);
    }

    /// As it stands in a list: a text in double quotes with its control characters escaped, a number as it is.
    std::string listed() const;

    /// The value alone, without quotes.
    std::string bare() const;

private:
    std::variant<std::string_view, bool, double, std::int64_t, std::uint64_t> _value;
};

/// The library's log: time-stamped records on standard output, off until somebody switches it on.
///
///     [2026-03-01 08:15:30.042] ["[X1-L] Connecting to <AuriskA16Accessory … \"X1-L\">\n"]
///
/// Everything here may be called from any thread.
class AuriskLog {
public:
    static bool enable();
    static void setEnable(bool enable);

    /// Writes one record: the local time, then all `items` as a list, then `terminator`. The list is one printed item,
    /// so `separator`, which stands between printed items, does not show.
    static void log(
        std::initializer_list<LogItem> items, std::string_view separator = " ", std::string_view terminator = "\n");
    static void log(std::string_view message) { log({ LogItem(message) }); }

    /// Logs "Error <code>: <description>".
    static void e(const BluetoothError& error);

    /// The version of the protocol kit that this library speaks for.
    static std::string sdkVersion();

    /// The instance that carries the host's logger, which gets every record's bare text too while the log is on.
    static AuriskLog& shared();

    std::shared_ptr<LoggerDelegate> logger() const;
    void setLogger(std::weak_ptr<LoggerDelegate> logger);

private:
    std::weak_ptr<LoggerDelegate> _logger;
};

/// Writes `line` and a line feed to standard output in one piece, whether the log is on or not.
void printLine(std::string_view line);

} // namespace aurisk
