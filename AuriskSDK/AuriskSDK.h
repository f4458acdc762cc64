#pragma once

/// Everything that an application includes, the platform backends apart.

#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskA4Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA16DspParameterLabels.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskA4DspParameterLabels.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChannelData.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskManuData.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProgram.h"
#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskResourceBundle.h"
#include "AuriskSDK/Platform/Asio/MainQueue.h"
#include "AuriskSDK/Platform/Bluetooth.h"
#include "AuriskSDK/Platform/Dispatch.h"
#include "AuriskSDK/Shared/Accessory/AccessoryManager.h"
#include "AuriskSDK/Shared/Dfu/DFUConfigure.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Crc16.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "AuriskSDK/Shared/Utils/ValueObservable.h"
