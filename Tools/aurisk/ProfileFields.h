#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskProfile.h"
#include "Tools/aurisk/FieldEdit.h"
#include "Tools/aurisk/Steps.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The fields of a device's profile: texts, and the reserved field, whose members go by their own names.

namespace aurisk::tool {

struct ProfileField {
    AuriskProfileType type;
    std::string_view name; ///< of the property of AuriskProfile
    std::string_view label; ///< for people
};

/// Those that a device keeps, in the order of AuriskProfile.
const std::vector<ProfileField>& profileFields();
const ProfileField& profileField(AuriskProfileType type);

/// What a device told of its profile. What it refused to tell is missing.
using ProfileValues = std::map<AuriskProfileType, Data>;

/// Reads fields, and goes on with those that the device tells.
void readProfile(Session& session, const std::vector<AuriskProfileType>& types, Session::ThenWith<ProfileValues> then);

/// Every field that a device keeps.
std::vector<AuriskProfileType> allProfileTypes();

/// The JSON form of AuriskProfile with these fields alone; null for what is missing or makes no sense.
Json profileToJson(const ProfileValues& values, const std::vector<AuriskProfileType>& types);

/// A field in words, the reserved one a member a line.
Fields profileInWords(const ProfileValues& values, AuriskProfileType type);

/// Whether the bytes are what the field is made of: UTF-8, or the 20 bytes of the reserved field.
bool makesSense(AuriskProfileType type, DataView value);

/// What fields become. A reserved field that is none yet begins with its defaults.
using ProfileEdits = std::map<AuriskProfileType, std::function<Data(DataView before)>>;

/// Those that people type. Throws a UsageError for one that fits no device.
ProfileEdits profileEdits(const std::vector<Assignment>& changes);

/// Those that an object asks for, which is of the form of profileToJson(). Throws codec::Unusable. `place` is its own.
ProfileEdits profileEdits(const nlohmann::json& object, const std::string& place);

/// What `after` has other than `before`, member by member where that is the reserved field.
std::vector<Difference> differences(AuriskProfileType type, const std::optional<Data>& before, const Data& after);

} // namespace aurisk::tool
