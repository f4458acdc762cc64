#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRawData.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3Request.h"
#include "AuriskSDK/Platform/Dispatch.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// What people type, as values. Each function throws a UsageError that names the place, the text and the rule.

namespace aurisk::tool {

/// Arguments that cannot be used: one sentence, without a full stop.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Range {
    int low = 0;
    int high = 0;
};

constexpr Range volumes{ 0, 15 }; ///< four bits of the request
constexpr Range programs{ 0, 14 }; ///< counted from 1 in four bits; which of them there are, the device knows
constexpr Range blockPrograms{ 0, 4 }; ///< those whose settings can be asked for: 5 and 6 stand for what all share
constexpr Range levels{ 0, 255 };
constexpr Range frequencies{ 1, 65535 }; ///< Hz
constexpr Range decibels{ 0, 255 };
constexpr Range amplitudes{ 0, 32767 };
constexpr Range timestamps{ 0, 2147483647 };
constexpr Range firmwareTypes{ 0, 2 };

/// A whole number in decimal digits: `volume: 16 is outside 0 to 15`.
int wholeNumber(std::string_view place, std::string_view text, Range range);

/// A span from 1 ms to a day.
Seconds timeSpan(std::string_view place, std::string_view text);

std::optional<bool> onOrOff(std::string_view text);

/// Hexadecimal digits in pairs.
Data bytes(std::string_view place, std::string_view text);

/// A frame, given whole (FE 68 … 16) or as command, two identifiers and payload, without checksum.
AuriskRawData frame(const Data& given);

/// A request of the PL3 family, given as its whole frame: 7E, length, command, payload, with escapes.
PL3Request pl3Request(const Data& given);

/// Refuses what is a frame of neither family.
void expectFrame(const Data& given);

/// A text as a message shows it: in quotes, without anything that a terminal would obey.
std::string inQuotes(std::string_view text);

bool isSameInEitherCase(std::string_view a, std::string_view b);

/// Where `wanted` stands among `names`: exactly so, or else in either case.
std::vector<std::string>::const_iterator findName(const std::vector<std::string>& names, std::string_view wanted);

/// `text` with a question mark for each control character.
std::string printable(std::string_view text);

} // namespace aurisk::tool
