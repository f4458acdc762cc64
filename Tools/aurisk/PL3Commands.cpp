#include "Tools/aurisk/PL3Commands.h"

#include "AuriskSDK/HearingAid/Vortilex/Data/PL3DeviceSettings.h"
#include "Tools/aurisk/DeviceFields.h"
#include "Tools/aurisk/Purpose.h"
#include "Tools/aurisk/Steps.h"

#include <fmt/format.h>

#include <memory>

namespace aurisk::tool {

namespace {

void tell(Session& session, const Fields& fields)
{
    session.line(fields);
    session.finish();
}

/// Reads a number and tells it, or writes the one that the arguments give.
void playNumber(Session& session, PL3Command command, Field (*field)(std::optional<int>))
{
    if (!session.options().set)
        return readNumber(session, command, [=](Session& self, int number) { tell(self, { field(number) }); });
    const int number = *session.options().value;
    session.request(PL3Request{ .command = command, .data = Data{ std::uint8_t(number) } },
        [=](Session& self, const PL3Response&) { tell(self, { field(number) }); });
}

// Everything that a device says of itself

/// What has been told so far. What a device does not tell stays none.
struct Told {
    std::optional<int> volume = {}, bat = {}, mute = {};
    std::optional<Data> settings = {};
};
using Shared = std::shared_ptr<Told>;

/// The device settings by the names of their bytes.
Json settingsToJson(const Data& settings)
{
    auto object = Json::object();
    for (const auto& item : enumCases<PL3DeviceSettings>)
        if (const std::size_t place = rawValue(item.value); place < settings.size())
            object[std::string(item.name)] = settings[place];
    return object;
}

/// The fields of the device settings that say something to a person.
Fields settingsFields(const std::optional<Data>& settings)
{
    using Item = PL3DeviceSettings;
    const auto at = [&](Item item) {
        const std::size_t place = rawValue(item);
        return settings && place < settings->size() ? std::optional<int>((*settings)[place]) : std::nullopt;
    };
    const auto words = [](std::optional<int> number) { return number ? std::to_string(*number) : notTold; };
    const auto major = at(Item::algorithmVersionMajor);
    const auto version = major
        ? fmt::format("{}.{}.{}", *major, *at(Item::algorithmVersionMinor), *at(Item::algorithmVersionBuild))
        : notTold;
    return {
        { .label = "programs", .text = words(at(Item::numberOfPrograms)) },
        { .label = "volume steps", .text = words(at(Item::numberOfVCSteps)) },
        { .label = "algorithm", .text = version },
        { .key = "deviceSettings", .value = settings ? settingsToJson(*settings) : Json() },
    };
}

/// What the wearer has changed since it was told, the accessory has heard.
void tellAll(Session& session, const Told& told)
{
    const auto& device = session.pl3();
    auto fields = aboutDevice(device);
    fields.push_back(programField(device.program()));
    fields.push_back(volumeField(told.volume ? std::optional(device.volume()) : std::nullopt));
    fields.push_back(batteryField(told.bat ? std::optional(device.battery()) : std::nullopt));
    fields.push_back(switchField("mute", "mute", told.mute ? std::optional(*told.mute != 0) : std::nullopt));
    for (auto& field : settingsFields(told.settings))
        fields.push_back(std::move(field));
    session.block(fields);
    session.finish();
}

/// Asks for something that a device need not know, and says so where it does not tell it.
Step asksFor(PL3Command command, std::function<void(const Data&)> take)
{
    return [=](Session& session, const Session::Then& then) {
        session.attempt(command, [=](Session& self, const std::optional<Data>& answer) {
            if (answer && !answer->empty())
                take(*answer);
            else
                self.note(fmt::format("{} did not {}", self.name(), purpose({ .command = command, .read = true })));
            then(self);
        });
    };
}

Step asksFor(PL3Command command, const Shared& told, std::optional<int> Told::*number)
{
    return asksFor(command, [=](const Data& answer) { told.get()->*number = answer.front(); });
}

} // namespace

void readNumber(Session& session, PL3Command command, Session::ThenWith<int> then)
{
    session.read(command, [command, then = std::move(then)](Session& self, const Data& answer) {
        if (answer.size() == 1)
            then(self, answer.front());
        else
            self.fail(fmt::format("{} gave an answer that fits nothing when asked to {}", self.name(),
                purpose(PL3Request{ .command = command, .read = true })));
    });
}

void playPL3Program(Session& session) { playNumber(session, PL3Command::program, programField); }

void playPL3Volume(Session& session) { playNumber(session, PL3Command::volumeLevel, volumeField); }

void playPL3Battery(Session& session) { playNumber(session, PL3Command::batteryLevel, batteryField); }

void playPL3Mute(Session& session)
{
    const bool mute = *session.options().on;
    session.request(PL3Request{ .command = PL3Command::muteUnmute, .data = Data{ std::uint8_t(mute) } },
        [mute](Session& self, const PL3Response&) { tell(self, { switchField("mute", "mute", mute) }); });
}

std::optional<Failure> whyWithoutVolumeOfProgram(const Options& options, const PL3Accessory& device)
{
    if (!options.program)
        return std::nullopt;
    return Failure{ .code = ExitCode::usage,
        .sentence = fmt::format("{} has one volume for all programs: leave --program out", device.name()),
        .name = device.name() };
}

/// A device that does not tell its program, tells nothing.
void playPL3Info(Session& session)
{
    const auto told = std::make_shared<Told>();
    readNumber(session, PL3Command::program, [told](Session& self, int) {
        inTurn(self,
            { asksFor(PL3Command::volumeLevel, told, &Told::volume),
                asksFor(PL3Command::batteryLevel, told, &Told::bat), asksFor(PL3Command::muteUnmute, told, &Told::mute),
                asksFor(PL3Command::deviceSettings, [told](const Data& answer) { told->settings = answer; }) },
            [told](Session& again) { tellAll(again, *told); });
    });
}

} // namespace aurisk::tool
