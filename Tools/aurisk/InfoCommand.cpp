#include "Tools/aurisk/Commands.h"

#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/ProfileFields.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <memory>

namespace aurisk::tool {

namespace {

using Request = AuriskRequest;
using Response = AuriskResponse;

/// What of its profile tells one model from another.
constexpr AuriskProfileType identity[]
    = { AuriskProfileType::productSeries, AuriskProfileType::productSku, AuriskProfileType::productHard,
          AuriskProfileType::productSoft, AuriskProfileType::bluetoothHard, AuriskProfileType::bluetoothSoft };

/// What has been told so far. What a device refuses to tell stays none.
struct Told {
    std::vector<int> volumes = {}; ///< by program
    std::optional<int> program = {};
    std::optional<int> transLevel = {};
    std::optional<Response::didReadBrEdr> brEdr = {};
    bool hearingSupported = false;
    std::optional<int> bat = {};
    ProfileValues profile = {};
};
using Shared = std::shared_ptr<Told>;

std::optional<int> currentVolume(const Told& told)
{
    const auto program = told.program.value_or(-1);
    const bool isKnown = program >= 0 && std::size_t(program) < told.volumes.size();
    return isKnown ? std::optional(told.volumes[std::size_t(program)]) : std::nullopt;
}

void tell(Session& session, const Told& told)
{
    auto fields = aboutDevice(session.accessory());
    fields.push_back(programField(told.program));
    fields.push_back(volumeField(currentVolume(told)));
    fields.push_back({ .key = "volumes",
        .value = told.volumes,
        .label = "volumes",
        .text
        = told.volumes.empty() ? notTold : fmt::format("{} (by program, from 0)", fmt::join(told.volumes, " ")) });
    fields.push_back(batteryField(told.bat));
    fields.push_back({ .key = "transLevel",
        .value = told.transLevel ? Json(*told.transLevel) : Json(),
        .label = "transparency level",
        .text = told.transLevel ? std::to_string(*told.transLevel) : notTold });
    const auto brEdr = told.brEdr.value_or(Response::didReadBrEdr{});
    for (auto& field : brEdrFields(told.brEdr ? std::optional(brEdr.enable) : std::nullopt, brEdr.continuousIfEnable))
        fields.push_back(std::move(field));
    fields.push_back(hearingTestField(told.hearingSupported));
    for (const auto type : identity) {
        const auto line = profileInWords(told.profile, type).front();
        fields.push_back({ .label = std::string(profileField(type).label), .text = line.text });
    }
    fields.push_back(
        { .key = "profile", .value = profileToJson(told.profile, { std::begin(identity), std::end(identity) }) });
    session.block(fields);
    session.finish();
}

/// Asks, lets `take` have what the device tells, if it does, and goes on.
template <typename Answer>
void ask(Session& session, const AuriskRequest& request, std::function<void(const Answer&)> take, Session::Then then)
{
    session.attempt(
        request, [take = std::move(take), then = std::move(then)](Session& self, const AuriskResult& result) {
            if (const auto* answer = result.isSuccess() ? result.data()->as<Answer>() : nullptr)
                take(*answer);
            then(self);
        });
}

void askBattery(Session& session, const Shared& told)
{
    if (!session.device().batteryService())
        return tell(session, *told);
    session.readBattery([told](Session& self, int bat) {
        told->bat = bat;
        tell(self, *told);
    });
}

void askProfile(Session& session, const Shared& told)
{
    readProfile(
        session, { std::begin(identity), std::end(identity) }, [told](Session& self, const ProfileValues& values) {
            told->profile = values;
            askBattery(self, told);
        });
}

void askHearingTest(Session& session, const Shared& told)
{
    ask<Response::didReadHearingTest>(
        session, Request::hearingSupported{}, [told](const auto& read) { told->hearingSupported = read.supported; },
        [told](Session& self) { askProfile(self, told); });
}

void askBrEdr(Session& session, const Shared& told)
{
    ask<Response::didReadBrEdr>(
        session, Request::readBrEdr{}, [told](const auto& read) { told->brEdr = read; },
        [told](Session& self) { askHearingTest(self, told); });
}

void askTransparency(Session& session, const Shared& told)
{
    ask<Response::didReadTransparency>(
        session, Request::getTransparencyLevel{}, [told](const auto& read) { told->transLevel = read.level; },
        [told](Session& self) { askBrEdr(self, told); });
}

void askProgram(Session& session, const Shared& told)
{
    ask<Response::didReadProgram>(
        session, Request::readProgramVolume{}, [told](const auto& read) { told->program = read.program; },
        [told](Session& self) { askTransparency(self, told); });
}

/// Asks for the volume of one program after the other, until there is no further program.
void askVolumes(Session& session, const Shared& told)
{
    const int program = int(told->volumes.size());
    if (program > programs.high)
        return askProgram(session, told);
    session.attempt(Request::readVolume{ .program = program }, [told](Session& self, const AuriskResult& result) {
        const auto* read = result.isSuccess() ? result.data()->as<Response::didReadProgram>() : nullptr;
        if (!read || !read->volume)
            return askProgram(self, told);
        told->volumes.push_back(*read->volume);
        askVolumes(self, told);
    });
}

} // namespace

void playInfo(Session& session) { askVolumes(session, std::make_shared<Told>()); }

} // namespace aurisk::tool
