#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4Global.h"

#include "AuriskSDK/Shared/Utils/BitCodec.h"

namespace aurisk {

AuriskA4GlobalDsp::AuriskA4GlobalDsp(DataView data)
    : AuriskA4GlobalDsp(bits::decoded<AuriskA4GlobalDsp>(data))
{
}

std::optional<AuriskA4GlobalDsp> AuriskA4GlobalDsp::decode(DataView data)
{
    return bits::decodedIfAny<AuriskA4GlobalDsp>(data);
}

Data AuriskA4GlobalDsp::toData() const { return bits::encode(*this); }

} // namespace aurisk
