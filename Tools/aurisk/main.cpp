#include "AuriskSDK/Platform/Asio/MainQueue.h"
#ifdef AURISK_HAS_BLUEZ
#include "AuriskSDK/Platform/BlueZ/BlueZ.h"
#endif
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/PreconditionPolicy.h"
#include "Simulator/Simulator.h"
#include "Tools/aurisk/Arguments.h"
#include "Tools/aurisk/Codec.h"
#include "Tools/aurisk/Descriptors.h"
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

#include <unistd.h>

namespace {

using namespace aurisk;
using namespace aurisk::tool;

/// Runs one command on a radio and the main queue.
ExitCode runOn(std::shared_ptr<BluetoothPlatform> radio, Run::Why whyNot, const Options& options,
    Descriptors& descriptors, Output& output)
{
    auto code = ExitCode::done;
    const auto ended = [&code](ExitCode itsCode) {
        code = itsCode;
        stopMainQueue();
    };
    auto run = Run::start(options, std::move(radio), output, ended, std::move(whyNot));
    const auto interrupt = [weak = std::weak_ptr(run)] {
        if (const auto running = weak.lock())
            running->interrupt();
    };
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

ExitCode runSimulated(const Options& options, Descriptors& descriptors, Output& output)
{
    WorldFile file(options.world, options.newWorld);
    const auto simulator = Simulator::create(file.world());
    const auto code = runOn(simulator->platform(), {}, options, descriptors, output);
    file.keep(simulator->world());
    return code;
}

ExitCode runReal([[maybe_unused]] const Options& options, [[maybe_unused]] Descriptors& descriptors, Output& output)
{
#ifdef AURISK_HAS_BLUEZ
    const auto radio = bluez::makePlatform({ .adapter = options.adapters.empty() ? "" : options.adapters.front() });
    return runOn(
        radio, [radio] { return radio->whyNot(); }, options, descriptors, output);
#else
    output.failure({ .code = ExitCode::bluetoothUnavailable,
        .sentence = "this build cannot use the computer's radio (--backend sim works without one)" });
    return ExitCode::bluetoothUnavailable;
#endif
}

ExitCode runCommand(const Options& options, Descriptors& descriptors, Output& output)
{
    if (options.command == Command::codec)
        return ExitCode(codec::runCodec(STDIN_FILENO, descriptors.output()));
    if (options.command == Command::sim)
        return runSim(options, output);
    AuriskLog::setEnable(options.log);
    if (!options.log)
        descriptors.silenceLibrary(); // which prints at every advertisement of some devices, and at every percent
    const auto run = options.backend == Backend::sim ? runSimulated : runReal;
    const auto code = run(options, descriptors, output);
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
