#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Command.h"
#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/LabelledCase.h"
#include "AuriskSDK/Shared/Utils/RequestResult.h"

#include <cstdint>

namespace aurisk {

/// What a PL3 hearing aid says, asked or not; of a write, what was written.
struct PL3Response {
    PL3Command command = PL3Command::unknown;
    Data data = {};

    static constexpr auto labels
        = labelled("PL3Response", label("command", &PL3Response::command), label("data", &PL3Response::data));
    friend bool operator==(const PL3Response&, const PL3Response&) = default;
};

/// Why a request failed.
enum class PL3Error : std::uint8_t {
    timeout, ///< no answer came in time
    unknown, ///< the device refused the write, or there is no connection
};

template <> inline constexpr auto enumCases<PL3Error> = countingUp<PL3Error::unknown>({ "timeout", "unknown" });

using PL3Result = RequestResult<PL3Response, PL3Error>;

} // namespace aurisk
