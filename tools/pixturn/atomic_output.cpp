// The temporary file lives in the target's directory so that the final rename
// stays on one file system and is atomic.
#include "tools/pixturn/atomic_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

constexpr char kTemporarySuffix[] = ".pixturn-XXXXXX";

// The temporary files not yet renamed or removed, for the signal handler: plain
// pointers to their names, set and cleared atomically. A command has at most two
// outputs pending at once (a picture and its mask).
std::atomic<const char*> gPending[4];

int Register(const char* path) {
    for (int slot = 0; slot < static_cast<int>(std::size(gPending)); ++slot) {
        const char* expected = nullptr;
        if (gPending[slot].compare_exchange_strong(expected, path)) return slot;
    }
    throw std::logic_error("more pending output files than the signal handler keeps");
}

void OnStopSignal(int signal) {
    for (std::atomic<const char*>& pending : gPending) {
        if (const char* path = pending.exchange(nullptr)) unlink(path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// A name in the target's directory that adds the suffix without passing the
// longest name the file system allows: long names lose characters at their end.
std::string TemporaryPathFor(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const long longest = pathconf(directory.empty() ? "." : directory.c_str(), _PC_NAME_MAX);
    const size_t room = static_cast<size_t>(longest > 0 ? longest : NAME_MAX) - (sizeof kTemporarySuffix - 1) - 1;
    if (name.size() > room) name.resize(room);
    return directory + "." + name + kTemporarySuffix;
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

void RemoveTemporariesOnSignals() {
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, OnStopSignal);
    std::signal(SIGXFSZ, SIG_IGN);
}

AtomicOutputFile::AtomicOutputFile(std::string path) : path_(std::move(path)) {
    temporaryPath_ = TemporaryPathFor(path_);
    slot_ = Register(temporaryPath_.c_str());
    // Blocked while the file is made, so that no signal can come between its
    // creation and the handler knowing it.
    sigset_t stops, previous;
    sigemptyset(&stops);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stops, signal);
    sigprocmask(SIG_BLOCK, &stops, &previous);
    const int descriptor = mkstemp(temporaryPath_.data());
    const int error = errno;
    if (descriptor < 0) gPending[slot_] = nullptr;
    sigprocmask(SIG_SETMASK, &previous, nullptr);
    if (descriptor < 0) {
        temporaryPath_.clear();
        throw WriteError(path_, error);
    }
    GiveUsualPermissions(descriptor);
    stream_ = fdopen(descriptor, "wb");
    if (stream_ == nullptr) {
        const int fdopenError = errno;
        close(descriptor);
        Discard();
        throw WriteError(path_, fdopenError);
    }
}

AtomicOutputFile::~AtomicOutputFile() { Discard(); }

void AtomicOutputFile::Finish() {
    if (stream_ == nullptr) return;
    errno = 0;
    bool written = std::fflush(stream_) == 0 && !std::ferror(stream_);
    int error = written ? 0 : (errno != 0 ? errno : EIO);
    if (std::fclose(stream_) != 0 && written) {
        written = false;
        error = errno;
    }
    stream_ = nullptr;
    if (!written) {
        Discard();
        throw WriteError(path_, error);
    }
}

void AtomicOutputFile::CheckTarget() const {
    struct stat target;
    if (stat(path_.c_str(), &target) == 0 && S_ISDIR(target.st_mode)) throw WriteError(path_, EISDIR);
}

void AtomicOutputFile::Commit() {
    Finish();
    if (std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
        const int error = errno;
        Discard();
        throw WriteError(path_, error);
    }
    gPending[slot_] = nullptr;
    temporaryPath_.clear();
}

void AtomicOutputFile::Discard() {
    if (stream_ != nullptr) {
        std::fclose(stream_);
        stream_ = nullptr;
    }
    if (!temporaryPath_.empty()) {
        std::remove(temporaryPath_.c_str());
        gPending[slot_] = nullptr;
        temporaryPath_.clear();
    }
}

}  // namespace pixturn
