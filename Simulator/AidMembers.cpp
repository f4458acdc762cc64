#include "Simulator/AidMembers.h"

namespace aurisk {

namespace {

bool isAddress(std::string_view text)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (std::size_t i = 0; i < text.size(); ++i)
        if (i % 3 == 2 ? text[i] != ':' : digits.find(text[i]) == std::string_view::npos)
            return false;
    return text.size() == 17;
}

} // namespace

void refuseNamelessAid(std::string_view name, std::string_view address, const std::string& place)
{
    if (name.empty())
        failAt(place + ".name", "must not be empty");
    if (!isAddress(address))
        failAt(place + ".address", "must look like 0A:1B:2C:3D:4E:5F, with capital letters");
}

} // namespace aurisk
