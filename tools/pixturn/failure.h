// The one way the command reports a problem: a message for a single line on
// stderr and the exit status that goes with it. Thrown from anywhere below main,
// caught only there, so that every output file still pending is discarded on the
// way out.
#pragma once

#include <stdexcept>
#include <string>

namespace pixturn {

enum ExitStatus : int {
    kExitSuccess = 0,
    kExitFailure = 1,  // a file, a picture or a method that could not give a result
    kExitUsage = 2,    // the command line itself is wrong
    kExitInternal = 3,  // the plug-in broke the host's rules (the ledger), or the command failed itself
};

class Failure : public std::runtime_error {
public:
    Failure(ExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}
    ExitStatus status() const { return status_; }

private:
    ExitStatus status_;
};

// A command line that cannot be run: unknown option, missing or malformed value.
inline Failure UsageError(const std::string& message) { return Failure(kExitUsage, message); }
// Anything else: unreadable files, corrupt images, a method that returned nil.
inline Failure RunError(const std::string& message) { return Failure(kExitFailure, message); }
// A reference or lock the plug-in kept, or a call the host forbids.
inline Failure InternalError(const std::string& message) { return Failure(kExitInternal, "internal error: " + message); }

}  // namespace pixturn
