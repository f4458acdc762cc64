#include "Tools/aurisk/Words.h"

#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace aurisk::tool {

namespace {

using WordList = std::vector<std::string>;

std::string_view nameOf(const Options& options) { return caseName(options.command); }

/// Takes the device, the only word that may be left.
void takeDevice(Options& options, WordList& words)
{
    if (words.size() > 1)
        throw UsageError(fmt::format(
            "{}: {} is one word too many (aurisk {} --help)", nameOf(options), inQuotes(words[1]), nameOf(options)));
    if (!words.empty())
        options.device = words.front();
}

/// Takes the last word, before which the device may stand.
std::string takeValue(Options& options, WordList& words, std::string_view what)
{
    if (words.empty())
        throw UsageError(fmt::format("{}: {} is missing", nameOf(options), what));
    auto value = words.back();
    words.pop_back();
    takeDevice(options, words);
    return value;
}

/// Takes `word` where it comes first.
bool takeFirst(WordList& words, std::string_view word)
{
    if (words.empty() || words.front() != word)
        return false;
    words.erase(words.begin());
    return true;
}

void takeNothing(Options& options, WordList& words)
{
    if (!words.empty())
        throw UsageError(fmt::format("{} takes no device: {}", nameOf(options), inQuotes(words.front())));
}

/// `[DEVICE]` or `set [DEVICE] V`
void takeNumber(Options& options, WordList& words, std::string_view what, Range range)
{
    options.set = takeFirst(words, "set");
    if (!options.set)
        return takeDevice(options, words);
    const auto missing = fmt::format("the new {}, {} to {},", what, range.low, range.high);
    options.value = wholeNumber(what, takeValue(options, words, missing), range);
}

void takeProgram(Options& options, WordList& words) { takeNumber(options, words, "program", programs); }

void takeVolume(Options& options, WordList& words) { takeNumber(options, words, "volume", volumes); }

void takeLevel(Options& options, WordList& words) { takeNumber(options, words, "transparency level", levels); }

void takeMute(Options& options, WordList& words)
{
    options.on = words.empty() ? std::nullopt : onOrOff(words.back());
    if (!options.on)
        throw UsageError("mute: say on or off (most hearing aids do not tell whether they are muted)");
    words.pop_back();
    takeDevice(options, words);
}

/// The last word is the new state where it can be one.
void takeBrEdr(Options& options, WordList& words)
{
    if (!words.empty())
        options.on = onOrOff(words.back());
    if (options.on)
        words.pop_back();
    if (words.size() > 1)
        throw UsageError(fmt::format("bredr: {} is neither on nor off", inQuotes(words[1])));
    takeDevice(options, words);
    if (options.continuous && !options.on.value_or(false))
        throw UsageError("bredr: --continuous goes with on");
}

ToneAction takeToneAction(WordList& words)
{
    if (takeFirst(words, "stop"))
        return ToneAction::stop;
    if (takeFirst(words, "supported"))
        return ToneAction::supported;
    return takeFirst(words, "base") ? ToneAction::base : ToneAction::play;
}

void takeTone(Options& options, WordList& words)
{
    options.toneAction = takeToneAction(words);
    const bool isStop = options.toneAction == ToneAction::stop;
    if (isStop || options.toneAction == ToneAction::supported) {
        if (options.dB || options.amp)
            throw UsageError(fmt::format("tone {} takes neither --db nor --amp", isStop ? "stop" : "supported"));
        return takeDevice(options, words);
    }
    options.value = wholeNumber("frequency", takeValue(options, words, "the frequency in Hz"), frequencies);
    if (options.toneAction == ToneAction::base && (options.dB || !options.amp))
        throw UsageError("tone base: say how loud, with --amp");
    if (options.dB.has_value() == options.amp.has_value())
        throw UsageError("tone: say how loud, with either --db or --amp");
}

void takeOrientation(Options& options, WordList& words)
{
    options.set = takeFirst(words, "set");
    if (!options.set)
        return takeDevice(options, words);
    const auto text = takeValue(options, words, "left or right");
    options.orientation = fromCaseName<AccessoryOrientation>(text);
    if (!options.orientation || options.orientation == AccessoryOrientation::unassigned)
        throw UsageError(fmt::format("orientation: {} is neither left nor right", inQuotes(text)));
}

Action takeAction(const Options& options, WordList& words)
{
    struct Named {
        std::string_view word;
        Action action;
    };
    constexpr Named actions[] = { { "show", Action::show }, { "set", Action::set }, { "export", Action::exportFile },
        { "import", Action::importFile } };
    for (const auto& [word, action] : actions)
        if (takeFirst(words, word))
            return action;
    throw UsageError(fmt::format("{}: say show, set, export or import", nameOf(options)));
}

/// `[DEVICE] FIELD VALUE [FIELD VALUE...]`
void takeFieldValues(Options& options, WordList& words)
{
    if (words.size() < 2)
        throw UsageError(fmt::format("{} set: FIELD VALUE is missing", nameOf(options)));
    std::size_t i = words.size() % 2;
    if (i == 1)
        options.device = words.front();
    for (; i < words.size(); i += 2)
        options.assignments.push_back({ words[i], words[i + 1] });
}

/// `show [DEVICE]`, `set [DEVICE] FIELD VALUE...`, `export [DEVICE] FILE` or `import [DEVICE] FILE`
void takeSettings(Options& options, WordList& words)
{
    options.action = takeAction(options, words);
    switch (options.action) {
    case Action::show: return takeDevice(options, words);
    case Action::set: return takeFieldValues(options, words);
    case Action::exportFile:
    case Action::importFile: options.file = takeValue(options, words, "the file"); return;
    }
}

void takeDsp(Options& options, WordList& words)
{
    const bool hasProgram = options.program || options.allPrograms;
    takeSettings(options, words);
    if (options.action == Action::set && options.allPrograms)
        throw UsageError("dsp set: --program is one program");
    if (options.action == Action::importFile && hasProgram)
        throw UsageError("dsp import: the file says which programs, so --program does not go with it");
    options.allPrograms = options.allPrograms || (options.action == Action::exportFile && !hasProgram);
}

/// `[DEVICE]` or `set [DEVICE] HZ=DB...`
void takeEq(Options& options, WordList& words)
{
    if (!takeFirst(words, "set"))
        return takeDevice(options, words);
    options.action = Action::set;
    const auto isGain = [](const std::string& word) { return word.find('=') != word.npos; };
    if (!words.empty() && !isGain(words.front())) {
        options.device = words.front();
        words.erase(words.begin());
    }
    if (words.empty())
        throw UsageError("eq set: HZ=DB is missing, as in 1000=-6");
    for (const auto& word : words) {
        if (!isGain(word))
            throw UsageError(fmt::format("eq set: {} is not HZ=DB, as in 1000=-6", inQuotes(word)));
        const auto middle = word.find('=');
        options.assignments.push_back({ word.substr(0, middle), word.substr(middle + 1) });
    }
}

/// `[DEVICE]` or `set [DEVICE] VALUE`
void takePreset(Options& options, WordList& words)
{
    if (!takeFirst(words, "set"))
        return takeDevice(options, words);
    options.action = Action::set;
    options.assignments = { { std::string(nameOf(options)), takeValue(options, words, "what it is to be") } };
}

void takeUpdate(Options& options, WordList& words)
{
    options.file = takeValue(options, words, "the file with the firmware");
}

/// A first word that holds anything but hexadecimal digits is the device.
void takeFrame(Options& options, WordList& words)
{
    const bool hasDevice
        = !words.empty() && words.front().find_first_not_of("0123456789abcdefABCDEF") != std::string::npos;
    if (hasDevice) {
        options.device = words.front();
        words.erase(words.begin());
    }
    if (words.empty())
        throw UsageError("raw: the frame is missing: FE 68 … 16, cmd di0 di1 payload, or for PL3 7E …");
    for (const auto& word : words) {
        const auto part = bytes("raw", word);
        options.frame.insert(options.frame.end(), part.begin(), part.end());
    }
    expectFrame(options.frame);
}

struct Row {
    Command command;
    void (*take)(Options&, WordList&);
    Manual manual;
};

constexpr std::string_view rawNotes
    = "HEX is hexadecimal digits, in pairs, in one word or several. What begins with FE 68 is a whole frame, with "
      "size,\n"
      "checksum and the closing 16; anything else is cmd di0 di1 and the payload, to which the rest is added:\n"
      "  aurisk raw X1-L fe68110201048016\n"
      "  aurisk raw X1-L 11 01 04\n"
      "A PL3 hearing aid takes a whole frame, which is 7E, the length of the rest in two bytes, the command, with 80\n"
      "added to read, and the payload, each 7D and 7E in them as 7D 5D and 7D 5E:\n"
      "  aurisk raw P3-L 7e000183\n"
      "A first word that holds anything but hexadecimal digits is the device.";
constexpr std::string_view toneNotes
    = "FREQ is in Hz, 1 to 65535. The hearing aid has to support the hearing test, which it enters for the tone and\n"
      "leaves afterwards. `tone stop` ends a tone that something else has left playing, `tone supported` asks whether\n"
      "there is a hearing test, and `tone base` sets the amplitude that it measures from.";
constexpr std::string_view dspNotes
    = "FIELD is a name that `dsp show` tells, or direction, noise or matrixGain. VALUE is the name of a case, its\n"
      "number (RAW) or its label; for a field of all bands a list with commas, or for one band FIELD@HZ:\n"
      "  aurisk dsp set X1-L inputMode ai0TC matrixGain 12\n"
      "  aurisk dsp set X1-L equalizerArray@1000 '-6 dB' --program 1\n"
      "A PL3 hearing aid shows the settings of the program that is running, and no more.\n"
      "FILE is JSON, \"-\" standard output or input. A file of one hearing aid fits all with the same chip, that of a\n"
      "pair its left and its right one. Fields that are missing in it stay as they are. What was imported is read\n"
      "back and compared.";
constexpr std::string_view eqNotes = "HZ is the frequency of a band, DB its gain: aurisk eq set X1-L 1000=-6 2000=-4";
constexpr std::string_view globalNotes
    = "FIELD is a name that `global show` tells, or numberOfPrograms; N is its number. What they stand for is up to\n"
      "the hearing aid. FILE is as for `aurisk dsp`.";
constexpr std::string_view profileNotes
    = "FIELD is a name that `profile show` tells, VALUE a text of at most 247 bytes or, for what belongs to the\n"
      "reserved field, a number; of modeConfig.mode1 the last part will do:\n"
      "  aurisk profile set X1-L seriesCode S2 mode1 2 age 67\n"
      "FILE is as for `aurisk dsp`. An import writes what differs from what the hearing aid holds, names included: a\n"
      "file of one hearing aid that holds adName gives both of a pair the same one.";
constexpr std::string_view logsNotes = "Only hearing aids with the chip a16 keep logs. What their numbers count is up "
                                       "to the hearing aid. With --both a\n"
                                       "FILE called log.bin stands for log-L.bin and log-R.bin.";
constexpr std::string_view updateNotes
    = "FILE is the image, sent as it is: whether it fits the hearing aid, nobody but you can know. The hearing aid "
      "checks\n"
      "what it received, starts it and leaves; then it is connected again, and old and new versions are told. With\n"
      "--both the same image goes to both at the same time. An update that was broken off begins anew.";
constexpr std::string_view simNotes
    = "Each --adapter NAME becomes one hearing aid of the default world, or of the --world FILE, for other computers "
      "and\n"
      "other adapters to find; --aid NAME says which, in the order of the adapters:\n"
      "  aurisk sim --adapter hci1 --adapter hci2 --aid X1-L --aid X1-R\n"
      "What is typed meanwhile is what wearers and links do: volume 9, X1-R power 0, drop; help tells the rest.";
constexpr std::string_view codecNotes
    = "Reads one JSON object a line from standard input, such as {\"op\": \"hex.toBytes\", \"text\": \"fe 68\"}, and "
      "writes\n"
      "one answer a line: {\"ok\": value}, {\"stop\": text} or {\"error\": text}. It needs no Bluetooth.";

/// Whether the word at that place is a VALUE of `profile set`, which may be empty.
bool isTextOfProfile(const Options& options, const WordList& words, std::size_t place)
{
    return options.command == Command::profile && words.front() == "set" && place >= 2
        && (words.size() - place) % 2 == 1;
}

const Row& rowOf(Command command)
{
    static const Row rows[] = {
        { Command::scan, takeNothing, { { "" } } },
        { Command::info, takeDevice, { { "[DEVICE]" } } },
        { Command::program, takeProgram, { { "[DEVICE]", "set [DEVICE] P" }, "P counts from 0." } },
        { Command::volume, takeVolume, { { "[DEVICE]", "set [DEVICE] V" }, "V is 0 to 15." } },
        { Command::mute, takeMute, { { "[DEVICE] on|off" }, "Most hearing aids do not tell whether they are muted." } },
        { Command::transparency, takeLevel, { { "[DEVICE]", "set [DEVICE] L" }, "L is 0 to 255." } },
        { Command::bredr, takeBrEdr, { { "[DEVICE]", "[DEVICE] on|off" } } },
        { Command::battery, takeDevice, { { "[DEVICE]" } } },
        { Command::find, takeDevice, { { "[DEVICE]" } } },
        { Command::tone, takeTone,
            { { "[DEVICE] FREQ --db N", "[DEVICE] FREQ --amp N", "stop [DEVICE]", "supported [DEVICE]",
                  "base [DEVICE] FREQ --amp N" },
                toneNotes } },
        { Command::orientation, takeOrientation, { { "[DEVICE]", "set [DEVICE] left|right" } } },
        { Command::monitor, takeDevice, { { "[DEVICE]" } } },
        { Command::raw, takeFrame, { { "[DEVICE] HEX..." }, rawNotes } },
        { Command::dsp, takeDsp,
            { { "show [DEVICE]", "set [DEVICE] FIELD VALUE [FIELD VALUE...]", "export [DEVICE] FILE",
                  "import [DEVICE] FILE" },
                dspNotes } },
        { Command::eq, takeEq, { { "[DEVICE]", "set [DEVICE] HZ=DB [HZ=DB...]" }, eqNotes } },
        { Command::noise, takePreset, { { "[DEVICE]", "set [DEVICE] off|weak|medium|strong" } } },
        { Command::direction, takePreset, { { "[DEVICE]", "set [DEVICE] normal|tv|meeting|face" } } },
        { Command::global, takeSettings,
            { { "show [DEVICE]", "set [DEVICE] FIELD N [FIELD N...]", "export [DEVICE] FILE", "import [DEVICE] FILE" },
                globalNotes } },
        { Command::profile, takeSettings,
            { { "show [DEVICE]", "set [DEVICE] FIELD VALUE [FIELD VALUE...]", "export [DEVICE] FILE",
                  "import [DEVICE] FILE" },
                profileNotes } },
        { Command::logs, takeDevice, { { "[DEVICE]", "[DEVICE] [--events FILE] [--loop-gain FILE]" }, logsNotes } },
        { Command::update, takeUpdate, { { "[DEVICE] FILE", "[DEVICE] FILE --type 0|1|2" }, updateNotes } },
        { Command::sim, takeNothing, { { "[--adapter NAME]... [--aid NAME]... [--world FILE]" }, simNotes } },
        { Command::codec, takeNothing, { { "" }, codecNotes } },
    };
    return *std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) { return row.command == command; });
}

} // namespace

void takeWords(Options& options, std::vector<std::string> words)
{
    for (std::size_t i = 0; i < words.size(); ++i)
        if (words[i].empty() && !isTextOfProfile(options, words, i))
            throw UsageError(fmt::format("{}: an empty word", nameOf(options)));
    rowOf(options.command).take(options, words);
}

const Manual& manualOf(Command command) { return rowOf(command).manual; }

} // namespace aurisk::tool
