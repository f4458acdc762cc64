#include "Tools/aurisk/Steps.h"

#include <memory>

namespace aurisk::tool {

namespace {

void goOn(Session& session, const std::shared_ptr<const std::vector<Step>>& steps, std::size_t next,
    const Session::Then& then)
{
    if (next == steps->size())
        return then(session);
    (*steps)[next](session, [=](Session& self) { goOn(self, steps, next + 1, then); });
}

} // namespace

void inTurn(Session& session, std::vector<Step> steps, Session::Then then)
{
    goOn(session, std::make_shared<const std::vector<Step>>(std::move(steps)), 0, then);
}

} // namespace aurisk::tool
