#pragma once

#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "Tests/HearingAid/Vortilex/SecondReceiver.h"
#include "Tests/Support/PlayedAid.h"
#include "Tests/Support/StubPeripheral.h"

#include <map>

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

/// What an accessory holds of its device, or what it ought to hold.
struct PL3Cache {
    int volume = 0, program = 0, battery = 0;
    std::map<std::pair<unsigned, int>, Data> blocks = {}; ///< by command and program

    friend bool operator==(const PL3Cache&, const PL3Cache&) = default;

    static PL3Cache of(const PL3Accessory& one)
    {
        PL3Cache held{ .volume = one.volume(), .program = one.program(), .battery = one.battery() };
        const auto add = [&](unsigned command, const auto& ofPrograms) {
            for (const auto& [itsProgram, block] : ofPrograms)
                held.blocks[{ command, itsProgram }] = block.toData();
        };
        add(6, one.bandEQ());
        add(7, one.compRatio());
        add(8, one.compTime());
        add(9, one.compThreshold());
        add(10, one.mpoConfig());
        add(11, one.inputSetting());
        return held;
    }

    /// The device says so, or has taken it.
    void keep(unsigned command, Data payload)
    {
        const int first = payload.empty() ? 0 : payload[0];
        if (command == 0)
            volume = first;
        if (command == 1)
            program = first;
        if (command == 3)
            battery = first;
        payload.resize(16);
        if (command >= 6 && command <= 11)
            blocks[{ command, program }] = payload;
    }
};

} // namespace aurisk::tests
