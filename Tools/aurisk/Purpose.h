#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3Request.h"

#include <string>

namespace aurisk::tool {

/// What a device is asked to do, as it follows "asked to" or "refused to".
std::string purpose(const AuriskRequest& request);
std::string purpose(AuriskDataLogType log);
std::string purpose(const PL3Request& request);

/// What the user can do after a refusal, in brackets; empty where there is nothing to say.
std::string advice(const AuriskRequest& request);
std::string advice(const PL3Request& request);

} // namespace aurisk::tool
