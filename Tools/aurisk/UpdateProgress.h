#pragma once

#include "AuriskSDK/Shared/Dfu/DFUServiceDelegate.h"
#include "Tools/aurisk/Session.h"

#include <optional>
#include <string>

namespace aurisk::tool {

/// How far the update of one device has come, and what is shown of it: on a terminal a bar that is redrawn in place,
/// elsewhere a line at each tenth, in JSON each report and each change of state. Used on the main queue.
class UpdateProgress {
public:
    /// Begins now, with an image of that many bytes.
    explicit UpdateProgress(int size);

    void enter(Session& session, DFUState state);

    /// `speed`: bytes a second on average, not finite where nobody knows.
    void report(Session& session, int percent, double speed);

    DFUState state() const { return _state; }
    Seconds elapsed() const { return DispatchQueue::main().now() - _began; }

    /// "after 37 % of the image"
    std::string howFar() const;

private:
    void tellState(Session& session) const;
    void tellReport(Session& session);
    void redraw(Session& session);
    std::optional<Seconds> remaining() const;
    std::string words() const;

    int _size;
    Seconds _began;
    DFUState _state = DFUState::connecting;
    int _percent = 0;
    std::optional<double> _speed;
    Seconds _reported; ///< when
    int _nextLine = 0; ///< percent
    std::optional<Seconds> _drawn; ///< when
};

} // namespace aurisk::tool
