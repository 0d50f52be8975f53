// An output file that appears whole or not at all: written to a temporary file
// beside the target and renamed over it on Commit. A command that fails, or is
// interrupted by a thrown Failure, leaves no partial output and does not touch a
// file that already stood at the target path.
#pragma once

#include <cstdio>
#include <string>

namespace pixturn {

class AtomicOutputFile {
public:
    explicit AtomicOutputFile(std::string path);
    ~AtomicOutputFile();
    AtomicOutputFile(const AtomicOutputFile&) = delete;
    AtomicOutputFile& operator=(const AtomicOutputFile&) = delete;

    const std::string& path() const { return path_; }
    FILE* stream() const { return stream_; }
    // Closes the temporary file and renames it to the target path.
    void Commit();

private:
    void Discard();

    std::string path_;
    std::string temporaryPath_;
    FILE* stream_ = nullptr;
};

}  // namespace pixturn
