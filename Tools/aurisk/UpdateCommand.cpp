#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"
#include "AuriskSDK/Shared/Dfu/Tiny600/Tiny600DFUPacket.h"
#include "Tools/aurisk/Commands.h"
#include "Tools/aurisk/FirmwareUpdate.h"
#include "Tools/aurisk/ProfileFields.h"
#include "Tools/aurisk/Values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>

namespace aurisk::tool {

namespace {

/// The fields of the profile that an image may change.
constexpr struct {
    AuriskProfileType type;
    std::string_view label;
} versions[] = {
    { AuriskProfileType::productSoft, "firmware" },
    { AuriskProfileType::bluetoothSoft, "radio firmware" },
    { AuriskProfileType::ota, "update version" },
};

std::vector<AuriskProfileType> versionTypes()
{
    std::vector<AuriskProfileType> types;
    for (const auto& version : versions)
        types.push_back(version.type);
    return types;
}

/// The image, checked as far as that can be done without a device.
std::shared_ptr<DFUFirmware> imageOf(const Options& options)
try {
    namespace fs = std::filesystem;
    const auto status = fs::status(options.file);
    if (!fs::exists(status))
        throw std::system_error(std::make_error_code(std::errc::no_such_file_or_directory));
    if (!fs::is_regular_file(status))
        throw UsageError(options.file + " is no file that firmware could be read from");
    const auto size = fs::file_size(options.file);
    if (size == 0)
        throw UsageError(options.file + " is empty");
    if (size > Tiny600DFUPacket::largestImage)
        throw UsageError(fmt::format("{} has {} bytes, and a firmware image has {} at most", options.file, size,
            Tiny600DFUPacket::largestImage));
    return DFUFirmware::load(options.file, options.firmwareType);
} catch (const std::system_error& error) {
    constexpr auto order = " (a hearing aid is named before the file: aurisk update X1-L FILE)";
    throw UsageError(fmt::format("{} cannot be read: {}{}", options.file, error.code().message(),
        error.code() == std::errc::no_such_file_or_directory ? order : ""));
}

/// Those that the device tells: it may be one that answers nothing but updates.
void readVersions(Session& session, const Session::ThenWith<ProfileValues>& then)
{
    if (session.device().dataService())
        readProfile(session, versionTypes(), then);
    else
        then(session, {});
}

/// `firmware 2.3.1 -> 2.4.0`
Fields changes(const ProfileValues& before, const ProfileValues& after)
{
    const auto text = [](const ProfileValues& values, AuriskProfileType type) {
        return values.count(type) != 0 ? profileInWords(values, type).front().text : "unknown";
    };
    Fields fields;
    for (const auto& [type, label] : versions) {
        const auto old = text(before, type), now = text(after, type);
        if (old != now)
            fields.push_back({ .label = std::string(label), .text = fmt::format("{} -> {}", old, now) });
    }
    if (fields.empty())
        fields.push_back({ .text = after.empty() ? "tells no versions" : "reports the versions it had before" });
    return fields;
}

/// What became of the devices whose updates began together.
struct Outcome {
    int underWay = 0;
    std::vector<std::string> updated = {}, others = {}; ///< their names

    void end(Session& session)
    {
        if (std::find(updated.begin(), updated.end(), session.name()) == updated.end())
            others.push_back(session.name());
        if (--underWay == 0 && !updated.empty() && !others.empty())
            session.note(fmt::format(
                "{} was updated and {} was not: their firmware may differ now", updated.front(), others.front()));
    }
};
using SharedOutcome = std::shared_ptr<Outcome>;

void tell(Session& session, const SharedOutcome& outcome, Seconds span, const ProfileValues& before,
    const ProfileValues& after)
{
    outcome->updated.push_back(session.name());
    Fields fields = { { .key = "updated", .value = true },
        { .key = "seconds",
            .value = std::round(span.count() * 1000) / 1000,
            .text = fmt::format("updated in {:.1f} s", span.count()) },
        { .key = "before", .value = profileToJson(before, versionTypes()) },
        { .key = "after", .value = profileToJson(after, versionTypes()) } };
    for (auto& field : changes(before, after))
        fields.push_back(std::move(field));
    session.endLive();
    session.line(fields);
    session.finish();
}

void update(Session& session, const std::shared_ptr<DFUFirmware>& image, const SharedOutcome& outcome,
    const ProfileValues& before)
{
    ++outcome->underWay;
    const auto began = session.sinceBegin();
    const auto isBack = [=](Session& self) {
        const auto span = self.sinceBegin() - began;
        readVersions(self, [=](Session& again, const auto& after) { tell(again, outcome, span, before, after); });
    };
    const auto completed = [isBack](Session& self) {
        const auto limit = std::max(self.options().timeout, longWait);
        const auto isAway
            = fmt::format("{0} took the whole image, and has not been heard since ({1:g} s); switch it off "
                          "and on, and aurisk profile show {0} tells which versions it has",
                self.name(), limit.count());
        self.awaitReturn(limit, isAway, isBack);
    };
    FirmwareUpdate::begin(session, image, completed, [outcome](Session& self) { outcome->end(self); });
}

/// Both of a pair are known to be there before either is changed.
void play(Session& session, const std::shared_ptr<DFUFirmware>& image, const SharedOutcome& outcome)
{
    if (!session.device().firmwareUpdateService())
        return session.fail(fmt::format("{} has no service for firmware updates (AE3A)", session.name()));
    readVersions(session, [=](Session& self, const auto& before) {
        self.meet([=](Session& again) { update(again, image, outcome, before); });
    });
}

} // namespace

Plan planUpdate(const Options& options)
{
    const auto image = imageOf(options);
    const auto outcome = std::make_shared<Outcome>();
    return { .play = [=](Session& session) { play(session, image, outcome); } };
}

} // namespace aurisk::tool
