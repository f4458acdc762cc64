#include "Tools/aurisk/Commands.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/HDLC.h"
#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"
#include "Tools/aurisk/CodecJson.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <array>

namespace aurisk::tool {

namespace {

/// What the command of a reply says: which request it answers, and how.
std::string explained(std::uint8_t cmd)
{
    struct Row {
        std::uint8_t request;
        std::string_view name;
    };
    constexpr std::array<Row, 5> rows
        = { { { 0x11, "read" }, { 0x14, "write" }, { 0x1C, "control" }, { 0x1D, "auxiliary" }, { 0xCC, "ship" } } };
    for (const auto& [request, name] : rows) {
        if (cmd == std::uint8_t(request + 0x80))
            return fmt::format("{:02x}, {} done", cmd, name);
        if (cmd == std::uint8_t(request + 0xC0))
            return fmt::format("{:02x}, {} refused", cmd, name);
    }
    return fmt::format("{:02x}", cmd);
}

std::string spaced(DataView bytes) { return bytes.empty() ? "none" : fmt::format("{:02x}", fmt::join(bytes, " ")); }

Fields fieldsOf(const AuriskRawData& reply)
{
    Data identifiers;
    for (const auto& di : { reply.di0, reply.di1 })
        if (di)
            identifiers.push_back(*di);
    const auto payload = reply.data.value_or(Data{});
    return {
        { .key = "cmd", .value = reply.cmd, .label = "command", .text = explained(reply.cmd) },
        { .key = "di0", .value = codec::toJson(reply.di0), .label = "di0 di1", .text = spaced(identifiers) },
        { .key = "di1", .value = codec::toJson(reply.di1) },
        { .key = "data", .value = codec::toJson(reply.data), .label = "payload", .text = spaced(payload) },
    };
}

void tellReply(Session& session, const AuriskRawData& frame, const AuriskResult& result)
{
    const auto sent = ask_hexadecimal(frame.toData());
    const auto& received = session.lastReply();
    const auto reply
        = !received ? std::nullopt : decodeFromDevice("reply", [&] { return AuriskRawData::parse(*received); });
    Fields fields = { { .key = "sent", .value = sent, .label = "sent", .text = sent } };
    if (reply) {
        const auto hex = ask_hexadecimal(*received);
        fields.push_back({ .key = "reply", .value = hex, .label = "reply", .text = hex });
        for (auto& field : fieldsOf(*reply))
            fields.push_back(std::move(field));
    }
    const auto meaning = result.isSuccess() ? description(*result.data()) : description(*result.error());
    fields.push_back({ .key = "result", .value = codec::toJson(result), .label = "meaning", .text = meaning });
    session.block(fields);
}

void play(Session& session)
{
    const auto given = frame(session.options().frame);
    session.attempt(
        AuriskRequest::writeProtocolData{ .data = given }, [given](Session& self, const AuriskResult& result) {
            tellReply(self, given, result);
            if (result.isSuccess())
                self.finish();
            else
                self.fail(fmt::format(
                    "{} did not do what the frame asks for: {}", self.name(), description(*result.error())));
        });
}

/// What a PL3 hearing aid confirmed of a write, of which the library waits for the first piece alone.
Field confirmedField(std::size_t pieces)
{
    return { .key = "pieces",
        .value = pieces,
        .label = "reply",
        .text = pieces == 1
            ? "confirmed"
            : fmt::format("the first of {} pieces is confirmed, the others are not waited for", pieces) };
}

void playPL3(Session& session)
{
    const auto given = pl3Request(session.options().frame);
    session.request(given, [given](Session& self, const PL3Response& answer) {
        constexpr auto longest = CHDLC::kBLEPacketLength;
        const auto& frame = self.options().frame;
        const auto sent = ask_hexadecimal(frame), data = ask_hexadecimal(answer.data);
        Fields fields = { { .key = "sent", .value = sent, .label = "sent", .text = sent } };
        if (given.read) {
            const auto command = caseName(answer.command);
            fields.push_back({ .key = "command",
                .value = command,
                .label = "command",
                .text = fmt::format("{:02x}, {}", rawValue(answer.command), command) });
            fields.push_back({ .key = "data", .value = data, .label = "payload", .text = spaced(answer.data) });
        } else
            fields.push_back(confirmedField((frame.size() + longest - 1) / longest));
        self.block(fields);
        if (answer.command != given.command)
            self.note(fmt::format("{} spoke of something else: the next notification is taken for the answer, and the "
                                  "wearer may have acted",
                self.name()));
        self.finish();
    });
}

std::optional<Failure> whyNotForAurisk(const Options& options, const AuriskAccessory& device)
{
    if (options.frame.front() == CHDLC::kFrameStart)
        throw UsageError(fmt::format("frame: it is one for PL3 hearing aids, and {} is none", device.name()));
    frame(options.frame);
    return std::nullopt;
}

std::optional<Failure> whyNotForPL3(const Options& options)
{
    pl3Request(options.frame);
    return std::nullopt;
}

} // namespace

/// Which family it is for, only the device says.
Plan planRaw(const Options& options)
{
    return {
        .play = play,
        .check = [=](const AuriskAccessory& device) { return whyNotForAurisk(options, device); },
        .playPL3 = playPL3,
        .checkPL3 = [=](const PL3Accessory&) { return whyNotForPL3(options); },
    };
}

} // namespace aurisk::tool
