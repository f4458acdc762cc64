#pragma once

namespace aurisk {

/// What happens when a precondition breaks while bytes from a device are taken apart.
enum class PreconditionPolicy {
    stop, ///< one line on standard error, and the process stops: the default
    contain, ///< the bytes are dropped and logged as if they had not arrived; what applications in the field choose
};

/// Chooses the policy for the whole process; once, before the first device is found. A precondition that application
/// code breaks stops the process under either.
void setPreconditionPolicy(PreconditionPolicy policy);

PreconditionPolicy preconditionPolicy();

} // namespace aurisk
