#include "AuriskSDK/HearingAid/Aurisk/AuriskA16Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskA4Accessory.h"
#include "AuriskSDK/HearingAid/Aurisk/AuriskH01Accessory.h"
#include "AuriskSDK/Platform/Manual/ManualDispatchQueue.h"
#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "Tests/Support/Application.h"
#include "Tests/Support/Bytes.h"
#include "Tests/Support/PlayedAid.h"
#include "Tests/Support/Stops.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>

namespace aurisk::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// A connected hearing aid with one chip, played a frame at a time: what it hears is written down, and what `answers`
/// holds is sent in reply, one a frame; no bytes are no reply.
class ChipVariant : public testing::Test {
protected:
    template <typename Class> std::shared_ptr<Class> connected(std::uint8_t chip)
    {
        CBAdvertisementData advertisement;
        advertisement.manufacturerData = Data{ 0xFE, 0xFE, 0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x08, chip };
        advertisement.localName = "X1-L";
        radio.hear(peripheral, advertisement);
        peripheral->onWrite = [this](DataView frame) {
            heard.emplace_back(frame.begin(), frame.end());
            if (answers.empty())
                return;
            const auto answer = answers.front();
            answers.erase(answers.begin());
            if (!answer.empty())
                queue.async([this, answer] { peripheral->notify(peripheral->replies, answer); });
        };
        auto accessory = std::dynamic_pointer_cast<Class>(radio.manager->accessories().at(0));
        radio.connect(peripheral, *accessory, app);
        return accessory;
    }

    /// A value that carries a frame with these bytes, from the command to the last of the payload.
    static Data reply(std::uint8_t cmd, std::uint8_t di0, std::uint8_t di1, const Data& payload = {})
    {
        Data bytes = { 0x00, 0xFE, 0x68, cmd, std::uint8_t(payload.size() + 2), di0, di1 };
        bytes.insert(bytes.end(), payload.begin(), payload.end());
        bytes.push_back(std::uint8_t(std::accumulate(bytes.begin() + 2, bytes.end(), 0) % 256));
        bytes.push_back(0x16);
        return bytes;
    }

    std::function<void(const AuriskResult&)> noteResult()
    {
        return [this](const AuriskResult& result) { results.push_back(description(result)); };
    }

    /// How often a change of a value was told.
    auto updates() const
    {
        return std::count_if(
            app->heard.begin(), app->heard.end(), [](const auto& line) { return line.starts_with("updated "); });
    }

    void afterAllTimeOuts() { queue.advance(Seconds(200)); }

    ManualDispatchQueue queue;
    ScopedMainQueue main{ queue };
    PlayedRadio radio;
    std::shared_ptr<PlayedAid> peripheral = PlayedAid::create(CBUUID(0x0001), "X1-L");
    std::shared_ptr<Application> app = std::make_shared<Application>();
    std::vector<Data> heard, answers;
    std::vector<std::string> results;
};

const auto writeBlock = [](int program, bool withResponse = true) {
    return AuriskRequest::writeDsp{ .dsp = AuriskA4Dsp(), .program = program, .withResponse = withResponse };
};

TEST_F(ChipVariant, H01SwitchesToTheProgramWhoseBlockItHasTakenAndGivesTheResultOfTheSwitch)
{
    const auto aid = connected<AuriskH01Accessory>(0x01);
    answers = { reply(0x94, 0x02, 0x03), reply(0x94, 0x00, 0x03), reply(0x9C, 0x02, 0x03), reply(0xDC, 0x02, 0x01) };
    aid->request(writeBlock(2), noteResult());
    aid->request(
        AuriskRequest::writeDspData{ .data = Data(12, 0x11), .program = 0, .withResponse = true }, noteResult());
    afterAllTimeOuts();
    EXPECT_THAT(heard,
        ElementsAre("FE 68 14 0E 02 03 01 00 FF FF FF FF FF FF 00 00 00 00 8A 16"_bytes,
            // Both writes were asked for before the first was acknowledged.
            "FE 68 14 0E 00 03 11 11 11 11 11 11 11 11 11 11 11 11 59 16"_bytes, "FE 68 1C 02 02 03 8B 16"_bytes,
            "FE 68 1C 02 02 01 89 16"_bytes));
    EXPECT_THAT(results, ElementsAre(HasSubstr("success(data: didRequest"), "error(error: controlError)"));
    EXPECT_EQ(aid->program(), 2);
    EXPECT_EQ(aid->dsp(), AuriskDsp(AuriskA4Dsp()));
}

TEST_F(ChipVariant, H01SendsNoSwitchAfterAWriteThatFailed)
{
    const auto aid = connected<AuriskH01Accessory>(0x01);
    answers = { reply(0xD4, 0x02, 0x03) };
    aid->request(writeBlock(2), noteResult()); // refused
    aid->request(writeBlock(1, false), noteResult()); // asked not to answer
    afterAllTimeOuts();
    EXPECT_THAT(results, ElementsAre("error(error: writeError)", "error(error: timeout)"));
    EXPECT_THAT(heard, SizeIs(2));
    EXPECT_EQ(aid->program(), std::nullopt);
    EXPECT_THAT(aid->dspDic(), IsEmpty());
    for (const int program : { -1, 255 }) // which no switch can name
        EXPECT_NE(stopOf([&] { aid->request(writeBlock(program)); }), std::nullopt);
}

TEST_F(ChipVariant, H01TellsTheRequesterWhenItHasGoneBeforeTheSwitch)
{
    auto aid = connected<AuriskH01Accessory>(0x01);
    answers = { reply(0x94, 0x02, 0x03) };
    aid->request(writeBlock(2), noteResult());
    queue.advance(Seconds(0.05));
    radio.manager->clearAccessories([](const auto&, const auto&) { return true; });
    aid.reset();
    afterAllTimeOuts();
    EXPECT_THAT(results, SizeIs(1));
}

TEST_F(ChipVariant, OtherChipsSendTheWriteAlone)
{
    const auto aid = connected<AuriskA4Accessory>(0x00);
    answers = { reply(0x94, 0x02, 0x03) };
    aid->request(writeBlock(2), noteResult());
    afterAllTimeOuts();
    EXPECT_THAT(heard, SizeIs(1));
    EXPECT_EQ(aid->program(), std::nullopt);
    EXPECT_EQ(aid->dspDic().at(2), AuriskDsp(AuriskA4Dsp()));
}

TEST_F(ChipVariant, BlockThatDoesNotDecodeLeavesWhatIsKnownAndALine)
{
    const auto aid = connected<AuriskA16Accessory>(0x06);
    Data caseLess(56);
    caseLess[54] = 0x04; // an attack time that nobody has
    answers = { reply(0x91, 0x01, 0x03, Data(56)), reply(0x91, 0x01, 0x03, caseLess), reply(0x91, 0x01, 0x03, Data(55)),
        reply(0x91, 0x06, 0x03, Data(11)) };
    for (int i = 0; i < 3; ++i)
        aid->request(AuriskRequest::readDsp{ .program = 1 }, noteResult());
    aid->request(AuriskRequest::readGlobalDsp{ .chip = AuriskChip::a16 }, noteResult());
    testing::internal::CaptureStdout();
    AuriskLog::setEnable(true);
    afterAllTimeOuts();
    AuriskLog::setEnable(false);
    const auto log = testing::internal::GetCapturedStdout();
    EXPECT_THAT(log, HasSubstr("a program block of 56 bytes does not decode and is dropped"));
    EXPECT_THAT(log, HasSubstr("a program block of 55 bytes does not decode and is dropped"));
    EXPECT_THAT(log, HasSubstr("a global block of 11 bytes does not decode and is dropped"));
    EXPECT_THAT(aid->dspDic(), ElementsAre(std::pair(1, AuriskDsp(AuriskA16Dsp(Data(56))))));
    EXPECT_EQ(aid->global(), std::nullopt);
    EXPECT_THAT(results, SizeIs(4)); // whoever asked has the bytes
    EXPECT_EQ(updates(), 4);
}

TEST_F(ChipVariant, ThatIsUnassignedKeepsNoBlocks)
{
    const auto aid = connected<AuriskAccessory>(0x07);
    answers = { reply(0x91, 0x01, 0x03, Data(56)), reply(0x91, 0x05, 0x03, Data(56)) };
    aid->request(AuriskRequest::readDsp{ .program = 1 });
    aid->writeNumberOfProgram(2, noteResult());
    afterAllTimeOuts();
    EXPECT_THAT(aid->dspDic(), IsEmpty());
    EXPECT_EQ(aid->global(), std::nullopt);
    EXPECT_EQ(updates(), 2);
    EXPECT_THAT(results, ElementsAre("error(error: other(message: \"failed to request\"))"));
    EXPECT_THAT(heard, SizeIs(2)); // asked once, not over and over
}

TEST_F(ChipVariant, NumberOfProgramsIsReadOnceAndThenWritten)
{
    const auto aid = connected<AuriskA16Accessory>(0x06);
    const auto global = "01 00 00 60 00 00 00 00 00 00 00 04"_bytes; // 3 programs, and more
    answers = { reply(0x91, 0x06, 0x03, global), reply(0x94, 0x06, 0x03), reply(0x94, 0x06, 0x03) };
    aid->writeNumberOfProgram(2, noteResult());
    queue.advance(Seconds(1));
    EXPECT_EQ(aid->numberOfProgram(), 3); // until it is read again
    aid->writeNumberOfProgram(4, noteResult());
    afterAllTimeOuts();
    EXPECT_THAT(heard,
        ElementsAre("FE 68 11 02 06 03 84 16"_bytes,
            "FE 68 14 0E 06 03 01 00 00 40 00 00 00 00 00 00 00 04 D8 16"_bytes,
            "FE 68 14 0E 06 03 01 00 00 80 00 00 00 00 00 00 00 04 18 16"_bytes));
    EXPECT_THAT(results, testing::Each(HasSubstr("success(data: didRequest")));
    EXPECT_THAT(stopOf([&] { aid->writeNumberOfProgram(8, {}); }), testing::Optional(HasSubstr("numberOfPrograms: 8")));
}

TEST_F(ChipVariant, NumberOfProgramsIsNotWrittenWhereItCannotBeRead)
{
    const auto aid = connected<AuriskA16Accessory>(0x06);
    answers = { reply(0xD1, 0x06, 0x03), {}, reply(0x9D, 0xBC, 0x00, { 1 }) };
    for (int i = 0; i < 3; ++i) {
        aid->writeNumberOfProgram(2, noteResult());
        queue.advance(Seconds(5));
    }
    radio.loseLink(peripheral);
    aid->writeNumberOfProgram(2, noteResult());
    EXPECT_THAT(results,
        ElementsAre("error(error: readError)", "error(error: timeout)",
            "error(error: other(message: \"failed to request\"))", "error(error: disconnected)"));
    EXPECT_THAT(heard, SizeIs(3));
}

class Log : public ChipVariant {
protected:
    /// Fetches the summary of an aid that gives these answers.
    void fetch(std::vector<Data> given)
    {
        const auto aid = connected<AuriskA16Accessory>(0x06);
        answers = std::move(given);
        aid->requestSummaryDataLog([this](const auto& summary) { fetched.push_back(summary); });
        EXPECT_THAT(fetched, IsEmpty()); // never inside the call
        afterAllTimeOuts();
        ASSERT_THAT(fetched, SizeIs(1));
    }

    static Data words(std::size_t size, std::uint8_t first = 0)
    {
        Data bytes(size);
        std::iota(bytes.begin(), bytes.end(), first);
        return bytes;
    }

    std::vector<std::optional<AuriskSummaryDataLog>> fetched;
};

TEST_F(Log, SummaryIsPutTogetherFromFourReplies)
{
    fetch({ reply(0x91, 0, 6, words(57)), reply(0x91, 1, 6, words(57, 57)), reply(0x91, 2, 6, words(57, 114)),
        reply(0x91, 3, 6, words(57, 171)) });
    EXPECT_THAT(heard,
        ElementsAre("FE 68 11 02 00 06 81 16"_bytes, "FE 68 11 02 01 06 82 16"_bytes, "FE 68 11 02 02 06 83 16"_bytes,
            "FE 68 11 02 03 06 84 16"_bytes));
    ASSERT_TRUE(fetched[0]);
    EXPECT_EQ(fetched[0]->totalRunTime, 0x03020100U);
    EXPECT_EQ(fetched[0]->program[1].totalRunTime, 0x33323130U); // from byte 48
    EXPECT_EQ(fetched[0]->CRC, 0xE3E2E1E0U); // from byte 224
}

TEST_F(Log, ReplyWithoutPayloadAddsNothingAndFailsNothing)
{
    const Data without = { 0x00, 0xFE, 0x68, 0x94, 0x00, 0xFC, 0x16 };
    fetch({ reply(0x91, 0, 6, words(114)), without, reply(0x91, 2, 6), reply(0x91, 3, 6, words(114)) });
    ASSERT_TRUE(fetched[0]);
    EXPECT_EQ(fetched[0]->CRC, 0x71706F6EU); // from byte 110 of the second
}

TEST_F(Log, IsNoneWithoutAConnection)
{
    const auto aid = connected<AuriskA16Accessory>(0x06);
    radio.loseLink(peripheral);
    std::vector<std::optional<Data>> got;
    aid->requestDataLog(AuriskDataLogType::loopGain, [&](const auto& data) { got.push_back(data); });
    EXPECT_THAT(got, IsEmpty());
    queue.runUntilIdle();
    EXPECT_THAT(got, ElementsAre(std::nullopt));
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_NE(stopOf([&] { aid->requestDataLog(AuriskDataLogType::feedback, {}); }), std::nullopt);
}

} // namespace
} // namespace aurisk::tests
