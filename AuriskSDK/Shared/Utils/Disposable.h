#pragma once

namespace aurisk {

/// Something that can be ended early: what `AuriskValueObservable::observe` hands out.
class AuriskDisposable {
public:
    virtual ~AuriskDisposable() = default;
    virtual void dispose() = 0;
};

} // namespace aurisk
