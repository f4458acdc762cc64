#pragma once

#include "AuriskSDK/HearingAid/Aurisk/Repository/AuriskAccessoryRepository.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace aurisk {

/// The default data of all models: what the JSON files of a folder, `resources.bundle`, hold. Each file is one object
/// with the keys of AuriskAccessoryRepository, or a list of them.
struct AuriskResourceBundle {
    std::vector<AuriskAccessoryRepository> entries = {};

    /// What is wrong with files that could not be used, one sentence each, such as
    /// `models.json: [2].hornPowerCode: 300 is outside 0 ... 255`. Nothing is taken from such a file.
    std::vector<std::string> errors = {};

    /// Reads every file whose name ends with `.json`, in the order of their names. Throws the system's error where the
    /// folder cannot be read.
    static AuriskResourceBundle load(const std::filesystem::path& folder);

    /// The entry that fits a device and names most of it: the pattern counts for more than the receiver. Of two
    /// that name the same, the first. None where none fits. Without `hornPowerCode` no entry fits that names one.
    std::optional<AuriskAccessoryRepository> find(std::string_view skuCode, std::string_view patternCode = {},
        std::optional<std::uint8_t> hornPowerCode = {}) const;
};

} // namespace aurisk
