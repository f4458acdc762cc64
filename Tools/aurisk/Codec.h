#pragma once

#include <string>
#include <string_view>

namespace aurisk::codec {

/// Answers one line. `line` is a JSON object that names an operation and holds its members; the answer is one, too:
///
///     {"id": 1, "op": "hex.toBytes", "text": "fe 68"}     {"id":1,"ok":"fe68"}
///
/// "ok" holds the operation's value, "stop" the precondition that the input breaks, "error" what makes the line
/// unusable; "id" is given back where there is one. A blank line has no answer: the result is empty.
std::string answer(std::string_view line);

/// Answers the lines of the descriptor `input` on `output`, in their order, until the input ends or nobody reads the
/// answers any more. Nothing that has been asked waits for an answer while the input pauses. Returns the exit status: 0
/// whatever the lines held, 1 where the input cannot be read.
int runCodec(int input, int output);

} // namespace aurisk::codec
