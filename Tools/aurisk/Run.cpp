#include "Tools/aurisk/Run.h"

#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

/// A command that lasts until it is interrupted is done then.
ExitCode codeOfInterruption(Command command)
{
    return command == Command::scan || command == Command::monitor ? ExitCode::done : ExitCode::interrupted;
}

bool isPL3(const Accessory& device) { return dynamic_cast<const PL3Accessory*>(&device) != nullptr; }

/// The words of the command, as far as they say what is to be done.
std::string wordsOf(const Options& options)
{
    const auto command = std::string(caseName(options.command));
    switch (options.action) {
    case Action::show: return command;
    case Action::set: return command + " set";
    case Action::exportFile: return command + " export";
    case Action::importFile: return command + " import";
    }
    return command;
}

} // namespace

std::shared_ptr<Run> Run::start(const Options& options, std::shared_ptr<BluetoothPlatform> platform, Output& output,
    std::function<void(ExitCode)> ended, Why whyNot)
{
    auto run = std::make_shared<Run>(Key{}, options, output, std::move(ended));
    run->_whyNot = std::move(whyNot);
    try {
        run->_plan = planOf(options);
    } catch (const UsageError& error) {
        run->fail({ .code = ExitCode::usage, .sentence = error.what() });
        return run;
    }
    run->_manager = AccessoryManager::create(std::move(platform));
    run->_manager->setStatusDelegate(run);
    const auto tooLate = [weak = std::weak_ptr(run)] {
        if (const auto self = weak.lock())
            self->fail({ .code = ExitCode::bluetoothUnavailable,
                .sentence
                = fmt::format("Bluetooth did not become ready within {:g} s", self->_options.timeout.count()) });
    };
    run->_radioLimit = DispatchTimer::scheduledTimer(DispatchQueue::main(), options.timeout, tooLate);
    return run;
}

Run::Run(Key, const Options& options, Output& output, std::function<void(ExitCode)> ended)
    : _options(options)
    , _output(output)
    , _ended(std::move(ended))
    , _began(DispatchQueue::main().now())
{
}

void Run::accessoryManagerIsAvailable(const std::shared_ptr<AccessoryManager>&, bool isAvailable)
{
    if (!_ended)
        return;
    if (isAvailable) {
        if (const auto waiting = std::exchange(_radioLimit, nullptr)) {
            waiting->invalidate();
            begin();
        }
        return;
    }
    const auto why = whyUnavailable();
    if (why && _sessions.empty()) // sessions hear of it by themselves
        fail({ .code = ExitCode::bluetoothUnavailable, .sentence = *why });
}

/// None while the radio may yet become ready.
std::optional<std::string> Run::whyUnavailable() const
{
    std::string sentence;
    switch (_manager->blueState()) {
    case CBManagerState::poweredOff: sentence = "Bluetooth is switched off"; break;
    case CBManagerState::unsupported: sentence = "there is no Bluetooth radio"; break;
    case CBManagerState::unauthorized: sentence = "Bluetooth may not be used from here"; break;
    case CBManagerState::unknown:
    case CBManagerState::resetting:
    case CBManagerState::poweredOn: return std::nullopt;
    }
    if (const auto why = _whyNot ? _whyNot() : ""; !why.empty())
        sentence += ": " + why;
    if (_options.backend == Backend::bluez && _manager->blueState() == CBManagerState::unsupported)
        sentence += " (--backend sim works without one)";
    return sentence;
}

void Run::begin()
{
    const auto weak = weak_from_this();
    if (_options.command == Command::scan) {
        _scan = Scan::start(_manager, _options, _output, [weak] {
            if (const auto self = weak.lock())
                self->finish(ExitCode::done);
        });
        return;
    }
    _finder = DeviceFinder::start(_manager, _options, [weak](const DeviceFinder::Result& result) {
        const auto self = weak.lock();
        if (!self)
            return;
        if (const auto* failure = std::get_if<Failure>(&result))
            self->fail(*failure);
        else
            self->open(std::get<0>(result));
    });
}

void Run::open(const std::vector<std::shared_ptr<Accessory>>& devices)
{
    const auto gate = std::make_shared<Gate>(devices.size());
    std::vector<std::shared_ptr<Session>> sessions;
    for (const auto& device : devices) {
        if (const auto failure = check(*device))
            return fail(*failure);
        sessions.push_back(Session::create(device, { _options, _output, _began, gate, connectLimit(_options) },
            [weak = weak_from_this()](ExitCode code) {
                if (const auto self = weak.lock())
                    self->sessionEnded(code);
            }));
    }
    _sessions = std::move(sessions);
    _open = _sessions.size();
    for (const auto& session : _sessions)
        session->open(isPL3(session->accessory()) ? _plan.playPL3 : _plan.play);
}

/// Why the command cannot be done with that device.
std::optional<Failure> Run::check(const Accessory& device) const
try {
    if (const auto* aurisk = dynamic_cast<const AuriskAccessory*>(&device))
        return _plan.check ? _plan.check(*aurisk) : std::nullopt;
    const auto* pl3 = dynamic_cast<const PL3Accessory*>(&device);
    if (pl3 && _plan.playPL3)
        return _plan.checkPL3 ? _plan.checkPL3(*pl3) : std::nullopt;
    return Failure{ .sentence = pl3
            ? fmt::format(
                "aurisk {} does not work with {}, which is a PL3 hearing aid", wordsOf(_options), device.name())
            : fmt::format("{} is a {}, to which this tool cannot speak", device.name(), device.className()),
        .name = device.name() };
} catch (const UsageError& error) {
    return Failure{ .code = ExitCode::usage, .sentence = error.what(), .name = device.name() };
}

void Run::sessionEnded(ExitCode code)
{
    _worst = std::max(_worst, code);
    if (--_open > 0)
        return;
    if (_worst == ExitCode::done)
        conclude();
    finish(_worst);
}

void Run::conclude()
try {
    if (_plan.conclude)
        _plan.conclude(_output);
} catch (const UsageError& error) {
    _worst = ExitCode::usage;
    _output.failure({ .code = ExitCode::usage, .sentence = error.what() });
}

void Run::interrupt()
{
    if (!_ended)
        return;
    const auto code = codeOfInterruption(_options.command);
    for (const auto& session : _sessions)
        session->interrupt(code);
    if (_sessions.empty())
        finish(code);
}

void Run::fail(const Failure& failure)
{
    if (!_ended)
        return;
    _output.failure(failure);
    finish(failure.code);
}

void Run::finish(ExitCode code)
{
    const auto ended = std::exchange(_ended, nullptr);
    if (!ended)
        return;
    if (_radioLimit)
        _radioLimit->invalidate();
    if (_scan)
        _scan->stop();
    if (_finder)
        _finder->stop();
    DispatchQueue::main().async([ended, code] { ended(code); });
}

} // namespace aurisk::tool
