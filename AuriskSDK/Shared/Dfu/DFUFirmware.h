#pragma once

#include "AuriskSDK/Platform/Data.h"
#include "AuriskSDK/Shared/Utils/EnumTable.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace aurisk {

/// Which of a device's images it is.
enum class DFUFirmwareType : std::uint8_t { type0, type1, type2 };

template <>
inline constexpr auto enumCases<DFUFirmwareType> = countingUp<DFUFirmwareType::type2>({ "type0", "type1", "type2" });

/// A firmware image.
class DFUFirmware {
    struct Key {
        explicit Key() = default;
    };

public:
    static std::shared_ptr<DFUFirmware> create(Data binFile, DFUFirmwareType type);

    /// The whole file. Throws the system's error as a std::system_error where it cannot be read.
    static std::shared_ptr<DFUFirmware> load(const std::filesystem::path& urlToBinFile, DFUFirmwareType type);

    DFUFirmware(Key, Data binFile, DFUFirmwareType type);

    int totalSize; ///< bytes, as they were counted when the image was made: replacing `binaries` does not change it
    DFUFirmwareType firmwareType;
    Data binaries; ///< sent as they are
};

} // namespace aurisk
