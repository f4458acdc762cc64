#pragma once

#include "Tools/aurisk/Session.h"

#include <functional>
#include <vector>

namespace aurisk::tool {

/// One of several things that are done one after another: goes on with `then`, or ends the session.
using Step = std::function<void(Session&, Session::Then then)>;

/// Takes one step after the other, and goes on with `then`.
void inTurn(Session& session, std::vector<Step> steps, Session::Then then);

} // namespace aurisk::tool
