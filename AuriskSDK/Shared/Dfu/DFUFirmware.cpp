#include "AuriskSDK/Shared/Dfu/DFUFirmware.h"

#include "AuriskSDK/Shared/Utils/Precondition.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace aurisk {

DFUFirmware::DFUFirmware(Key, Data binFile, DFUFirmwareType type)
    : totalSize(exactly<int>(binFile.size(), "the size of a firmware image"))
    , firmwareType(type)
    , binaries(std::move(binFile))
{
}

std::shared_ptr<DFUFirmware> DFUFirmware::create(Data binFile, DFUFirmwareType type)
{
    return std::make_shared<DFUFirmware>(Key{}, std::move(binFile), type);
}

std::shared_ptr<DFUFirmware> DFUFirmware::load(const std::filesystem::path& urlToBinFile, DFUFirmwareType type)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(urlToBinFile.c_str(), "rb"), &std::fclose);
    if (!file)
        throw std::system_error(errno, std::generic_category());
    Data bytes;
    std::array<std::uint8_t, 65536> part;
    while (const auto count = std::fread(part.data(), 1, part.size(), file.get()))
        bytes.insert(bytes.end(), part.data(), part.data() + count);
    if (std::ferror(file.get()))
        throw std::system_error(errno, std::generic_category());
    return create(std::move(bytes), type);
}

} // namespace aurisk
