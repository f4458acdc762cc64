#pragma once

#include "Tools/aurisk/Output.h"

#include <memory>
#include <optional>
#include <string>

namespace aurisk {
class Accessory;
}

namespace aurisk::tool {

/// What advertisements say of a device.
Fields advertisedFields(const Accessory& accessory, std::optional<int> rssi);

/// The same without signal strength and name, as the first lines of a description.
Fields aboutDevice(const Accessory& accessory);

// One value each, with its words.
Field programField(std::optional<int> program);
Field volumeField(std::optional<int> volume);
Field batteryField(std::optional<int> bat);
Field switchField(const std::string& key, const std::string& label, std::optional<bool> isOn);

Field hearingTestField(bool isSupported);

/// Whether classic Bluetooth is on, and whether continuously.
Fields brEdrFields(std::optional<bool> brEdr, bool continuous);

/// A value that nobody told, in words.
inline const std::string notTold = "-";

} // namespace aurisk::tool
