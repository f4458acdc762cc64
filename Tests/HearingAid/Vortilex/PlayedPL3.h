#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Tests/Support/PL3Cache.h"
#include "Tests/Support/PlayedAid.h"
#include "Tests/Support/StubPeripheral.h"

namespace aurisk::tests {

/// A PL3 hearing aid that has been heard, and its accessory. The device is played by hand, in virtual time.
struct PlayedPL3 {
    PlayedPL3()
    {
        peripheral->itsServices = { gatt };
        gatt->setCharacteristics({ characteristic });
        advertises({ 0xC6, 0x03, 0x03, 0x34, 0x12, 0x78, 0x56 });
        accessory = std::dynamic_pointer_cast<PL3Accessory>(radio.manager->accessories().at(0));
    }

    void advertises(const Data& mfgData)
    {
        radio.manager->centralManagerDidDiscover(
            *radio.platform->central, peripheral, { .manufacturerData = mfgData, .localName = std::nullopt }, -60);
    }
    void connects()
    {
        accessory->connect({}, "aid");
        radio.manager->centralManagerDidConnect(*radio.platform->central, peripheral);
    }
    void showsItsServices()
    {
        accessory->peripheralDidDiscoverServices(*peripheral, std::nullopt);
        accessory->peripheralDidDiscoverCharacteristicsFor(*peripheral, gatt, std::nullopt);
    }
    void subscribed() { accessory->peripheralDidUpdateNotificationStateFor(*peripheral, characteristic, std::nullopt); }
    void notifies(DataView value)
    {
        characteristic->setValue(Data(value.begin(), value.end()));
        accessory->peripheralDidUpdateValueFor(*peripheral, characteristic, std::nullopt);
    }
    void confirms(const MaybeError& error = std::nullopt)
    {
        accessory->peripheralDidWriteValueFor(*peripheral, characteristic, error);
    }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    PlayedRadio radio;
    std::shared_ptr<StubPeripheral> peripheral = std::make_shared<StubPeripheral>();
    std::shared_ptr<CBService> gatt = std::make_shared<CBService>(PL3DataService::serviceUUID, peripheral);
    std::shared_ptr<CBCharacteristic> characteristic = std::make_shared<CBCharacteristic>(
        PL3DataService::microGattCharactUUID, CBCharacteristicProperties::notify, gatt);
    std::shared_ptr<PL3Accessory> accessory;
};

} // namespace aurisk::tests
