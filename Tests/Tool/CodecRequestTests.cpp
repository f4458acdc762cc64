#include "Tools/aurisk/Codec.h"

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskRequest.h"
#include "Tests/Tool/CodecLines.h"

#include <set>
#include <variant>

namespace aurisk::tests {
namespace {

std::string encoding(std::string_view request)
{
    return R"({"op":"request.encode","request":)" + std::string(request) + "}";
}

TEST(CodecRequest, OfEveryCaseIsEncoded)
{
    const struct {
        std::string_view request;
        std::string_view bytes;
    } cases[] = {
        { R"({"readVolume":{"program":0}})", "fe68110201048016" },
        { R"({"readDsp":{"program":0}})", "fe68110200037e16" },
        { R"({"readGlobalDsp":{"chip":"a16"}})", "fe68110206038416" },
        { R"({"readProfile":{"type":"advertisementName"}})", "fe68110213089616" },
        { R"({"writeDsp":{"dsp":{"a4":"0102030405060708090a0b0c"},"program":2,"withResponse":false}})",
            "fe68140e82030102030405060708090a0b0c5d16" },
        { R"({"writeDspData":{"data":"07FF","program":2,"withResponse":true}})", "fe681404020307ff8b16" },
        { R"({"writeGlobalDsp":{"global":{"a4":"111213141516171819"},"chip":"a4","withResponse":true}})",
            "fe68140b05031112131415161718194c16" },
        { R"({"writeGlobalDsp":{"global":{"a16":"2122232425262728292a2b2c"},"chip":"a16","withResponse":false}})",
            "fe68140e86032122232425262728292a2b2ce116" },
        { R"({"writeGlobalDspData":{"data":"","chip":"unassigned","withResponse":false}})", "fe68140285030616" },
        { R"({"writeProfile":{"data":"5831","type":"productSku"}})", "fe681404040858311516" },
        { R"({"writeOrientation":{"orientation":"left"}})", "fe6814038005000416" },
        { R"({"controlVolume":{"volume":5,"program":1}})", "fe681c020125ac16" },
        { R"({"controlProgram":{"program":2}})", "fe681c0202038b16" },
        { R"({"controlMute":{"mute":true}})", "fe681c0205008b16" },
        { R"({"controlBeep":{"value":255}})", "fe681c0206ff8b16" },
        { R"({"setTransparency":{"level":7}})", "fe681d03ae00073d16" },
        { R"({"setBrEdr":{"enable":true,"continuousIfEnable":false}})", "fe681d03af00023916" },
        { R"({"enterHearingMode":{"enter":true}})", "fe681d03390400c516" },
        { R"({"setBaseAmplitude":{"freq":1000,"amp":300}})", "fe681d083902e8032c010000e016" },
        { R"({"playSine":{"freq":1000,"dB":60,"timestamp":16909060}})", "fe681d093901e8033c04030201f916" },
        { R"({"playSineAmplitude":{"freq":500,"amp":300,"timestamp":5}})", "fe681d0c3903f4012c01000005000000f416" },
        { R"({"writeProtocolData":{"data":{"cmd":90,"di0":1,"di1":2,"data":"0304"}}})", "fe685a0401020304d016" },
        { R"({"readProgramVolume":{}})", "fe681102ff047e16" },
        { R"({"readOrientation":{}})", "fe68110280050016" },
        { R"({"controlLockChip":{}})", "fe681c0203008916" },
        { R"({"controlShip":{}})", "fe68cc02c3494216" },
        { R"({"enterDUT":{}})", "fe681d0283000a16" },
        { R"({"readBrEdr":{}})", "fe681d02bf004616" },
        { R"({"getTransparencyLevel":{}})", "fe681d02be004516" },
        { R"({"beginFind":{}})", "fe681d0281010916" },
        { R"({"endFind":{}})", "fe681d0281000816" },
        { R"({"resetFactory":{}})", "fe681d0282000916" },
        { R"({"hearingSupported":{}})", "fe681d023905c516" },
        { R"({"stopPlaySine":{}})", "fe681d023900c016" },
    };
    std::set<std::string_view> names;
    for (const auto& [request, bytes] : cases) {
        EXPECT_EQ(codec::answer(encoding(request)), R"({"ok":")" + std::string(bytes) + "\"}") << request;
        names.insert(request.substr(2, request.find(':') - 3));
    }
    EXPECT_EQ(names.size(), std::variant_size_v<AuriskRequest::Case>);
}

TEST(CodecRequest, TakesBlocksOfEitherChipAndIgnoresWhatFollowsThem)
{
    const std::string zeros(112, '0');
    EXPECT_EQ(
        codec::answer(encoding(R"({"writeDsp":{"dsp":{"a16":")" + zeros + R"(FF"},"program":0,"withResponse":true}})")),
        R"({"ok":"fe68143a0003)" + zeros + "b916\"}");
}

TEST(CodecRequest, TakesAFrameWithoutIdentifiersOrPayload)
{
    expectAnswers({
        { R"({"op":"request.encode","request":{"writeProtocolData":{"data":{"cmd":90,"di0":null,"di1":null,"data":null}}}})",
            R"({"ok":"fe685a02c416"})" },
        { R"({"op":"request.encode","request":{"writeProtocolData":{"data":{"cmd":90,"di0":null,"di1":null,"data":"07"}}}})",
            R"({"ok":"fe685a0307cc16"})" },
        // The size follows from the payload, whatever the line says.
        { R"({"op":"request.encode","request":{"writeProtocolData":{"data":{"cmd":90,"dataSize":77,"di0":1,"di1":null,"data":null}}}})",
            R"({"ok":"fe685a0201c516"})" },
    });
}

TEST(CodecRequest, StopsAtWhatAPreconditionForbids)
{
    const std::string tooLong(254 * 2, '0');
    expectStops({
        { encoding(R"({"readVolume":{"program":255}})"), "256" },
        { encoding(R"({"readVolume":{"program":2147483647}})"), ": 2147483648 " },
        { encoding(R"({"readDsp":{"program":-1}})"), "-1" },
        { encoding(R"({"writeDspData":{"data":"","program":128,"withResponse":false}})"), "256" },
        { encoding(R"({"writeDspData":{"data":")" + tooLong + R"(","program":0,"withResponse":true}})"), "254" },
        { encoding(R"({"writeDsp":{"dsp":{"a4":"0102030405060708090a0b"},"program":0,"withResponse":true}})"), "11" },
        { encoding(R"({"writeDsp":{"dsp":{"a16":""},"program":0,"withResponse":true}})"), "56" },
        { encoding(R"({"writeGlobalDsp":{"global":{"a4":"0102030405060708"},"chip":"a4","withResponse":true}})"), "8" },
        { encoding(
              R"({"writeGlobalDsp":{"global":{"a16":"0102030405060708090a0b"},"chip":"a16","withResponse":true}})"),
            "11" },
        { encoding(R"({"setBaseAmplitude":{"freq":0,"amp":-1}})"), "amp: -1" },
        { encoding(R"({"playSine":{"freq":0,"dB":0,"timestamp":-2147483648}})"), "timestamp: -2147483648" },
        { encoding(R"({"writeProtocolData":{"data":{"cmd":90,"di0":1,"di1":2,"data":")" + tooLong + R"("}}})"), "254" },
    });
    // Below 0 is no precondition where the frame has room for it.
    EXPECT_EQ(codec::answer(encoding(R"({"readVolume":{"program":-1}})")), R"({"ok":"fe68110200047f16"})");
}

TEST(CodecRequest, IsRefusedWithItsMemberItsValueAndItsRule)
{
    expectErrors({
        { R"({"op":"request.encode"})", { "\"request\"", "missing" } },
        { encoding("null"), { "\"request\"", "null" } },
        { encoding(R"("readOrientation")"), { "\"request\"", "\"readOrientation\"" } },
        { encoding("{}"), { "\"request\"", "one member" } },
        { encoding(R"({"readOrientation":{},"readBrEdr":{}})"), { "\"request\"", "one member" } },
        { encoding(R"({"readOrientation":null})"), { "\"request.readOrientation\"", "null" } },
        { encoding(R"({"readorientation":{}})"), { "\"request\"", "\"readorientation\"" } },
        { encoding(R"({"readVolume":{}})"), { "\"request.readVolume.program\"", "missing" } },
        { encoding(R"({"readVolume":{"program":null}})"), { "\"request.readVolume.program\"", "null" } },
        { encoding(R"({"readVolume":{"program":"0"}})"), { "\"request.readVolume.program\"", "\"0\"" } },
        { encoding(R"({"readVolume":{"program":true}})"), { "true" } },
        { encoding(R"({"readVolume":{"program":1.0}})"), { "1.0" } },
        { encoding(R"({"readVolume":{"program":1e2}})"), { "100.0" } },
        { encoding(R"({"readVolume":{"program":[1]}})"), { "a list" } },
        { encoding(R"({"readVolume":{"program":2147483648}})"), { "2147483648", "-2147483648 ... 2147483647" } },
        { encoding(R"({"readVolume":{"program":-2147483649}})"), { "-2147483649" } },
        { encoding(R"({"readVolume":{"program":18446744073709551615}})"), { "18446744073709551615" } },
        { encoding(R"({"readVolume":{"program":18446744073709551616}})"), { "e+19" } },
        { encoding(R"({"controlMute":{"mute":1}})"), { "\"request.controlMute.mute\"", "1" } },
        { encoding(R"({"readGlobalDsp":{"chip":"A16"}})"), { "\"A16\"", "h01, a4, a16, unassigned" } },
        { encoding(R"({"readGlobalDsp":{"chip":6}})"), { "\"request.readGlobalDsp.chip\"", "6" } },
        { encoding(R"({"playSine":{"freq":65536,"dB":0,"timestamp":0}})"), { "freq", "65536", "0 ... 65535" } },
        { encoding(R"({"playSine":{"freq":-1,"dB":0,"timestamp":0}})"), { "freq", "-1" } },
        { encoding(R"({"playSine":{"freq":0,"dB":300,"timestamp":0}})"), { "dB", "300", "0 ... 255" } },
        { encoding(R"({"setBaseAmplitude":{"freq":0,"amp":32768}})"), { "amp", "-32768 ... 32767" } },
        { encoding(R"({"playSine":{"freq":0,"dB":0,"timestamp":2147483648}})"), { "timestamp" } },
        { encoding(R"({"writeDspData":{"data":"012","program":0,"withResponse":true}})"), { "data", "3", "even" } },
        { encoding(R"({"writeDspData":{"data":"0x12","program":0,"withResponse":true}})"), { "data", "\"0x12\"" } },
        { encoding(R"({"writeDspData":{"data":null,"program":0,"withResponse":true}})"), { "data", "null" } },
        { encoding(R"({"writeDsp":{"dsp":"00","program":0,"withResponse":true}})"), { "dsp", "\"00\"" } },
        { encoding(R"({"writeDsp":{"dsp":{"a5":"00"},"program":0,"withResponse":true}})"), { "dsp", "\"a5\"" } },
        { encoding(R"({"writeDsp":{"dsp":{"a4":7},"program":0,"withResponse":true}})"), { "dsp.a4", "7" } },
        { encoding(R"({"writeProtocolData":{"data":{"cmd":256,"di0":1,"di1":1,"data":null}}})"),
            { "data.cmd", "256" } },
        { encoding(R"({"writeProtocolData":{"data":{"cmd":1,"di0":1,"data":null}}})"), { "data.di1", "missing" } },
        { encoding(R"({"writeProtocolData":{"data":{"cmd":null,"di0":1,"di1":1,"data":null}}})"),
            { "data.cmd", "null" } },
        // What makes the line unusable counts before what breaks a precondition.
        { encoding(R"({"writeDsp":{"dsp":{"a4":""},"program":0,"withResponse":0}})"), { "withResponse", "0" } },
    });
}

} // namespace
} // namespace aurisk::tests
