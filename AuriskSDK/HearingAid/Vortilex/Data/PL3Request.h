#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Command.h"
#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"

#include <optional>

namespace aurisk {

/// What a host asks of a PL3 hearing aid: to tell something, or to take `data` for it.
struct PL3Request {
    PL3Command command = PL3Command::unknown;
    std::optional<Data> data = {}; ///< at most 254 bytes; a write has to have it
    bool read = false; ///< the device is to answer

    static constexpr auto labels = labelled("PL3Request", label("command", &PL3Request::command),
        label("data", &PL3Request::data), label("read", &PL3Request::read));
    friend bool operator==(const PL3Request&, const PL3Request&) = default;
};

} // namespace aurisk
