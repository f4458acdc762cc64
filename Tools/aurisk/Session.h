#pragma once

#include "AuriskSDK/HearingAid/Aurisk/AuriskAccessory.h"
#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"
#include "AuriskSDK/HearingAid/Vortilex/PL3Accessory.h"
#include "Tools/aurisk/Gate.h"
#include "Tools/aurisk/Options.h"
#include "Tools/aurisk/Output.h"
#include "Tools/aurisk/PeripheralTap.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace aurisk::tool {

/// One device's part of a run: connects, lets a command ask and tell, and disconnects whatever comes. Each wait has a
/// limit. What a command is to do next it gives as a closure, which gets the session handed in and so need not hold it;
/// a failure ends the session instead, with a sentence. What asks an Aurisk device is for sessions with one of those,
/// and the same holds for PL3. Used on the main queue.
class Session final : public AuriskAccessoryDelegate,
                      public PL3AccessoryDelegate,
                      public std::enable_shared_from_this<Session> {
    struct Key {
        explicit Key() = default;
    };

public:
    using Then = std::function<void(Session&)>;
    template <typename Value> using ThenWith = std::function<void(Session&, const Value&)>;

    /// What a command wants to hear of while it waits.
    struct Events {
        std::function<void(Session&, int previous, int current)> program = {};
        std::function<void(Session&, int previous, int current)> volume = {};
        ThenWith<int> battery = {};
        ThenWith<PL3Response> notified = {}; ///< all that a PL3 device says unasked
        Then disconnected = {};
    };

    /// What a run has in common.
    struct Setting {
        const Options& options;
        Output& output;
        Seconds began; ///< when the run did
        std::shared_ptr<Gate> gate;
        Seconds connectLimit; ///< how long it may take until a device is connected: others may come before it
    };

    /// `ended` is called once, when the device is disconnected.
    static std::shared_ptr<Session> create(
        std::shared_ptr<Accessory> device, const Setting& setting, std::function<void(ExitCode)> ended);
    Session(Key, std::shared_ptr<Accessory> device, const Setting& setting, std::function<void(ExitCode)> ended);

    /// Connects and discovers the services.
    void open(Then then);

    const Options& options() const { return _options; }
    const Accessory& accessory() const { return *_accessory; }
    const AuriskAccessory& device() const { return *_device; }
    AuriskAccessory& device() { return *_device; }
    const PL3Accessory& pl3() const { return *_pl3; }
    /// The name under which it was found. What is read of its profile does not change it.
    const std::string& name() const { return _name; }
    /// How many bytes a value that the device notifies, or that is written to it, can have.
    std::size_t longestValue() const;

    Seconds sinceBegin() const { return DispatchQueue::main().now() - _began; }

    /// Asks, and goes on once the device has done so. `undo` will be asked before the end, whatever comes in between,
    /// unless the device refuses `request`.
    void request(
        const AuriskRequest& request, ThenWith<AuriskResponse> then, std::optional<AuriskRequest> undo = std::nullopt);

    /// Asks for something that the device may refuse.
    void attempt(const AuriskRequest& request, ThenWith<AuriskResult> then);

    /// Asks, and goes on with an answer of the type `Answer`; any other is a failure. `undo` is that of `request`.
    template <typename Answer>
    void read(const AuriskRequest& request, ThenWith<Answer> then, std::optional<AuriskRequest> undo = std::nullopt)
    {
        const auto take = [request, then = std::move(then)](Session& self, const AuriskResponse& response) {
            if (const auto* answer = response.as<Answer>())
                then(self, *answer);
            else
                self.failBeyondAnswer(request);
        };
        this->request(request, take, std::move(undo));
    }

    /// Ends with the sentence that the answer to `request` fits nothing.
    void failBeyondAnswer(const AuriskRequest& request);

    /// Asks a PL3 device, and goes on with what it says, or once it has confirmed a write.
    void request(const PL3Request& request, ThenWith<PL3Response> then);

    /// Asks a PL3 device for something that it may refuse or not know.
    void attempt(const PL3Request& request, ThenWith<PL3Result> then);

    /// Asks a PL3 device to tell that, and goes on with what it says. What it says of something else meanwhile is no
    /// answer.
    void read(PL3Command command, ThenWith<Data> then);

    /// The same, where the device need not know what it is asked for: none where no answer comes.
    void attempt(PL3Command command, ThenWith<std::optional<Data>> then, int often = 5);

    /// Goes on once every device of the run has come as far. Where one of them ends instead, so do all.
    void meet(Then then);

    /// What to say where the session ends before it is done, about what it may have changed by then. Empty: nothing.
    void setIfCutShort(std::function<std::string()> sentence) { _ifCutShort = std::move(sentence); }

    /// Once, when the session begins to end, whatever the reason.
    void setAtEnd(Then atEnd) { _atEnd = std::move(atEnd); }

    /// From here on a lost link ends nothing: whoever allows it hears of it elsewhere.
    void allowLeaving() { _mayLeave = true; }

    /// The device, which may leave, starts anew: waits until it has gone, connects once it is back, discovers its
    /// services, and goes on. A device that does not go by itself is disconnected; one that is not back within `limit`
    /// ends the session with that sentence.
    void awaitReturn(Seconds limit, std::string ifItStaysAway, Then then);

    /// Reads the battery level.
    void readBattery(ThenWith<int> then);

    /// Reads the bytes of a log from a device that keeps logs. What has a limit is the wait for each part of it.
    void fetchLog(AuriskDataLogType type, ThenWith<Data> then);

    /// Goes on after `span`, or when the user interrupts; no span: then alone.
    void pause(std::optional<Seconds> span, Then then);

    void setEvents(Events events) { _events = std::move(events); }

    /// The value of the last reply as it was notified; none before the first since the last request.
    const std::optional<Data>& lastReply() const { return _lastReply; }

    /// Tells something of this device. `prefix` stands before its name.
    void line(const Fields& fields, const std::string& prefix = {});
    void block(const Fields& fields);
    void picture(const std::string& caption, const Fields& fields, const std::vector<std::string>& lines);
    void note(const std::string& sentence) { _output.note(sentence); }

    /// A line about this device that is redrawn in place (Output::showLive).
    void showLive(const std::string& line);
    void endLive();
    const Style& style() const { return _output.style(); }

    /// Undoes, disconnects, ends.
    void finish(ExitCode code = ExitCode::done);
    void fail(const std::string& sentence, ExitCode code = ExitCode::failed);

    /// The user wants to end: a pause is over, anything else is given up.
    void interrupt(ExitCode code);

    void deviceDidUpdate(const std::shared_ptr<Accessory>&, AccessoryState) override { }
    void deviceDidDiscoverServices(
        const std::shared_ptr<Accessory>&, const std::vector<std::shared_ptr<AccessoryService>>&) override;
    void deviceDidConnect(const std::shared_ptr<Accessory>&, const MaybeError&) override;
    void deviceDidDisconnect(const std::shared_ptr<Accessory>&, const MaybeError& error) override;
    void deviceDidFailToConnect(const std::shared_ptr<Accessory>&, const MaybeError& error) override;
    void didSendRequest(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest&) override { }
    void batteryDidChanged(const std::shared_ptr<AuriskAccessory>&, int bat) override;
    void didNotifyProgram(const std::shared_ptr<AuriskAccessory>&, int previous, int current) override;
    void didNotifyVolume(const std::shared_ptr<AuriskAccessory>&, int previous, int current) override;
    void didUpdateValue(const std::shared_ptr<AuriskAccessory>&, const AuriskRequest&) override { }
    void didUpdateValue(const std::shared_ptr<PL3Accessory>&, const PL3Request&) override { }
    void didNotify(const std::shared_ptr<PL3Accessory>&, const PL3Response& data) override;

private:
    enum class Phase { opening, working, undoing, closing, ended };

    void connect(Then then);
    void didLeave();
    void connectAgain(Seconds limit, const std::string& ifItStaysAway, Then then);
    void wait(Seconds limit, Then late);
    void waitFor(std::string purpose);
    void waitFor(std::string purpose, Seconds limit);
    void waitIsOver();
    template <typename Device, typename Request, typename Result>
    void ask(Device& device, const Request& request, ThenWith<Result> answered);
    void answered(const AuriskRequest& request, const AuriskResult& result, const ThenWith<AuriskResult>& then);
    void failWithoutAnswer(const std::string& purpose, Seconds timeout);
    void askForBattery();
    void undoNext();
    void letItAnswer();
    void didReply(const Data& value);
    bool answersRequests();
    void close();
    void end();
    Fields identified(const Fields& fields) const;
    bool isRadioOff() const;

    std::shared_ptr<Accessory> _accessory;
    std::shared_ptr<AuriskAccessory> _device; ///< the same, where it is one of these
    std::shared_ptr<PL3Accessory> _pl3; ///< the same, where it is one of these
    std::string _name;
    Options _options;
    Output& _output;
    Seconds _began;
    std::shared_ptr<Gate> _gate;
    Seconds _connectLimit;
    std::function<void(ExitCode)> _ended;
    std::shared_ptr<PeripheralTap> _tap;

    Phase _phase = Phase::opening;
    ExitCode _code = ExitCode::done;
    bool _isAsking = false; ///< the accessory has yet to complete a request, whether or not anybody waits for it
    int _wait = 0; ///< counts waits: an answer to an earlier one comes too late
    std::string _purpose; ///< what the device is asked for in this wait
    std::shared_ptr<DispatchTimer> _timer; ///< the limit of this wait, or the end of a pause
    Then _opened;
    bool _mayLeave = false;
    Then _left; ///< once the link has gone
    Then _atEnd;
    Then _pause;
    ThenWith<int> _batteryRead;
    ThenWith<Data> _logFetched;
    Events _events;
    std::vector<AuriskRequest> _undo;
    std::function<std::string()> _ifCutShort;
    std::optional<Data> _lastReply;
};

} // namespace aurisk::tool
