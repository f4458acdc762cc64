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
        { R"({"playSineAmplitude":{"freq":500,"amp":300,"timestamp":16909060}})",
            "fe681d0c3903f4012c01000004030201f916" },
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

        // The same at the edges of what the frame can say.
        { R"({"readVolume":{"program":-1}})", "fe68110200047f16" },
        { R"({"readVolume":{"program":254}})", "fe681102ff047e16" },
        { R"({"readDsp":{"program":255}})", "fe681102ff037d16" },
        { R"({"readGlobalDsp":{"chip":"h01"}})", "fe68110205038316" },
        { R"({"readGlobalDsp":{"chip":"unassigned"}})", "fe68110205038316" },
        { R"({"writeDsp":{"dsp":{"a4":"0102030405060708090a0b0c"},"program":2,"withResponse":true}})",
            "fe68140e02030102030405060708090a0b0cdd16" },
        { R"({"writeDspData":{"data":"0708","program":127,"withResponse":false}})", "fe681404ff0307089116" },
        { R"({"writeDspData":{"data":"0708","program":-128,"withResponse":false}})", "fe681404000307089216" },
        { R"({"writeDspData":{"data":"","program":255,"withResponse":true}})", "fe681402ff038016" },
        { R"({"writeGlobalDsp":{"global":{"a4":"111213141516171819"},"chip":"a16","withResponse":true}})",
            "fe68140b06031112131415161718194d16" },
        { R"({"writeGlobalDspData":{"data":"07","chip":"h01","withResponse":false}})", "fe6814038503070e16" },
        { R"({"writeGlobalDspData":{"data":"07","chip":"a16","withResponse":true}})", "fe6814030603078f16" },
        { R"({"writeOrientation":{"orientation":"right"}})", "fe6814038005010516" },
        { R"({"writeOrientation":{"orientation":"unassigned"}})", "fe6814038005010516" },
        { R"({"controlVolume":{"volume":31,"program":0}})", "fe681c02011fa616" },
        { R"({"controlVolume":{"volume":130,"program":3}})", "fe681c0201c24916" },
        { R"({"controlVolume":{"volume":3,"program":15}})", "fe681c0201038a16" },
        { R"({"controlVolume":{"volume":255,"program":254}})", "fe681c0201ff8616" },
        { R"({"controlVolume":{"volume":9,"program":-1}})", "fe681c0201099016" },
        { R"({"controlProgram":{"program":254}})", "fe681c0202ff8716" },
        { R"({"controlMute":{"mute":false}})", "fe681c0204008a16" },
        { R"({"setTransparency":{"level":255}})", "fe681d03ae00ff3516" },
        { R"({"setBrEdr":{"enable":false,"continuousIfEnable":true}})", "fe681d03af00003716" },
        { R"({"setBrEdr":{"enable":true,"continuousIfEnable":true}})", "fe681d03af00013816" },
        { R"({"enterHearingMode":{"enter":false}})", "fe681d03390401c616" },
        { R"({"setBaseAmplitude":{"freq":65535,"amp":32767}})", "fe681d083902ffffff7f00004416" },
        { R"({"playSine":{"freq":0,"dB":255,"timestamp":2147483647}})", "fe681d0939010000ffffffff7f4316" },
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
        { encoding(R"({"writeDspData":{"data":"","program":-129,"withResponse":false}})"), "-1" },
        { encoding(R"({"writeDspData":{"data":"","program":2147483647,"withResponse":false}})"), ": 2147483775 " },
        { encoding(R"({"controlVolume":{"volume":256,"program":0}})"), "volume: 256" },
        { encoding(R"({"controlVolume":{"volume":-1,"program":0}})"), "volume: -1" },
        { encoding(R"({"controlVolume":{"volume":0,"program":255}})"), "256" },
        { encoding(R"({"controlProgram":{"program":255}})"), "256" },
        { encoding(R"({"controlBeep":{"value":256}})"), "value: 256" },
        { encoding(R"({"setTransparency":{"level":256}})"), "level: 256" },
        { encoding(R"({"playSineAmplitude":{"freq":1000,"amp":-32768,"timestamp":0}})"), "amp: -32768" },
        { encoding(R"({"playSineAmplitude":{"freq":1000,"amp":0,"timestamp":-1}})"), "timestamp: -1" },
        { encoding(R"({"writeGlobalDspData":{"data":")" + tooLong + R"(","chip":"a16","withResponse":true}})"), "254" },
        { encoding(R"({"writeProfile":{"data":")" + tooLong + R"(","type":"ota"}})"), "254" },
        { encoding(R"({"setBaseAmplitude":{"freq":0,"amp":-1}})"), "amp: -1" },
        { encoding(R"({"playSine":{"freq":0,"dB":0,"timestamp":-2147483648}})"), "timestamp: -2147483648" },
        { encoding(R"({"writeProtocolData":{"data":{"cmd":90,"di0":1,"di1":2,"data":")" + tooLong + R"("}}})"), "254" },
    });
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
        { encoding(R"({"readVolume":{"program":2147483648}})"), { "2147483648", "-2147483648 ... 2147483647" } },
        { encoding(R"({"readVolume":{"program":18446744073709551615}})"), { "18446744073709551615" } },
        { encoding(R"({"readVolume":{"program":18446744073709551616}})"), { "e+19" } },
        { encoding(R"({"controlMute":{"mute":1}})"), { "\"request.controlMute.mute\"", "1" } },
        { encoding(R"({"readGlobalDsp":{"chip":"A16"}})"), { "\"A16\"", "h01, a4, a16, unassigned" } },
        { encoding(R"({"playSine":{"freq":65536,"dB":0,"timestamp":0}})"), { "freq", "65536", "0 ... 65535" } },
        { encoding(R"({"playSine":{"freq":0,"dB":300,"timestamp":0}})"), { "dB", "300", "0 ... 255" } },
        { encoding(R"({"setBaseAmplitude":{"freq":0,"amp":32768}})"), { "amp", "-32768 ... 32767" } },
        { encoding(R"({"writeDspData":{"data":"012","program":0,"withResponse":true}})"), { "data", "3", "even" } },
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
