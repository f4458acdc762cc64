#include "AuriskSDK/Platform/Asio/MainQueue.h"
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

/// Runs one command on the simulated radio and the main queue.
ExitCode runSimulated(const Options& options, Descriptors& descriptors, Output& output)
{
    WorldFile file(options.world, options.newWorld);
    const auto simulator = Simulator::create(file.world());
    auto code = ExitCode::done;
    auto run = Run::start(options, simulator->platform(), output, [&code](ExitCode ended) {
        code = ended;
        stopMainQueue();
    });
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
    run.reset();
    file.keep(simulator->world());
    return code;
}

ExitCode runCommand(const Options& options, Descriptors& descriptors, Output& output)
{
    if (options.command == Command::codec)
        return ExitCode(codec::runCodec(STDIN_FILENO, descriptors.output()));
    if (options.command == Command::sim)
        return runSim(options, output);
    if (options.backend == Backend::bluez) {
        output.failure({ .code = ExitCode::bluetoothUnavailable,
            .sentence = "this build has no backend for BlueZ (--backend sim is there)" });
        return ExitCode::bluetoothUnavailable;
    }
    AuriskLog::setEnable(options.log);
    if (!options.log)
        descriptors.silenceLibrary(); // which prints at every advertisement of some devices, and at every percent
    const auto code = runSimulated(options, descriptors, output);
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
