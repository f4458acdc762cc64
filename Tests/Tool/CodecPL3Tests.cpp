#include "Tests/Tool/CodecLines.h"

namespace aurisk::tests {
namespace {

std::string repeated(std::string_view text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(CodecChdlc, BuildsFramesAndTheirPieces)
{
    expectAnswers({
        { R"({"op":"chdlc.encode","command":18,"data":null,"read":true})",
            R"({"ok":{"frame":"7e000192","pieces":["7e000192"]}})" },
        { R"({"op":"chdlc.encode","command":5,"data":"7e","read":false})",
            R"({"ok":{"frame":"7e0002057d5e","pieces":["7e0002057d5e"]}})" },
        { R"({"op":"chdlc.encode","command":254,"data":"7d","read":true})",
            R"({"ok":{"frame":"7e0002fe7d5d","pieces":["7e0002fe7d5d"]}})" },
        // The twentieth byte is the first half of an escape.
        { R"({"op":"chdlc.encode","command":1,"data":")" + repeated("01", 15) + R"(7e7e","read":false})",
            R"({"ok":{"frame":"7e001201)" + repeated("01", 15) + R"(7d5e7d5e","pieces":["7e001201)" + repeated("01", 15)
                + R"(7d","5e7d5e"]}})" },
        { R"({"op":"chdlc.encode","command":0,"data":")" + repeated("00", 124) + R"(","read":false})",
            R"({"ok":{"frame":"7e007d5d00)" + repeated("00", 124) + R"(","pieces":["7e007d5d00)" + repeated("00", 15)
                + R"(",)" + repeated("\"" + repeated("00", 20) + "\",", 5) + R"(")" + repeated("00", 9) + R"("]}})" },
        { R"({"op":"chdlc.encodeText","command":" 0x7E","data":"01,7d:Ff"})",
            R"({"ok":{"result":true,"frame":"7e00047d5e017d5dff"}})" },
        { R"({"op":"chdlc.encodeText","command":"x5","data":"1"})", R"({"ok":{"result":false,"frame":""}})" },
    });
    expectStops({
        { R"({"op":"chdlc.encode","command":0,"data":")" + repeated("00", 255) + R"(","read":false})", "256" },
        { R"({"op":"chdlc.encodeText","command":"100","data":""})", "100" },
    });
    expectErrors({
        { R"({"op":"chdlc.encode","command":256,"data":null,"read":false})", { "\"command\"", "256" } },
        { R"({"op":"chdlc.encode","command":1,"data":null})", { "\"read\"", "missing" } },
        { R"({"op":"chdlc.encodeText","command":1,"data":""})", { "\"command\"" } },
    });
}

TEST(CodecChdlc, TakesNotificationsApart)
{
    expectAnswers({
        { R"({"op":"chdlc.decode","bytes":"7e000285010203"})", R"({"ok":{"command":5,"length":2,"data":"0102"}})" },
        { R"({"op":"chdlc.decode","bytes":"7e0001057d5e"})", R"({"ok":{"command":5,"length":1,"data":"7e"}})" },
        { R"({"op":"chdlc.decode","bytes":["7e00020501","02"]})", R"({"ok":{"command":5,"length":512,"data":"01"}})" },
        { R"({"op":"chdlc.decode","bytes":[]})", R"({"ok":{"command":0,"length":0,"data":""}})" },
        { R"({"op":"chdlc.decode","bytes":""})", R"({"ok":{"command":0,"length":0,"data":""}})" },
    });
    expectErrors({ { R"({"op":"chdlc.decode","bytes":["7e",1]})", { "\"bytes\"", "1" } },
        { R"({"op":"chdlc.decode","bytes":null})", { "\"bytes\"" } } });
}

TEST(CodecPL3, TellsWhatBytesStandFor)
{
    expectAnswers({
        { R"({"op":"pl3.manudata","bytes":"c603033412ffff00"})",
            R"({"ok":{"orientation":"right","modelName":"65535","manufacturerId":4660}})" },
        { R"({"op":"pl3.manudata","bytes":"c6030400000100"})",
            R"({"ok":{"orientation":"unassigned","modelName":"1","manufacturerId":0}})" },
        { R"({"op":"pl3.block","type":"PL3BandEQ","data":"0102030405"})",
            R"({"ok":{"dc":1,"eq500":2,"eq1000":3,"eq1500":4,"eq2000":5,"eq2500":0,"eq3000":0,"eq3500":0,"eq4000":0,)"
            R"("eq4500":0,"eq5000":0,"eq5500":0,"eq6000":0,"eq6500":0,"eq7000":0,"eq7500":0}})" },
        { R"({"op":"pl3.block","type":"PL3InputSettings","data":"0102030405060708090a0b0c0d0e0f1011"})",
            R"({"ok":{"inputMux":1,"preampGainCh1":2,"preampGainCh2":3,"preampGainDigitalCh1":4,)"
            R"("preampGainDigitalCh2":5,"matrixGain":6,"matrixGainMantissa":7,"matrixGainExponent":8,)"
            R"("feedbackCanceller":9,"noiseReduction":10,"lowLevelExpansion":11,"windSuppression":12,)"
            R"("lowCutFilter":13,"remoteMixRatio":14,"mpoAttack":15,"mpoRelease":16}})" },
        { R"({"op":"pl3.describe","type":"PL3CompRatio","value":19})", R"({"ok":"1.9 : 1"})" },
        { R"({"op":"pl3.describe","type":"PL3CompTime","value":8})", R"({"ok":"B:400,15000; F:3,100; R:24 dB,600"})" },
        { R"({"op":"pl3.describe","type":"PL3CompThreshold","value":31})", R"({"ok":"82 dB SPL"})" },
        { R"({"op":"pl3.describe","type":"PL3MpoConfig","value":15})", R"({"ok":"-28 dB"})" },
        { R"({"op":"pl3.command","rawValue":9})", R"({"ok":{"case":"compThreshold","name":"Comp Treshold"}})" },
        { R"({"op":"pl3.command","rawValue":20})", R"({"ok":{"case":"unknown","name":"?????"}})" },
        { R"({"op":"pl3.command","rawValue":21})", R"({"ok":null})" },
    });
    expectStops({
        { R"({"op":"pl3.manudata","bytes":"c60302000000"})", "7 bytes" },
        { R"({"op":"pl3.describe","type":"PL3CompTime","value":9})", "0 to 8" },
        { R"({"op":"pl3.describe","type":"PL3MpoConfig","value":255})", "0 to 15" },
    });
    expectErrors({
        { R"({"op":"pl3.describe","type":"PL3InputSettings","value":0})", { "PL3InputSettings" } },
        { R"({"op":"pl3.block","type":"PL3Block","data":""})", { "PL3Block" } },
        { R"({"op":"pl3.command","rawValue":256})", { "256" } },
    });
}

} // namespace
} // namespace aurisk::tests
