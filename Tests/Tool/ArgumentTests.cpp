#include "Tests/Support/Refusal.h"
#include "Tests/Tool/ToolScenario.h"
#include "Tools/aurisk/Values.h"

#include <rapidcheck/gtest.h>

namespace aurisk::tests {
namespace {

using tool::Command;
using tool::Options;

std::string refusal(const Lines& words)
{
    return refusalOf([&] { tool::parseArguments(words); });
}

TEST(Arguments, AMistakeIsToldInOneSentence)
{
    struct {
        std::string commandLine, sentence;
    } const cases[] = {
        { "", "a command is missing (aurisk --help lists them)" },
        { "volum X1-L", "\"volum\" is no command (aurisk --help lists them)" },
        { "--frob", "--frob is no option of aurisk (aurisk --help lists them)" },
        { "scan --frob", "--frob is no option of scan (aurisk scan --help lists them)" },
        { "volume set X1-L 3 --continuous", "--continuous is no option of volume (aurisk volume --help lists them)" },
        { "volume set", "volume: the new volume, 0 to 15, is missing" },
        { "volume set X1-L", "volume: \"X1-L\" is no whole number" },
        { "volume set X1-L 16", "volume: 16 is outside 0 to 15" },
        { "volume set X1-L -1", "volume: -1 is outside 0 to 15" },
        { "volume set X1-L 99999999999999999999", "volume: 99999999999999999999 is outside 0 to 15" },
        { "volume set X1-L 3.5", "volume: \"3.5\" is no whole number" },
        { "volume set X1-L 3 4", "volume: \"3\" is one word too many (aurisk volume --help)" },
        { "volume X1-L --program 15", "--program: 15 is outside 0 to 14" },
        { "volume X1-L --program", "--program needs a value" },
        { "program set 15", "program: 15 is outside 0 to 14" },
        { "transparency set 256", "transparency level: 256 is outside 0 to 255" },
        { "mute X1-L", "mute: say on or off (most hearing aids do not tell whether they are muted)" },
        { "bredr X1-L of", "bredr: \"of\" is neither on nor off" },
        { "bredr X1-L off --continuous", "bredr: --continuous goes with on" },
        { "tone X1-L 1000", "tone: say how loud, with either --db or --amp" },
        { "tone 65536 --db 1", "frequency: 65536 is outside 1 to 65535" },
        { "tone 1000 --amp 32768", "--amp: 32768 is outside 0 to 32767" },
        { "tone stop X1-L --db 1", "tone stop takes neither --db nor --amp" },
        { "tone base X1-L 1000 --db 1", "tone base: say how loud, with --amp" },
        { "tone base X1-L --amp 1", "frequency: \"X1-L\" is no whole number" },
        { "logs X1-L --events -", "--events: the bytes of a log need a file" },
        { "logs --events a --loop-gain a", "--events and --loop-gain name the same file" },
        { "logs X1-L --events --json", "--events needs a value" },
        { "dsp export X1-L w.json --world ./w.json", "\"w.json\" is the file of the world" },
        { "profile", "profile: say show, set, export or import" },
        { "orientation set X1-L unassigned", "orientation: \"unassigned\" is neither left nor right" },
        { "raw X1-L", "raw: the frame is missing: FE 68 … 16, cmd di0 di1 payload, or for PL3 7E …" },
        { "raw X1-L 1x", "raw: \"1x\" is not hexadecimal" },
        { "raw X1-L 11 010", "raw: \"010\" has 3 hexadecimal digits, an even number is needed" },
        { "raw 1101", "frame: 2 byte(s), at least cmd di0 di1 are needed" },
        { "raw fe681101", "frame: 4 bytes, a whole frame has at least 8 (FE 68 cmd size di0 di1 checksum 16)" },
        { "raw fe68110301048016", "frame: its size byte says 3, but 2 bytes lie between it and the checksum" },
        { "raw fe68110201048017", "frame: it ends with 17, not with 16" },
        { "raw fe68110201048116", "frame: its checksum is 81, 80 is needed" },
        { "dsp", "dsp: say show, set, export or import" },
        { "dsp set X1-L", "dsp set: FIELD VALUE is missing" },
        { "dsp set inputMode 1 --program all", "dsp set: --program is one program" },
        { "dsp show --program 15", "--program: 15 is outside 0 to 14" },
        { "eq --program 5", "--program: 5 is outside 0 to 4" },
        { "dsp import", "dsp: the file is missing" },
        { "dsp import f.json --program 1",
            "dsp import: the file says which programs, so --program does not go with it" },
        { "eq set X1-L", "eq set: HZ=DB is missing, as in 1000=-6" },
        { "eq set X1-L 1000=-6 2000", "eq set: \"2000\" is not HZ=DB, as in 1000=-6" },
        { "noise set", "noise: what it is to be is missing" },
        { "scan X1-L", "scan takes no device: \"X1-L\"" },
        { "scan --both", "--both does not go with scan" },
        { "scan --duration 0", "--duration: 0 is outside 0.001 to 86400 seconds" },
        { "--timeout soon scan", "--timeout: \"soon\" is no number of seconds" },
        { "scan --timeout nan", "--timeout: \"nan\" is no number of seconds" },
        { "scan --backend usb", "--backend: \"usb\" is neither sim nor bluez" },
        { "scan --backend bluez --world w.json",
            "--world is about simulated hearing aids, which --backend bluez does not hear" },
        { "scan --adapter hci0 --backend sim",
            "--adapter is about a real radio, and --backend sim about a simulated one" },
        { "scan --adapter hci0 --world w.json", "--adapter is about a real radio, and --world about a simulated one" },
        { "scan --adapter hci0 --adapter hci1", "--adapter names one adapter, of which only sim takes several" },
        { "scan --adapter", "--adapter needs a value" },
        { "scan --adapter hci", "--adapter: \"hci\" is no adapter, such as hci0" },
        { "scan --adapter hci0/dev", "--adapter: \"hci0/dev\" is no adapter, such as hci0" },
        { "sim --adapter hci0 --adapter hci0", "--adapter: \"hci0\" is named twice" },
        { "sim --backend sim", "sim: --backend does not go with it, since it serves on real adapters" },
        { "sim X1-L", "sim takes no device: \"X1-L\"" },
        { "sim --both", "--both does not go with sim" },
        { "sim --aid X1-L --aid X1-L", "--aid: \"X1-L\" is named twice" },
        { "sim --aid X1-L --aid X1-R --adapter hci1",
            "sim: 2 --aid and 1 --adapter, where each hearing aid needs an adapter of its own" },
        { "sim --aid X1-L --adapter hci0 --adapter hci1",
            "sim: 1 --aid and 2 --adapter, where each hearing aid needs an adapter of its own" },
        { "scan --aid X1-L", "--aid is no option of scan (aurisk scan --help lists them)" },
        { "scan --new-world", "--new-world goes with --world FILE" },
    };
    for (const auto& [commandLine, sentence] : cases)
        EXPECT_EQ(refusal(wordsOf(commandLine)), sentence) << commandLine;
    EXPECT_EQ(refusal({ "info", "" }), "info: an empty word");
    EXPECT_EQ(refusal({ "profile", "set", "", "adName", "x" }), "profile: an empty word");
    EXPECT_EQ(refusal({ "profile", "set", "X1-L", "", "x" }), "profile: an empty word");
    EXPECT_EQ(refusal({ "info", "a\033[1m", "b" }), "info: \"b\" is one word too many (aurisk info --help)");
    EXPECT_EQ(refusal({ "volume", "set", "\033[1m" }), "volume: \"?[1m\" is no whole number");
}

TEST(Arguments, OptionsOfEveryCommandStandBeforeOrAfterIt)
{
    for (const auto* line : { "--json --both --timeout 2.5 volume set X1 3 --program 1",
             "volume set X1 3 --program 1 --json --both --timeout 2.5",
             "--json volume --program 1 set --timeout 9 X1 --both 3 --timeout=2.5" }) {
        const auto options = optionsOf(line);
        EXPECT_TRUE(options.json && options.both && options.set) << line;
        EXPECT_EQ(options.command, Command::volume) << line;
        EXPECT_EQ(options.device, "X1") << line;
        EXPECT_EQ(options.value, 3) << line;
        EXPECT_EQ(options.program, 1) << line;
        EXPECT_EQ(options.timeout, Seconds(2.5)) << line;
    }
}

TEST(Arguments, TheRadioIsTheComputersUnlessAWorldIsNamed)
{
    struct {
        std::string commandLine;
        tool::Backend backend;
        Lines adapters;
    } const cases[] = {
        { "scan", tool::Backend::bluez, {} },
        { "scan --adapter hci1", tool::Backend::bluez, { "hci1" } },
        { "--backend bluez --adapter=hci12 scan", tool::Backend::bluez, { "hci12" } },
        { "scan --backend sim", tool::Backend::sim, {} },
        { "scan --world w.json", tool::Backend::sim, {} },
        { "scan --world w.json --backend sim", tool::Backend::sim, {} },
        { "volume --adapter hci0 X1-L", tool::Backend::bluez, { "hci0" } },
        { "--adapter hci1 sim --adapter hci0 --world w.json", tool::Backend::bluez, { "hci1", "hci0" } },
    };
    for (const auto& [commandLine, backend, adapters] : cases) {
        const auto options = optionsOf(commandLine);
        EXPECT_EQ(options.backend, backend) << commandLine;
        EXPECT_EQ(options.adapters, adapters) << commandLine;
    }
    EXPECT_EQ(optionsOf("volume --adapter hci0 X1-L").device, "X1-L");
    EXPECT_THAT(optionsOf("sim --aid X1-R --adapter hci1 --aid X1-L --adapter hci0").aids, ElementsAre("X1-R", "X1-L"));
}

TEST(Arguments, TheLastWordIsTheValueAndTheOneBeforeItTheDevice)
{
    struct {
        std::string commandLine, device;
        std::optional<int> value;
    } const cases[] = {
        { "volume", "", {} },
        { "volume X1-L", "X1-L", {} },
        { "volume 3", "3", {} },
        { "volume set 3", "", 3 },
        { "volume set 3 5", "3", 5 },
        { "volume set set 5", "set", 5 },
        { "program set X1-L 0", "X1-L", 0 },
        { "info scan", "scan", {} },
        { "mute on on", "on", 1 },
        { "mute off", "", 0 },
        { "bredr on", "", 1 },
        { "bredr on off", "on", 0 },
        { "bredr X1-L", "X1-L", {} },
        { "tone 1000 --db 40", "", 1000 },
        { "tone X1-L 1000 --db 40", "X1-L", 1000 },
        { "tone stop X1-L", "X1-L", {} },
    };
    for (const auto& [commandLine, device, value] : cases) {
        const auto options = optionsOf(commandLine);
        EXPECT_EQ(options.device, device) << commandLine;
        const auto said = options.on ? std::optional<int>(*options.on) : options.value;
        EXPECT_EQ(said, value) << commandLine;
    }
}

TEST(Arguments, AnOddWordBeforeFieldsAndValuesIsTheDevice)
{
    using Assignments = std::vector<tool::Assignment>;
    struct {
        Lines words;
        std::string device;
        Assignments assignments;
    } const cases[] = {
        { { "dsp", "set", "a", "1" }, "", { { "a", "1" } } },
        { { "dsp", "set", "X1-L", "a", "-6 dB", "b", "-1" }, "X1-L", { { "a", "-6 dB" }, { "b", "-1" } } },
        { { "global", "set", "X1-L", "a", "1" }, "X1-L", { { "a", "1" } } },
        { { "eq", "set", "250=0", "500=-2" }, "", { { "250", "0" }, { "500", "-2" } } },
        { { "eq", "set", "X1-L", "250=-2" }, "X1-L", { { "250", "-2" } } },
        { { "noise", "set", "X1-L", "weak" }, "X1-L", { { "noise", "weak" } } },
    };
    for (const auto& [words, device, assignments] : cases) {
        const auto options = std::get<Options>(tool::parseArguments(words));
        EXPECT_EQ(options.action, tool::Action::set) << words.back();
        EXPECT_EQ(options.device, device);
        EXPECT_EQ(options.assignments, assignments);
    }
}

TEST(Arguments, AFrameIsGivenWholeOrAsItsParts)
{
    const Data readVolume = { 0xFE, 0x68, 0x11, 0x02, 0x01, 0x04, 0x80, 0x16 };
    for (const auto* line :
        { "raw fe68110201048016", "raw X1-L FE 68 11 02 01 04 80 16", "raw X1-L 110104", "raw 11 0104" })
        EXPECT_EQ(tool::frame(optionsOf(line).frame).toData(), readVolume) << line;
    // 68 + 1D + 03 + AE + 00 + 07 = 13D
    EXPECT_EQ(tool::frame(optionsOf("raw 1dae0007").frame).toData(),
        (Data{ 0xFE, 0x68, 0x1D, 0x03, 0xAE, 0x00, 0x07, 0x3D, 0x16 }));
    EXPECT_EQ(optionsOf("raw 0A:1B:2C:3D:4E:5F 110104").device, "0A:1B:2C:3D:4E:5F");
    EXPECT_EQ(tool::frame(optionsOf("raw " + std::string(512, '0')).frame).data->size(), 253U);
    EXPECT_EQ(refusal({ "raw", std::string(514, '0') }), "frame: a payload of 254 bytes, at most 253 fit");
}

TEST(Arguments, AFrameForPL3IsGivenWhole)
{
    EXPECT_EQ(tool::pl3Request(optionsOf("raw P3-L 7e 000183").frame),
        (PL3Request{ .command = PL3Command::batteryLevel, .read = true }));
    EXPECT_EQ(tool::pl3Request(optionsOf("raw P3-L 7e0003007d5e05").frame),
        (PL3Request{ .command = PL3Command::volumeLevel, .data = Data{ 0x7E, 0x05 } }));
    EXPECT_EQ(tool::pl3Request(optionsOf("raw 7e00ff13" + std::string(508, 'e')).frame).data->size(), 254U);
    struct {
        std::string frame, sentence;
    } const cases[] = {
        { "7e000183", "accepted" },
        { "7e00028301", "accepted" }, // whatever it may be good for
        { "7e000114", "frame: 14 is no command of PL3 hearing aids, which are 00 to 13" },
        { "7e00010f", "frame: it writes, and has nothing to write (8f reads)" },
        { "7e000283", "frame: its length does not count command and payload, or a 7D or 7E in it is not escaped" },
        { "7e0002007e", "frame: its length does not count command and payload, or a 7D or 7E in it is not escaped" },
        { "7e", "frame: its length does not count command and payload, or a 7D or 7E in it is not escaped" },
        { "7e010000" + std::string(510, '1'),
            "frame: PL3 hearing aids take 7E, the length in two bytes, the command and at most 254 bytes of payload" },
    };
    for (const auto& [frame, sentence] : cases)
        EXPECT_EQ(refusal({ "raw", frame }), sentence) << frame;
}

TEST(Arguments, HelpNamesTheFormsOfACommand)
{
    const auto text = [](const std::string& commandLine) {
        return std::get<tool::Information>(tool::parseArguments(wordsOf(commandLine))).text;
    };
    EXPECT_THAT(text("volume --help"), HasSubstr("aurisk volume set [DEVICE] V\n"));
    EXPECT_THAT(text("volume set -h"), HasSubstr("--program P"));
    EXPECT_THAT(text("--help"), HasSubstr("--world FILE"));
    for (const auto& row : enumCases<Command>)
        EXPECT_THAT(text("--help"), HasSubstr("\n  " + std::string(row.name) + " "));
    EXPECT_THAT(text("--version"), HasSubstr("2025_05_09_V1.3"));
}

RC_GTEST_PROP(Arguments, AreTakenOrRefusedInASentenceWhateverTheyAre, ())
{
    const auto word = rc::gen::oneOf(
        rc::gen::element<std::string>("scan", "info", "program", "volume", "mute", "transparency", "bredr", "battery",
            "find", "tone", "orientation", "monitor", "raw", "dsp", "eq", "global", "profile", "logs", "", "show",
            "import", "export", "250=-2", "set", "stop", "on", "off", "X1-L", "-1", "0", "15", "256", "1e9", "--",
            "--json", "--both", "--program", "--db", "--db=", "--timeout", "--world", "sim", "--adapter", "hci0",
            "--aid", "-h", "fe68", "left"),
        rc::gen::string<std::string>());
    const auto words = *rc::gen::container<Lines>(word);
    const auto sentence = refusal(words);
    RC_ASSERT(!sentence.empty());
    RC_ASSERT(sentence.find('\n') == sentence.npos);
}

} // namespace
} // namespace aurisk::tests
