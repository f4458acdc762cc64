#pragma once

#include "AuriskSDK/HearingAid/AccessoryOrientation.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskChip.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskGlobalDsp.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskResult.h"
#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskBatService.h"
#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDFUService.h"
#include "AuriskSDK/HearingAid/Aurisk/Service/AuriskDataService.h"
#include "AuriskSDK/Shared/Accessory/Accessory.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace aurisk {

class AuriskAccessory;
struct AuriskManuData;
struct AuriskResourceBundle;

/// Hears what one Aurisk hearing aid does, beside its connection. Called on the main queue.
class AuriskAccessoryDelegate : public virtual AccessoryDelegate {
public:
    /// A request's turn has come: its frame has been handed to the radio, if there still is a link to carry it.
    virtual void didSendRequest(const std::shared_ptr<AuriskAccessory>& accessory, const AuriskRequest& request) = 0;
    /// `bat`: percent.
    virtual void batteryDidChanged(const std::shared_ptr<AuriskAccessory>& accessory, int bat) = 0;
    /// The wearer changed program. Programs count from 0; without an earlier one `previous` is the current one.
    virtual void didNotifyProgram(const std::shared_ptr<AuriskAccessory>& accessory, int previous, int current) = 0;
    /// The wearer changed the volume of the current program. Without an earlier one `previous` is the current one.
    virtual void didNotifyVolume(const std::shared_ptr<AuriskAccessory>& accessory, int previous, int current) = 0;
    /// A request succeeded, and the accessory holds what is kept of its outcome: nothing of a block or text that does
    /// not decode, of blocks written as bytes, of blocks of an unassigned chip, of mute, beep and orientation. Told
    /// twice for a request whose reply is a plain acknowledgement, deliberately.
    virtual void didUpdateValue(const std::shared_ptr<AuriskAccessory>& accessory, const AuriskRequest& request) = 0;
};

/// One Aurisk hearing aid: sends requests to it and keeps what it answered. What it keeps is read back from the device,
/// or written to it and acknowledged; nothing is asked for of its own accord. Everything is called, and calls back, on
/// the main queue. Programs count from 0.
class AuriskAccessory : public Accessory, public AuriskDataServiceDelegate, public AuriskBatServiceDelegate {
public:
    using Complete = AuriskDataService::Complete;

    /// An accessory for a peripheral whose manufacturer data is this family's (AuriskManuData). Which ear it sits on is
    /// told by the peripheral's name: "-L" at its end is left, "-R" right.
    static std::shared_ptr<AuriskAccessory> create(
        std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);
    AuriskAccessory(
        Key, std::shared_ptr<CBPeripheral> peripheral, DataView mfgData, std::weak_ptr<AccessoryManager> manager);

    std::string_view className() const override { return "AuriskAccessory"; }

    /// The profile's `pSeriesCode` with "-L" for a left device, "-R" for any other; while that is empty, the advertised
    /// local name; else the peripheral's name; else "peripheral name not found".
    std::string name() const override;

    /// "0A:1B:2C:3D:4E:5F", as advertised.
    const std::string& address() const { return _address; }
    AccessoryOrientation orientation() const { return _orientation; }
    /// As advertised when the accessory was found: the chip does not change.
    AuriskChip hearChip() const { return _hearChip; }
    AuriskBLEChip bleChip() const { return _bleChip; }
    /// Whether transparency is switched on, as advertised.
    bool transEnable() const { return _transEnable; }

    // What is known of the device's state. None, or absent: not known yet.
    std::optional<int> bat() const { return _bat; } ///< percent
    std::optional<int> program() const { return _program; } ///< the current one
    /// By program; 0 to 15 on a device that keeps to the protocol.
    const std::map<int, int>& volumeDic() const { return _volumeDic; }
    std::optional<int> volume() const; ///< of the current program
    const std::map<int, AuriskDsp>& dspDic() const { return _dspDic; } ///< by program
    std::optional<AuriskDsp> dsp() const; ///< of the current program
    const std::optional<AuriskGlobalDsp>& global() const { return _global; }
    std::optional<int> numberOfProgram() const; ///< what the global block says
    const AuriskProfile& profile() const { return _profile; }
    std::array<AuriskProgram, 4> scenesOfProgram() const { return _profile.programs(); }
    std::optional<bool> brEdr() const { return _brEdr; } ///< classic Bluetooth
    bool brEdrContinuousIfEnable() const { return _brEdrContinuousIfEnable; }
    std::optional<int> transLevel() const { return _transLevel; } ///< of transparency, 0 to 255
    bool hearingSupported() const { return _hearingSupported; } ///< the in-situ hearing test

    // The services of the current connection, none before their discovery; after a disconnection those of the last one.
    const std::shared_ptr<AuriskDataService>& dataService() const { return _dataService; }
    const std::shared_ptr<AuriskBatService>& batteryService() const { return _batteryService; }
    const std::shared_ptr<AuriskDFUService>& firmwareUpdateService() const { return _firmwareUpdateService; }

    /// Sends one request; requests are sent one after another. `complete`, which may be empty, is called once with the
    /// outcome: at once with `disconnected` where the accessory is not connected, with `timeout` where no reply comes
    /// within 3 s of the sending. Before the first discovery of its services (deviceDidDiscoverServices) nothing is
    /// sent and nobody is called; before that of a later connection it ends with `timeout`. A value that does not fit
    /// its place in the frame is a broken precondition, at the sending.
    virtual void request(const AuriskRequest& request, Complete complete = {});

    /// Sends all `requests`, and calls `complete` once when every one has completed, successfully or not.
    void request(const std::vector<AuriskRequest>& requests, std::function<void()> complete);

    /// Asks for the block that holds the number of programs.
    void readNumberOfProgram(Complete complete);

    /// Writes the global block with another number of programs; where it is not known yet, asks for it first. What the
    /// accessory holds stays as it was: read the block again to see what the device made of it. `complete` gets the
    /// outcome of the write, or that of the reading where there is nothing to write. A number that does not fit the
    /// block (AuriskGlobalDsp) is a broken precondition.
    void writeNumberOfProgram(int number, Complete complete);

    /// Asks for the profile field that holds the scenes of the programs.
    void readScenesOfProgram(Complete complete);

    /// Looks the default data of this device's model up and puts them into its profile, as far as that tells the model:
    /// read SKU, pattern and reserved field before. False, and the profile stays as it was, where no entry fits.
    bool takeRepository(const AuriskResourceBundle& bundle);

    /// Asks for the battery level, which arrives as `batteryDidChanged`; nothing before the battery service is known.
    void readBattery();

    /// Begins a firmware update (AuriskDFUService::start). Nothing where the device has no service for it, or where an
    /// update has been started and not been stopped since, even if it has failed or completed. Should the link go
    /// before the update has completed, or be gone already, the delegate hears DFUError::receivingNotificationFailed.
    void startOTA(std::shared_ptr<DFUConfigure> configure);

    /// Ends an update, or clears away one that has failed or completed, so that another one can start: after the
    /// delegate's `dfuError` has returned, and again where one is told later. The device is not told. Before another
    /// update starts, let its answers to this one arrive, since they would count for that.
    void stopOTA();

    void updateManufacturerData(std::shared_ptr<CBPeripheral> peripheral, DataView mfgData) override;
    void didDisconnect(const MaybeError& error) override;

    // The services tell these.
    void didSendRequest(const AuriskRequest& request) override;
    void didFinishRequest(const AuriskRequest& request, const AuriskResult& result) override;
    void didNotify(int program, int volume) override;
    void didUpdateBattery(int level) override;

protected:
    std::shared_ptr<AccessoryService> initial(const std::shared_ptr<CBService>& service) override;

private:
    std::shared_ptr<AuriskAccessory> self();
    template <typename What> void tell(What&& what);
    void take(const AuriskManuData& manuData);
    void sendNumberOfProgram(int number, Complete complete);
    void apply(const AuriskResponse& response, const AuriskRequest& request);
    template <typename Block> std::optional<Block> decoded(std::string_view what, DataView data) const;
    void writeAcknowledged(const AuriskRequest& request);

    std::string _address;
    AccessoryOrientation _orientation;
    AuriskChip _hearChip;
    AuriskBLEChip _bleChip;
    std::optional<int> _bat;
    std::optional<int> _program;
    std::map<int, int> _volumeDic;
    std::map<int, AuriskDsp> _dspDic;
    std::optional<AuriskGlobalDsp> _global;
    AuriskProfile _profile;
    std::optional<bool> _brEdr;
    bool _brEdrContinuousIfEnable = false;
    bool _transEnable;
    std::optional<int> _transLevel;
    bool _hearingSupported = false;
    std::shared_ptr<AuriskDataService> _dataService;
    std::shared_ptr<AuriskBatService> _batteryService;
    std::shared_ptr<AuriskDFUService> _firmwareUpdateService;
};

} // namespace aurisk
