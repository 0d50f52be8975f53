// An output file that appears whole or not at all: written to a temporary file
// beside the target and renamed over it on Commit. A command that fails, is
// interrupted by a thrown Failure or killed by SIGINT, SIGTERM or SIGHUP leaves
// no partial output and does not touch a file that already stood at the target
// path.
#pragma once

#include <cstdio>
#include <string>

namespace pixturn {

// Removes every pending temporary file when the process is told to stop, then
// stops it as the signal would have; and makes writing past `ulimit -f` an error
// of the write (EFBIG) rather than a kill, so that it is reported and cleaned up.
// Called once at start-up.
void RemoveTemporariesOnSignals();

class AtomicOutputFile {
public:
    explicit AtomicOutputFile(std::string path);
    ~AtomicOutputFile();
    AtomicOutputFile(const AtomicOutputFile&) = delete;
    AtomicOutputFile& operator=(const AtomicOutputFile&) = delete;

    const std::string& path() const { return path_; }
    FILE* stream() const { return stream_; }
    // Closes the temporary file, leaving it complete but not yet renamed.
    // Throws Failure when the data could not be written.
    void Finish();
    // Throws a Failure naming the target when the rename would fail for a reason
    // known before it is tried: the target is a directory.
    void CheckTarget() const;
    // Finishes if needed and renames the temporary file to the target path.
    void Commit();

private:
    void Discard();

    std::string path_;
    std::string temporaryPath_;
    FILE* stream_ = nullptr;
    int slot_ = -1;  // where the signal handler finds temporaryPath_
};

}  // namespace pixturn
