#include "AuriskSDK/HearingAid/Aurisk/Data/AuriskDataLog.h"

#include "AuriskSDK/Shared/Utils/AuriskLog.h"
#include "AuriskSDK/Shared/Utils/Precondition.h"

namespace aurisk {

namespace {

constexpr std::size_t summarySize = 228;

/// Takes records apart, word by word.
class RecordReader {
public:
    explicit RecordReader(DataView bytes)
        : _rest(bytes)
    {
    }

    void read(std::uint32_t& word)
    {
        word = 0;
        for (unsigned i = 0; i < 4; ++i)
            word |= std::uint32_t{ _rest[i] } << 8 * i;
        _rest = _rest.subspan(4);
    }

    template <typename Record, std::size_t Count> void read(std::array<Record, Count>& records)
    {
        for (auto& record : records)
            read(record);
    }

    template <typename Record> void read(Record& record)
    {
        Record::fields.each(record, [this](std::string_view, auto& field) { this->read(field); });
    }

private:
    DataView _rest;
};

struct Blocks {
    std::uint8_t first, last;
};

Blocks blocksOf(AuriskDataLogType type)
{
    switch (type) {
    case AuriskDataLogType::summary: return { 0x00, 0x03 };
    case AuriskDataLogType::userEvent: return { 0x10, 0x37 };
    case AuriskDataLogType::loopGain: return { 0x60, 0x73 };
    case AuriskDataLogType::feedback: break;
    }
    preconditionFailure("no frames read the feedback log");
}

} // namespace

std::vector<AuriskRawData> rawDataArray(AuriskDataLogType type)
{
    constexpr std::uint8_t reading = 0x11, logs = 0x06;
    const auto blocks = blocksOf(type);
    std::vector<AuriskRawData> frames;
    for (auto block = blocks.first; block <= blocks.last; ++block)
        frames.push_back(AuriskRawData::make(reading, block, logs, {}));
    return frames;
}

std::optional<AuriskSummaryDataLog> AuriskSummaryDataLog::decode(DataView data)
{
    if (data.size() < summarySize) {
        printLine("Failed to initialize AuriskSummaryDataLog because the data.count is less than 228");
        return std::nullopt;
    }
    AuriskSummaryDataLog log;
    RecordReader(data).read(log);
    return log;
}

} // namespace aurisk
