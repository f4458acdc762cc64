#pragma once

#include "Tools/aurisk/ExchangeFile.h"
#include "Tools/aurisk/Steps.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// From devices to a file, and from there to devices.

namespace aurisk::tool {

/// What has been read of the devices of a run and is to be kept.
class ExportedParts {
public:
    /// What the member of that name holds for the session's device.
    void add(const Session& session, const std::string& member, Json value);

    /// Throws a UsageError where the file cannot be written.
    void write(const std::string& path, std::string_view format, Output& output) const;

private:
    struct Part {
        std::string identifier;
        Json device; ///< as the file holds it
    };
    std::map<std::string, Part> _parts; ///< by name: the left one of a pair comes first
};

/// One thing that an import brings to a device.
struct ImportItem {
    Step prepare; ///< reads what the device holds, as what the file does not name stays
    Step write;
    Step compare; ///< reads back
};

/// Prepares all items; once that is done on every device of the run, writes all; then compares all.
void importItems(Session& session, const std::vector<ImportItem>& items, Session::Then then);

} // namespace aurisk::tool
