#pragma once

#include "AuriskSDK/Platform/BlueZ/BusValue.h"

struct sd_bus_message;

/// Values into messages of the bus library, and out of them.

namespace aurisk::bluez {

/// Everything that the message carries, from its beginning.
BusValues readValues(sd_bus_message* message);

/// False where the library refuses a value, as it does a path or a text of wrong form.
bool appendValues(sd_bus_message* message, const BusValues& values);

} // namespace aurisk::bluez
