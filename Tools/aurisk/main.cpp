#include "AuriskSDK/Platform/Asio/MainQueue.h"
#ifdef AURISK_BLUEZ
#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#include "AuriskSDK/Platform/BlueZ/GattServer.h"
#endif
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Simulator/Simulator.h"
#include "Tools/aurisk/Arguments.h"
#include "Tools/aurisk/Codec.h"
#include "Tools/aurisk/Descriptors.h"
#include "Tools/aurisk/InputLines.h"
#include "Tools/aurisk/Run.h"
#include "Tools/aurisk/SimCommand.h"
#include "Tools/aurisk/Values.h"
#include "Tools/aurisk/WorldFile.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <fmt/format.h>

#include <csignal>
#include <cstring>
#include <exception>
#include <functional>

#include <unistd.h>

namespace {

using namespace aurisk;
using namespace aurisk::tool;

using Ended = std::function<void(ExitCode)>;
using Interrupt = std::function<void()>;

/// Starts something on the main queue, and runs that until it has ended. `start` is given what to call then, and tells
/// what is to be called where the user wants it to end.
ExitCode runUntilEnded(Descriptors& descriptors, const std::function<Interrupt(Ended)>& start)
{
    auto code = ExitCode::done;
    const auto interrupt = start([&code](ExitCode ended) {
        code = ended;
        stopMainQueue();
    });
    descriptors.onLost = interrupt;
    asio::signal_set signals(mainQueueContext(), SIGINT, SIGTERM);
    struct sigaction hangUp { };
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) // not under nohup
        signals.add(SIGHUP);
    signals.async_wait([&](const asio::error_code& cancelled, int) {
        signals.clear(); // a second signal ends the process at once
        if (!cancelled)
            interrupt();
    });
    runMainQueue();
    return code;
}

/// Interrupts `running` for as long as it is there.
template <typename Running> Interrupt interrupting(const std::shared_ptr<Running>& running)
{
    return [weak = std::weak_ptr(running)] {
        if (const auto alive = weak.lock())
            alive->interrupt();
    };
}

/// Runs one command on a radio.
ExitCode runOn(std::shared_ptr<BluetoothPlatform> radio, Run::Why whyNot, const Options& options,
    Descriptors& descriptors, Output& output)
{
    std::shared_ptr<Run> run;
    return runUntilEnded(descriptors, [&](Ended ended) {
        run = Run::start(options, std::move(radio), output, std::move(ended), std::move(whyNot));
        return interrupting(run);
    });
}

ExitCode runSimulated(const Options& options, Descriptors& descriptors, Output& output)
{
    WorldFile file(options.world, options.newWorld);
    const auto simulator = Simulator::create(file.world());
    const auto code = runOn(simulator->platform(), {}, options, descriptors, output);
    file.keep(simulator->world());
    return code;
}

[[maybe_unused]] ExitCode refuse(Output& output)
{
    output.failure({ .code = ExitCode::bluetoothUnavailable,
        .sentence = "this build cannot use the computer's radio (--backend sim works without it)" });
    return ExitCode::bluetoothUnavailable;
}

/// Runs one command on the radio of the computer.
ExitCode runReal([[maybe_unused]] const Options& options, [[maybe_unused]] Descriptors& descriptors, Output& output)
{
#ifdef AURISK_BLUEZ
    const auto radio = bluez::makePlatform({ .adapter = options.adapters.empty() ? "" : options.adapters.front(),
        .connectionLimit = connectLimit(options) * 0.9 }); // it can say more of a failure than who waits for it
    const auto whyNot = [radio] { return radio->whyNot(); };
    return runOn(radio, whyNot, options, descriptors, output);
#else
    return refuse(output);
#endif
}

/// Serves hearing aids of a simulated world on the radio of the computer.
ExitCode runSim(const Options& options, Descriptors& descriptors, Output& output)
{
    WorldFile file(options.world, options.newWorld);
#ifdef AURISK_BLUEZ
    std::signal(SIGTTIN, SIG_IGN); // in the background it reads nothing, instead of being stopped
    std::signal(SIGTSTP, SIG_IGN); // daemons do not bear hearing aids that do not answer
    std::shared_ptr<Serving> serving;
    std::shared_ptr<InputLines> typed;
    const auto code = runUntilEnded(descriptors, [&](Ended ended) {
        serving = Serving::start(options, file.world(), bluez::makeGattServerPlatform(), output, std::move(ended));
        typed = InputLines::start(STDIN_FILENO,
            { .line = [&serving](const std::string& line) { serving->take(line); },
                .ended =
                    [interrupt = interrupting(serving)] {
                        if (isatty(STDIN_FILENO) == 1)
                            interrupt();
                    } });
        return interrupting(serving);
    });
    file.keep(serving->world());
    return code;
#else
    servedAids(options, file.world());
    return refuse(output);
#endif
}

ExitCode runOnMainQueue(const Options& options, Descriptors& descriptors, Output& output)
{
    if (options.command == Command::sim)
        return runSim(options, descriptors, output);
    if (options.backend == Backend::sim)
        return runSimulated(options, descriptors, output);
    return runReal(options, descriptors, output);
}

ExitCode runCommand(const Options& options, Descriptors& descriptors, Output& output)
{
    if (options.command == Command::codec)
        return ExitCode(codec::runCodec(STDIN_FILENO, descriptors.output()));
    AuriskLog::setEnable(options.log);
    if (!options.log)
        descriptors.silenceLibrary(); // which prints at every advertisement of some devices, and at every percent
    const auto code = runOnMainQueue(options, descriptors, output);
    if (descriptors.error() == 0)
        return code;
    output.note(fmt::format("standard output cannot be written: {}", std::strerror(descriptors.error())));
    return ExitCode::usage;
}

ExitCode runArguments(const std::vector<std::string>& arguments, Descriptors& descriptors)
{
    Output output(descriptors,
        { .json = wantsJson(arguments),
            .colour = descriptors.isColourful(),
            .drawing = descriptors.isDrawing(),
            .redrawing = descriptors.isRedrawing(),
            .columns = descriptors.columns() });
    try {
        const auto parsed = parseArguments(arguments);
        if (const auto* options = std::get_if<Options>(&parsed))
            return runCommand(*options, descriptors, output);
        auto text = std::get<Information>(parsed).text;
        text.erase(text.find_last_not_of('\n') + 1);
        descriptors.out(text);
        return ExitCode::done;
    } catch (const UsageError& error) {
        output.failure({ .code = ExitCode::usage, .sentence = error.what() });
        return ExitCode::usage;
    }
}

} // namespace

int main(int count, char* words[])
{
    setPreconditionPolicy(PreconditionPolicy::contain);
    std::signal(SIGPIPE, SIG_IGN); // writing to nobody is an error that the tool handles
    Descriptors descriptors;
    return static_cast<int>(runArguments({ words + 1, words + count }, descriptors));
}
