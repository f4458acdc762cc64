#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "Tools/aurisk/Output.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Files of settings and profiles, which people keep, edit and give to other devices:
///
///     {"aurisk": {"format": "dsp", "version": 1},
///      "devices": [{"name": "X1-L", "orientation": "left", "chip": "a16", ...}]}
///
/// "-" stands for standard output or input. A file that cannot be used is a UsageError that names it.

namespace aurisk::tool {

/// What a file holds for one device.
struct ExchangePart {
    AccessoryOrientation orientation = AccessoryOrientation::unassigned;
    AuriskChip chip = AuriskChip::unassigned;
    std::string place; ///< `devices[0]`
    nlohmann::json device; ///< an object
};

/// The members that name a device in a file; what is kept of it follows them.
Json exchangeHead(const std::string& name, const AuriskAccessory& device);

/// Throws where the file could not be written. It stays as it is.
void checkWritable(const std::string& path);

/// Writes `content`, and nothing else, to a file. Throws where that fails.
void writeFile(const std::string& path, const std::string& content);

/// Writes the settings of one device or of a pair, in a form that is pleasant to edit.
void writeExchangeFile(
    const std::string& path, std::string_view format, const std::vector<Json>& devices, Output& output);

std::vector<ExchangePart> readExchangeFile(const std::string& path, std::string_view format);

/// The part for that device: the only one, or that of its ear. Throws where there is none, or for another chip.
const ExchangePart& partFor(
    const AuriskAccessory& device, const std::vector<ExchangePart>& parts, const std::string& path);

/// Calls `read`, which reads a part of the file. What it cannot use becomes a UsageError.
void readingFile(const std::string& path, const std::function<void()>& read);

/// JSON over many lines, with lists of plain values in as few as they fit.
std::string pleasantJson(const Json& value);

} // namespace aurisk::tool
