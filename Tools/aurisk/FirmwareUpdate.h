#pragma once

#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Dfu/DFUServiceDelegate.h"
#include "Tools/aurisk/Session.h"
#include "Tools/aurisk/UpdateProgress.h"

#include <memory>
#include <string>

namespace aurisk::tool {

/// What a device may need to check an image, or to come back with a new one, at least.
constexpr Seconds longWait{ 30 };

/// The update of one device, until it says that it starts the image. The library waits for a silent device without a
/// limit: this does not. Used on the main queue.
class FirmwareUpdate final : public DFUServiceDelegate,
                             public DFUProgressDelegate,
                             public std::enable_shared_from_this<FirmwareUpdate> {
    struct Key {
        explicit Key() = default;
    };

public:
    /// Goes on once the device starts the image, from when on it may leave; else the session ends with a sentence. When
    /// the session ends, whatever the reason, `ended`.
    static void begin(
        Session& session, const std::shared_ptr<DFUFirmware>& image, Session::Then completed, Session::Then ended);
    FirmwareUpdate(Key, Session& session, const DFUFirmware& image, Session::Then completed);

    void dfuStateDidChange(DFUState to) override;
    void dfuError(DFUError error, const std::string& didOccurWithMessage) override;
    void dfuProgressDidChange(int to, double currentSpeedBytesPerSecond, double avgSpeedBytesPerSecond) override;

private:
    std::shared_ptr<Session> underWay();
    void failed(DFUError error, const std::string& message);
    void watch(Session& session);
    void look();
    Seconds patience(const Session& session) const;
    void fail(Session& session, const std::string& happened, std::string_view next);
    std::string versions() const;
    std::string whileUnsure(std::string_view usual) const;
    std::string ifCutShort() const;
    void end(Session& session);

    std::weak_ptr<Session> _session;
    std::string _name;
    int _size;
    Session::Then _completed; ///< none once the update is over
    UpdateProgress _progress;
    Seconds _lastHeard;
    std::shared_ptr<DispatchTimer> _watch;
};

} // namespace aurisk::tool
