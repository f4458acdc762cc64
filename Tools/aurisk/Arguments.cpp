#include "Tools/aurisk/Arguments.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Tools/aurisk/Values.h"
#include "Tools/aurisk/Words.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace aurisk::tool {

namespace {

constexpr auto introduction = "Finds hearing aids over Bluetooth Low Energy, reads them and adjusts them.";

constexpr auto footer
    = R"(DEVICE is an identifier, an address or a name. It may be left out where only one hearing aid is in range. With
--both it is the name of a pair without -L and -R, and may be left out where only one pair is in range.
Programs count from 0. PL3 hearing aids know info, program, volume, mute, battery, monitor, raw and dsp show.

Examples:
  aurisk scan                          who is in range
  aurisk info X1-L                     all about one of them
  aurisk volume set X1-L 3             its current program becomes quieter
  aurisk volume set X1 3 --both        the same for the pair X1-L and X1-R
  aurisk eq set X1-L 1000=-6           one band of its equaliser at -6 dB
  aurisk dsp export X1-L fit.json      the settings of all its programs, to keep or to edit
  aurisk dsp import X1 fit.json --both     ... and to give to a pair
  aurisk profile show X1-L             what it is, and for whom it was fitted
  aurisk logs X1-L                     how it was used
  aurisk update X1 a16.bin --both      new firmware for a pair
  aurisk monitor --both --json         what the wearer of a pair does, for a program to read
  aurisk scan --backend sim            simulated hearing aids, without Bluetooth
  aurisk scan --world w.json --new-world    begin a world of them that lasts from run to run
  aurisk sim --adapter hci1            be a hearing aid, for another computer or another adapter to find

Exit codes: 0 done, 1 the device refused or timed out, 2 wrong usage or unusable file, 3 Bluetooth unavailable,
4 device not found, 130 interrupted. With --json a failure is an object {"error": sentence}, too.)";

/// Help as this tool prints it: the forms of each command instead of a list of positional arguments.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App* app, std::string) const override
    {
        const auto command = fromCaseName<Command>(app->get_name());
        if (!command)
            return "\nUsage: aurisk [OPTIONS] COMMAND [DEVICE] ...\n";
        std::string usage = "\nUsage:\n";
        for (const auto form : manualOf(*command).forms)
            usage += fmt::format("  aurisk {}{}{}\n", app->get_name(), form.empty() ? "" : " ", form);
        return usage;
    }
    std::string make_positionals(const CLI::App*) const override { return ""; }
};

/// Declares the options, and fills an `Options` as they are met.
class Parser {
public:
    Parser()
        : _app(introduction, "aurisk")
    {
        const auto formatter = std::make_shared<HelpFormatter>();
        constexpr int width = 26;
        formatter->column_width(width);
        _app.formatter(formatter);
        _app.footer(footer);
        _app.require_subcommand(0, 1);
        _app.fallthrough();
        _app.set_help_flag("-h,--help", "This text");
        declareGlobals();
        for (const auto& row : enumCases<Command>)
            declare(row);
    }

    std::variant<Options, Information> parse(std::vector<std::string> arguments)
    {
        std::reverse(arguments.begin(), arguments.end()); // as the parser wants them
        try {
            _app.parse(std::move(arguments));
        } catch (const CLI::CallForHelp&) {
            const auto chosen = _app.get_subcommands();
            return Information{ (chosen.empty() ? &_app : chosen.front())->help() };
        } catch (const CLI::CallForVersion&) {
            return Information{ fmt::format("aurisk {} ({})\n", AURISK_VERSION, AuriskLog::sdkVersion()) };
        } catch (const CLI::ParseError& error) {
            refuse(error);
        }
        return finished();
    }

private:
    using Take = std::function<void(const std::string&)>;

    /// An option with a value, whose text `take` turns into what it stands for.
    static void option(CLI::App& app, const std::string& name, const std::string& placeholder, const std::string& help,
        const Take& take)
    {
        app.add_option_function<std::string>("--" + name, checked(name, take), help)
            ->option_text(placeholder)
            ->take_last();
    }

    /// The same, for an option that may be given several times.
    static void repeatableOption(CLI::App& app, const std::string& name, const std::string& placeholder,
        const std::string& help, const Take& take)
    {
        const auto takeEach = [takeOne = checked(name, take)](const std::vector<std::string>& texts) {
            std::for_each(texts.begin(), texts.end(), takeOne);
        };
        app.add_option_function<std::vector<std::string>>("--" + name, takeEach, help)
            ->option_text(placeholder)
            ->allow_extra_args(false);
    }

    static Take checked(const std::string& name, const Take& take)
    {
        return [name, take](const std::string& text) {
            if (text.starts_with("--")) // the next option, whose name is no value
                throw UsageError(fmt::format("--{} needs a value", name));
            take(text);
        };
    }

    void declareGlobals()
    {
        option(_app, "backend", "bluez|sim", "The radio: the computer's (default) or a simulated one",
            [this](const std::string& text) { takeBackend(text); });
        repeatableOption(_app, "adapter", "NAME", "Which of the computer's adapters: hci0, ... (default: the first)",
            [this](const std::string& text) { takeAdapter(text); });
        option(_app, "world", "FILE", "The simulated hearing aids, and their radio; what changes is written back",
            [this](const std::string& text) { _options.world = text; });
        _app.add_flag("--new-world", _options.newWorld, "Begin FILE with the default world; FILE must not exist");
        _app.add_flag("--both", _options.both, "The left and the right one of a pair");
        _app.add_flag("--json", _options.json, "One JSON object a line, and nothing else, on standard output");
        _app.add_flag("--log", _options.log, "The library's log on standard error");
        option(_app, "timeout", "S", "Limit of each wait in seconds (default 5)",
            [this](const std::string& text) { _options.timeout = timeSpan("--timeout", text); });
        _app.set_version_flag("--version", "", "The version of this tool and of the protocol");
    }

    void declare(const EnumCase<Command>& row)
    {
        auto& command = *_app.add_subcommand(std::string(row.name), std::string(row.label));
        const auto notes = std::string(manualOf(row.value).notes);
        command.group("Commands");
        command.footer(notes + (notes.empty() ? "" : "\n\n") + "What holds for every command: aurisk --help");
        command.add_option("words", _words)->expected(0, -1);
        switch (row.value) {
        case Command::scan:
            declareSpan(command, "duration", "How long to scan in seconds (default 5)", Seconds(5));
            command.add_flag("--updates", _options.updates, "Show every advertisement, not only the first of each");
            break;
        case Command::monitor:
            declareSpan(command, "duration", "How long to listen in seconds (default: until interrupted)", {});
            break;
        case Command::find:
            declareSpan(command, "seconds", "How long the hearing aid is audible (default 5)", Seconds(5));
            break;
        case Command::volume:
            declareNumber(command, "program", "P", "The program whose volume it is (default: the current one)",
                programs, _options.program);
            break;
        case Command::bredr:
            command.add_flag("--continuous", _options.continuous, "With on: it stays on continuously");
            break;
        case Command::tone: declareTone(command); break;
        case Command::dsp:
            option(command, "program", "P|all", "Which program (default: the current one; of an export: all)",
                [this](const std::string& text) { takePrograms(text); });
            break;
        case Command::logs:
            declareFile(command, "events", "The log of user events goes there, as it is", _options.events);
            declareFile(command, "loop-gain", "The log of loop gains goes there, as it is", _options.loopGain);
            break;
        case Command::sim:
            repeatableOption(command, "aid", "NAME", "Which hearing aid to be (default: the first, or the first pair)",
                [this](const std::string& text) { takeOnce("aid", text, _options.aids); });
            break;
        case Command::update:
            option(command, "type", "0|1|2", "Which of the hearing aid's images it is (default 0)",
                [this](const std::string& text) { takeFirmwareType(text); });
            break;
        case Command::eq:
        case Command::noise:
        case Command::direction:
            declareNumber(
                command, "program", "P", "Which program (default: the current one)", blockPrograms, _options.program);
            break;
        default: break;
        }
    }

    void declareTone(CLI::App& command)
    {
        declareNumber(command, "db", "N", "How loud, in dB (0 to 255)", decibels, _options.dB);
        declareNumber(command, "amp", "N", "How loud, as an amplitude (0 to 32767)", amplitudes, _options.amp);
        declareSpan(command, "seconds", "How long, in seconds (default 1)", Seconds(1));
        option(command, "timestamp", "T", "Passed on to the hearing aid (default 0)",
            [this](const std::string& text) { _options.timestamp = wholeNumber("--timestamp", text, timestamps); });
    }

    void declareSpan(CLI::App& command, const std::string& name, const std::string& help, std::optional<Seconds> usual)
    {
        option(command, name, "S", help,
            [this, name](const std::string& text) { _options.duration = timeSpan("--" + name, text); });
        _usualSpan[command.get_name()] = usual;
    }

    static void declareFile(CLI::App& command, const std::string& name, const std::string& help, std::string& path)
    {
        option(command, name, "FILE", help, [name, &path](const std::string& text) {
            if (text.empty() || text == "-")
                throw UsageError(fmt::format("--{}: the bytes of a log need a file", name));
            path = text;
        });
    }

    static void declareNumber(CLI::App& command, const std::string& name, const std::string& placeholder,
        const std::string& help, Range range, std::optional<int>& value)
    {
        option(command, name, placeholder, help,
            [name, range, &value](const std::string& text) { value = wholeNumber("--" + name, text, range); });
    }

    void takePrograms(const std::string& text)
    {
        _options.allPrograms = text == "all";
        _options.program.reset();
        if (!_options.allPrograms)
            _options.program = wholeNumber("--program", text, programs);
    }

    void takeFirmwareType(const std::string& text)
    {
        _options.firmwareType = *fromRawValue<DFUFirmwareType>(wholeNumber("--type", text, firmwareTypes));
    }

    void takeBackend(const std::string& text)
    {
        const auto backend = fromCaseName<Backend>(text);
        if (!backend)
            throw UsageError(fmt::format("--backend: {} is neither sim nor bluez", inQuotes(text)));
        _backend = *backend;
    }

    void takeAdapter(const std::string& text)
    {
        constexpr std::string_view kind = "hci";
        const auto number = text.substr(std::min(kind.size(), text.size()));
        if (!text.starts_with(kind) || number.empty() || number.find_first_not_of("0123456789") != number.npos)
            throw UsageError(fmt::format("--adapter: {} is no adapter, such as hci0", inQuotes(text)));
        takeOnce("adapter", text, _options.adapters);
    }

    static void takeOnce(std::string_view name, const std::string& text, std::vector<std::string>& all)
    {
        if (std::find(all.begin(), all.end(), text) != all.end())
            throw UsageError(fmt::format("--{}: {} is named twice", name, inQuotes(text)));
        all.push_back(text);
    }

    /// The simulated hearing aids of a world are heard by the simulated radio alone, unless they are to be served.
    void chooseRadio()
    {
        const bool hasWorld = !_options.world.empty();
        if (_options.command == Command::sim) {
            if (_backend)
                throw UsageError("sim: --backend does not go with it, since it serves on real adapters");
            return expectAdapters();
        }
        if (hasWorld && _backend == Backend::bluez)
            throw UsageError("--world is about simulated hearing aids, which --backend bluez does not hear");
        _options.backend = _backend.value_or(hasWorld ? Backend::sim : Backend::bluez);
        if (_options.backend == Backend::sim && !_options.adapters.empty())
            throw UsageError(fmt::format("--adapter is about a real radio, and {} about a simulated one",
                _backend ? "--backend sim" : "--world"));
        if (_options.adapters.size() > 1)
            throw UsageError("--adapter names one adapter, of which only sim takes several");
    }

    /// As many as there are hearing aids to serve, where those are named.
    void expectAdapters() const
    {
        const auto aids = _options.aids.size(), adapters = _options.adapters.size();
        if (aids != 0 && aids != std::max<std::size_t>(adapters, 1))
            throw UsageError(fmt::format(
                "sim: {} --aid and {} --adapter, where each hearing aid needs an adapter of its own", aids, adapters));
    }

    Options finished()
    {
        const auto chosen = _app.get_subcommands();
        if (chosen.empty())
            throw UsageError("a command is missing (aurisk --help lists them)");
        const auto name = chosen.front()->get_name();
        _options.command = *fromCaseName<Command>(name);
        takeWords(_options, _words);
        if (!_options.duration)
            _options.duration = _usualSpan[name];
        chooseRadio();
        if (!_options.events.empty() && _options.events == _options.loopGain)
            throw UsageError("--events and --loop-gain name the same file");
        for (const auto& file : { _options.file, _options.events, _options.loopGain })
            if (isSameFile(file, _options.world))
                throw UsageError(fmt::format("{} is the file of the world", inQuotes(file)));
        if (_options.newWorld && _options.world.empty())
            throw UsageError("--new-world goes with --world FILE");
        if (_options.both && isAboutNoDevice(_options.command))
            throw UsageError(fmt::format("--both does not go with {}", name));
        return std::move(_options);
    }

    static bool isAboutNoDevice(Command command)
    {
        return command == Command::scan || command == Command::sim || command == Command::codec;
    }

    static bool isSameFile(const std::string& one, const std::string& other)
    {
        namespace fs = std::filesystem;
        std::error_code unknown;
        const auto whole
            = [&](const std::string& path) { return fs::weakly_canonical(fs::absolute(path, unknown), unknown); };
        return !one.empty() && !other.empty() && whole(one) == whole(other);
    }

    [[noreturn]] void refuse(const CLI::ParseError& error) const
    {
        const auto rest = _app.remaining(true);
        const auto chosen = _app.get_subcommands();
        if (rest.empty()) { // an option without its value: "--program: 1 required …"
            const std::string text = error.what();
            throw UsageError(text.substr(0, text.find(':')) + " needs a value");
        }
        if (rest.front().starts_with("-"))
            throw UsageError(fmt::format("{} is no option of {} (aurisk {}--help lists them)", printable(rest.front()),
                chosen.empty() ? "aurisk" : chosen.front()->get_name(),
                chosen.empty() ? "" : chosen.front()->get_name() + " "));
        throw UsageError(fmt::format("{} is no command (aurisk --help lists them)", inQuotes(rest.front())));
    }

    Options _options;
    std::optional<Backend> _backend; ///< as typed
    std::vector<std::string> _words;
    std::map<std::string, std::optional<Seconds>> _usualSpan; ///< by command
    CLI::App _app;
};

} // namespace

std::variant<Options, Information> parseArguments(const std::vector<std::string>& arguments)
{
    return Parser().parse(arguments);
}

bool wantsJson(const std::vector<std::string>& arguments)
{
    return std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
}

} // namespace aurisk::tool
