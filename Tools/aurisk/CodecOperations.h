#pragma once

#include "Tools/aurisk/CodecJson.h"

#include <string_view>

namespace aurisk::codec {

/// Something that a line can ask for. `perform` reads the members that it needs, and only then calls the library.
struct Operation {
    std::string_view name;
    Answer (*perform)(const Members& line);
};

/// Null where there is none of that name.
const Operation* operation(std::string_view name);

/// The class that an advertisement leads to; null where it leads to none.
Answer selectAccessory(const Members& line);

/// The cases of an enumeration of the library.
Answer listEnumeration(const Members& line);

/// The texts of a table of labels.
Answer listLabels(const Members& line);

// The settings blocks of both chips.
template <typename Dsp> Answer decodeDsp(const Members& line);
template <typename Dsp> Answer encodeDsp(const Members& line);
template <typename Dsp> Answer editDsp(const Members& line);
template <typename Dsp> Answer getEq(const Members& line);
template <typename Global> Answer decodeGlobal(const Members& line);
template <typename Global> Answer encodeGlobal(const Members& line);

// The profile and its reserved field.
Answer decodeReserved(const Members& line);
Answer encodeReserved(const Members& line);
Answer applyToProfile(const Members& line);
Answer listPrograms(const Members& line);

// Firmware updates.
Answer encodeDfuStart(const Members& line);
Answer encodeDfuPackets(const Members& line);
Answer encodeDfuValidate(const Members& line);
Answer decodeDfuResponse(const Members& line);
Answer crc16(const Members& line);

// The PL3 family.
Answer encodeHdlc(const Members& line);
Answer encodeHdlcText(const Members& line);
Answer decodeHdlc(const Members& line); ///< one notification, or several that one receiver takes in
Answer decodePL3ManuData(const Members& line);
Answer decodePL3Block(const Members& line);
Answer describePL3Value(const Members& line);
Answer namePL3Command(const Members& line);

} // namespace aurisk::codec
