#include "Tools/aurisk/Commands.h"

#include "AuriskSDK/Shared/Utils/HexToData.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"
#include "Tools/aurisk/CodecJson.h"

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

void tellReply(Session& session, const AuriskResult& result)
{
    const auto sent = ask_hexadecimal(session.options().frame->toData());
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

} // namespace

void playRaw(Session& session)
{
    session.attempt(AuriskRequest::writeProtocolData{ .data = *session.options().frame },
        [](Session& self, const AuriskResult& result) {
            tellReply(self, result);
            if (result.isSuccess())
                self.finish();
            else
                self.fail(fmt::format(
                    "{} did not do what the frame asks for: {}", self.name(), description(*result.error())));
        });
}

} // namespace aurisk::tool
