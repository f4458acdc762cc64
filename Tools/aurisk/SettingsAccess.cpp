#include "Tools/aurisk/SettingsAccess.h"

#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

namespace aurisk::tool {

namespace {

using Request = AuriskRequest;
using Response = AuriskResponse;

/// The settings in an answer; none where it is none to that question.
const Data* settingsIn(const AuriskResponse& response, const BlockPlace& place)
{
    if (const auto* read = place.program ? response.as<Response::didReadDsp>() : nullptr)
        return read->program == *place.program ? &read->data : nullptr;
    const auto* read = place.program ? nullptr : response.as<Response::didReadGlobal>();
    return read ? &read->data : nullptr;
}

AuriskRequest writeRequest(const AuriskAccessory& device, const BlockPlace& place, const SettingsBlock& block)
{
    return std::visit(
        [&]<typename Block>(const Block& one) -> AuriskRequest {
            if constexpr (ProgramBlock<Block>)
                return Request::writeDsp{ .dsp = one, .program = place.program.value(), .withResponse = true };
            else
                return Request::writeGlobalDsp{ .global = one, .chip = device.hearChip(), .withResponse = true };
        },
        block);
}

void take(Session& session, const AuriskRequest& request, const BlockPlace& place, const AuriskResponse& response,
    const ThenWithBlock& then)
{
    const auto* const data = settingsIn(response, place);
    if (!data)
        return session.failBeyondAnswer(request);
    if (const auto block = decodeBlock(kindOf(place), session.device().hearChip(), *data))
        return then(session, *block);
    session.fail(fmt::format("{} holds settings {} that make no sense", session.name(),
        place.program ? fmt::format("of program {}", *place.program) : "of all programs"));
}

void tellChanges(Session& session, const BlockPlace& place, const std::vector<Difference>& changes)
{
    auto fields = changeFields(changes);
    if (place.program)
        fields.insert(fields.begin(), programField(place.program));
    session.block(fields);
    session.finish();
}

void change(Session& session, const BlockPlace& place, const std::vector<Edit>& edits)
{
    readBlock(session, place, [=](Session& self, const SettingsBlock& before) {
        auto after = before;
        for (const auto& edit : edits)
            edit(after);
        const auto changes = differences(before, after);
        const auto write = [=](Session& again, std::optional<int> running) {
            again.meet([=](Session& ready) {
                if (changes.empty())
                    return tellChanges(ready, place, changes);
                ready.setIfCutShort(
                    [name = ready.name()] { return "whether " + name + " took the change is not known"; });
                writeBlock(ready, place, after, running, [=](Session& last) { tellChanges(last, place, changes); });
            });
        };
        if (place.program && !changes.empty())
            readProgramToRestore(self, write);
        else
            write(self, std::nullopt);
    });
}

} // namespace

Fields changeFields(const std::vector<Difference>& changes)
{
    Fields fields;
    auto list = Json::array();
    for (const auto& change : changes) {
        fields.push_back({ .label = change.place(), .text = change.before + " -> " + change.after });
        Json one = { { "field", change.name } };
        if (change.frequency)
            one["frequency"] = *change.frequency;
        one["from"] = change.from;
        one["to"] = change.to;
        list.push_back(std::move(one));
    }
    fields.push_back({ .key = "changes", .value = std::move(list) });
    if (changes.empty())
        fields.push_back({ .label = "unchanged", .text = "it is set so already" });
    return fields;
}

std::optional<Failure> whyWithoutChip(const AuriskAccessory& device, std::string_view consequence)
{
    if (device.hearChip() != AuriskChip::unassigned)
        return std::nullopt;
    return Failure{ .sentence = fmt::format("the chip of {} is not known, so {}", device.name(), consequence),
        .name = device.name() };
}

std::optional<Failure> whyWithoutSettings(const AuriskAccessory& device)
{
    return whyWithoutChip(device, "its settings cannot be read");
}

AuriskRequest readRequest(const AuriskAccessory& device, const BlockPlace& place)
{
    if (place.program)
        return Request::readDsp{ .program = *place.program };
    return Request::readGlobalDsp{ .chip = device.hearChip() };
}

void readBlock(Session& session, const BlockPlace& place, ThenWithBlock then, Session::Then refused)
{
    const auto request = readRequest(session.device(), place);
    if (!refused)
        return session.request(request,
            [=](Session& self, const AuriskResponse& response) { take(self, request, place, response, then); });
    session.attempt(request, [=](Session& self, const AuriskResult& result) {
        if (result.isSuccess())
            take(self, request, place, *result.data(), then);
        else if (result.error()->as<AuriskResultError::other>())
            self.failBeyondAnswer(request);
        else
            refused(self);
    });
}

void writeBlock(Session& session, const BlockPlace& place, const SettingsBlock& block, std::optional<int> running,
    Session::Then then)
{
    const auto restore
        = running ? std::optional<AuriskRequest>(Request::controlProgram{ .program = *running }) : std::nullopt;
    session.read<Response::didRequest>(
        writeRequest(session.device(), place, block), [then](Session& self, const auto&) { then(self); }, restore);
}

void readRunningProgram(Session& session, Session::ThenWith<int> then)
{
    session.read<Response::didReadProgram>(Request::readProgramVolume{}, [then](Session& self, const auto& read) {
        if (read.program < programs.low || read.program > programs.high)
            return self.fail(fmt::format("{} says that its program is {}, which cannot be", self.name(), read.program));
        then(self, read.program);
    });
}

void readProgramToRestore(Session& session, Session::ThenWith<std::optional<int>> then)
{
    if (session.device().hearChip() != AuriskChip::h01)
        return then(session, std::nullopt);
    readRunningProgram(session, [then](Session& self, int program) { then(self, program); });
}

void chooseProgram(Session& session, Session::ThenWith<int> then)
{
    if (session.options().program)
        return then(session, *session.options().program);
    readRunningProgram(session, [then](Session& self, int program) {
        if (program > blockPrograms.high)
            return self.fail(fmt::format(
                "{} runs program {}, and programs have settings up to {}", self.name(), program, blockPrograms.high));
        then(self, program);
    });
}

namespace {

/// One program after the other, until there is no further one.
void readAll(Session& session, const std::shared_ptr<ProgramBlocks>& blocks, const ThenWithPrograms& then)
{
    const int program = int(blocks->size());
    if (program > blockPrograms.high)
        return then(session, *blocks);
    const auto go = [=](Session& self, const SettingsBlock& block) {
        blocks->emplace_back(program, block);
        readAll(self, blocks, then);
    };
    const auto end = [=](Session& self) { then(self, *blocks); };
    readBlock(session, { program }, go, program == 0 ? Session::Then() : end);
}

} // namespace

void readPrograms(Session& session, ThenWithPrograms then)
{
    if (session.options().allPrograms)
        return readAll(session, std::make_shared<ProgramBlocks>(), then);
    chooseProgram(session, [=](Session& self, int program) {
        readBlock(self, { program }, [=](Session& again, const SettingsBlock& block) {
            then(again, { { program, block } });
        });
    });
}

Plan planChange(const Options& options, BlockKind kind, EditReader reader)
{
    const auto& changes = options.assignments;
    checkForAnyChip(kind, changes, reader);
    return {
        .play =
            [=](Session& session) {
                const auto edits = editsFor(kind, session.device().hearChip(), changes, reader);
                if (kind == BlockKind::global)
                    return change(session, {}, edits);
                chooseProgram(session, [edits](Session& self, int program) { change(self, { program }, edits); });
            },
        .check =
            [=](const AuriskAccessory& device) {
                editsFor(kind, device.hearChip(), changes, reader);
                return whyWithoutSettings(device);
            },
    };
}

} // namespace aurisk::tool
