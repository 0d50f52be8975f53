// The temporary file lives in the target's directory so that the final rename
// stays on one file system and is atomic.
#include "tools/pixturn/atomic_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

std::string TemporaryPathFor(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    return directory + "." + name + ".pixturn-XXXXXX";
}

Failure WriteError(const std::string& path, int error) {
    return RunError(path + ": cannot write: " + std::strerror(error));
}

// mkstemp makes the file readable by its owner only; an output file gets the
// permissions any new file of the user would get.
void GiveUsualPermissions(int descriptor) {
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, 0666 & ~mask);
}

}  // namespace

AtomicOutputFile::AtomicOutputFile(std::string path) : path_(std::move(path)) {
    std::string pattern = TemporaryPathFor(path_);
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    const int descriptor = mkstemp(buffer.data());
    if (descriptor < 0) throw WriteError(path_, errno);
    temporaryPath_ = buffer.data();
    GiveUsualPermissions(descriptor);
    stream_ = fdopen(descriptor, "wb");
    if (stream_ == nullptr) {
        const int error = errno;
        close(descriptor);
        Discard();
        throw WriteError(path_, error);
    }
}

AtomicOutputFile::~AtomicOutputFile() { Discard(); }

void AtomicOutputFile::Commit() {
    errno = 0;
    bool written = std::fflush(stream_) == 0 && !std::ferror(stream_);
    int error = written ? 0 : (errno != 0 ? errno : EIO);
    if (std::fclose(stream_) != 0 && written) {
        written = false;
        error = errno;
    }
    stream_ = nullptr;
    if (written && std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
        written = false;
        error = errno;
    }
    if (!written) {
        Discard();
        throw WriteError(path_, error);
    }
    temporaryPath_.clear();
}

void AtomicOutputFile::Discard() {
    if (stream_ != nullptr) {
        std::fclose(stream_);
        stream_ = nullptr;
    }
    if (!temporaryPath_.empty()) {
        std::remove(temporaryPath_.c_str());
        temporaryPath_.clear();
    }
}

}  // namespace pixturn
