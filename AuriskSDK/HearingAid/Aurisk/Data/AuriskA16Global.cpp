#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16Global.h"

#include "AuriskSDK/Shared/Utils/BitCodec.h"

namespace aurisk {

AuriskA16GlobalDsp::AuriskA16GlobalDsp(DataView data)
    : AuriskA16GlobalDsp(bits::decoded<AuriskA16GlobalDsp>(data))
{
}

std::optional<AuriskA16GlobalDsp> AuriskA16GlobalDsp::decode(DataView data)
{
    return bits::decodedIfAny<AuriskA16GlobalDsp>(data);
}

Data AuriskA16GlobalDsp::toData() const { return bits::encode(*this); }

} // namespace aurisk
