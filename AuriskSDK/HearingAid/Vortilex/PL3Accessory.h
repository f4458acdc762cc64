#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3BandEQ.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompRatio.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompThreshold.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3CompTime.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3InputSettings.h"
#include "AuriskSDK/HearingAid/Vortilex/Data/PL3MpoConfig.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3DataService.h"
#include "AuriskSDK/Shared/Accessory/Accessory.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace aurisk {

class PL3Accessory;
struct PL3ManuData;

/// Hears what one PL3 hearing aid says. Called on the main queue.
class PL3AccessoryDelegate {
public:
    virtual ~PL3AccessoryDelegate() = default;

    /// A request succeeded, and the accessory holds what is kept of its outcome.
    virtual void didUpdateValue(const std::shared_ptr<PL3Accessory>& accessory, const PL3Request& request) = 0;
    /// The device said something that nobody asked for; the accessory holds what is kept of it.
    virtual void didNotify(const std::shared_ptr<PL3Accessory>& accessory, const PL3Response& data) = 0;
};

/// One PL3 hearing aid: sends requests to it and keeps what it said last. What it keeps is notified by the device, or
/// written to it and confirmed; nothing is asked for of its own accord, and nothing is forgotten at a disconnection.
/// Everything is called, and calls back, on the main queue. Programs count as the device counts them.
class PL3Accessory final : public Accessory, public PL3DataServiceDelegate {
public:
    using Complete = PL3DataService::Complete;

    /// An accessory for a peripheral whose manufacturer data is this family's (PL3ManuData); shorter data is a broken
    /// precondition.
    static std::shared_ptr<PL3Accessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    using Accessory::Accessory;

    std::string_view className() const override { return "PL3Accessory"; }

    // As advertised.
    int manufacturerId() const { return _manufacturerId; }
    const std::string& modelName() const { return _modelName; } ///< a number in decimal digits
    AccessoryOrientation orientation() const { return _orientation; }

    // What the device said last; 0 before it said anything.
    int volume() const { return _volume; }
    int battery() const { return _battery; } ///< percent
    int program() const { return _program; }

    // The settings, each under the program that was the current one when they came.
    const std::map<int, PL3BandEQ>& bandEQ() const { return _bandEQ; }
    const std::map<int, PL3CompRatio>& compRatio() const { return _compRatio; }
    const std::map<int, PL3CompTime>& compTime() const { return _compTime; }
    const std::map<int, PL3CompThreshold>& compThreshold() const { return _compThreshold; }
    const std::map<int, PL3MpoConfig>& mpoConfig() const { return _mpoConfig; }
    const std::map<int, PL3InputSettings>& inputSetting() const { return _inputSetting; }

    std::shared_ptr<PL3AccessoryDelegate> dataDelegate() const { return _dataDelegate.lock(); }
    void setDataDelegate(std::weak_ptr<PL3AccessoryDelegate> delegate) { _dataDelegate = std::move(delegate); }

    /// The service of the current connection, none before its discovery; after a disconnection that of the last one.
    const std::shared_ptr<PL3DataService>& dataService() const { return _dataService; }

    /// Sends one request; requests are sent one after another. `complete`, which may be empty, is called once with the
    /// outcome: at once with `unknown` where the accessory is not connected, or its services have never been
    /// discovered; with `timeout` where neither answer nor confirmation comes within 3 s of the sending, or where a
    /// later connection has not discovered them yet. PL3DataService::request says the rest.
    void request(const PL3Request& request, Complete complete = {});

    /// Sends all `requests`, and calls `complete` once when every one has completed, successfully or not.
    void request(const std::vector<PL3Request>& requests, std::function<void()> complete);

    /// The first byte, or 0 where there is none.
    static std::uint8_t getValueAsUInt8(DataView data);

    /// Data that is too short, where it is contained, leaves everything as it was.
    void updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData) override;

    void didFinishRequest(const PL3Request& request, const PL3Result& result) override;
    void didNotify(PL3Command command, const Data& data) override;

protected:
    std::shared_ptr<AccessoryService> initial(const std::shared_ptr<CBService>& service) override;

private:
    std::shared_ptr<PL3Accessory> self();
    void take(const PL3ManuData& manuData);
    void keep(PL3Command command, DataView data);

    int _manufacturerId = 0;
    std::string _modelName;
    AccessoryOrientation _orientation = AccessoryOrientation::unassigned;
    std::map<int, PL3BandEQ> _bandEQ;
    std::map<int, PL3CompRatio> _compRatio;
    std::map<int, PL3CompTime> _compTime;
    std::map<int, PL3CompThreshold> _compThreshold;
    std::map<int, PL3MpoConfig> _mpoConfig;
    std::map<int, PL3InputSettings> _inputSetting;
    int _volume = 0;
    int _battery = 0;
    int _program = 0;
    std::weak_ptr<PL3AccessoryDelegate> _dataDelegate;
    std::shared_ptr<PL3DataService> _dataService;
};

} // namespace aurisk
