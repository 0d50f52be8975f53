// Inside the simulated host: its objects (pictures and graphics objects) with
// their references, locks and pixels, and what it records of every call. The
// entry points the resolver hands out work on the one active HostState.
//
// A program may call the plug-in from many threads at once, and the plug-in calls
// the host from each of them: every entry point, and every function a test calls,
// holds the host's mutex for its whole call (HostAccess), so each sees and leaves
// the objects and the ledger whole. Pixels are not under it: like the real host,
// it leaves a picture's pixels to whoever has locked its description.
//
// Where no two calls can overlap the mutex is left alone: while the process has
// only one thread, and in a host made for one thread (HostConfig::oneThread). The
// fuzz target calls the host for every row of every picture it makes or checks,
// all from one thread, and spent nearly a tenth of its time on the lock.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define SIMHOST_KNOWS_SINGLE_THREADED 1
#endif

#include "simhost/picture_storage.h"
#include "simhost/simulated_host.h"

namespace simhost::internal {

enum class ObjectKind { Picture, Graphics };

// Handles are tokens, never addresses of host memory and never reused, so a call
// on a released object is recognised instead of reaching freed memory.
struct HostObject {
    ObjectKind kind = ObjectKind::Picture;
    int references = 0;
    // Of those, the references the program holds (made or released by the test)
    // and those other host objects hold (a picture on its mask, a graphics object
    // on its picture). Everything else was taken by the plug-in.
    int programReferences = 0;
    int hostReferences = 0;

    // Pictures.
    std::unique_ptr<PictureStore> store;
    uintptr_t mask = 0;
    bool isMask = false;
    int descriptionLocks = 0;
    // Failed three-argument locks that old hosts expect to be unlocked all the same.
    int unlocksOwedForFailedLocks = 0;
    int cacheClears = 0;

    // Graphics objects: the picture they draw into.
    uintptr_t target = 0;
};

class HostAccess;

class HostState {
public:
    HostState(HostConfig config, SimulatedHost* owner);
    ~HostState();

    // The state of the active host, or null when no host is active.
    static HostState* Active();
    // Active(), held, counting a call of the entry point.
    static HostAccess Enter(const char* entryPoint);

    std::mutex mutex;
    // Whether a call must hold the mutex: no, in a process that has never had a
    // second thread (glibc says so; elsewhere the answer is always yes), nor in a
    // host made for one thread, which stops the process when another calls it.
    bool CallsMayOverlap() const {
        if (config.oneThread) {
            if (std::this_thread::get_id() != ownThread_) CalledFromAnotherThread();
            return false;
        }
#if defined(SIMHOST_KNOWS_SINGLE_THREADED)
        return !__libc_single_threaded;
#else
        return true;
#endif
    }

    const HostConfig config;
    SimulatedHost* const owner;
    Registration registration;

    // The resolver's bookkeeping.
    std::map<std::string, int> lookups;
    // Found by the name as given, so that counting a call makes no string: most
    // entry points' names are too long for one without an allocation.
    std::map<std::string, int, std::less<>> calls;
    void CountCall(const char* entryPoint) {
        const std::string_view name = entryPoint;
        if (auto it = calls.find(name); it != calls.end())
            ++it->second;
        else
            calls.emplace(name, 1);
    }
    int newPictureCalls = 0;

    // Objects. Find records a problem when the handle is nil or not alive.
    // NewPicture makes nothing when its allocation throws.
    uintptr_t NewPicture(Storage storage, int32_t width, int32_t height, Rgba initial);
    // A new picture of pixels made already, with one reference.
    uintptr_t AddPicture(std::unique_ptr<PictureStore> store);
    uintptr_t NewGraphics(uintptr_t picture);
    HostObject* Find(const void* handle, const char* caller);
    const HostObject* Peek(const void* handle) const;
    PictureStore* PixelsOf(const void* handle, const char* caller);
    void AddReference(uintptr_t token);
    void DropReference(uintptr_t token, const char* caller);
    // The program's own references: those of the pictures it made, and those
    // of the results it was handed, once it releases them.
    void MarkProgramReference(uintptr_t token) { ++objects_.at(token).programReferences; }
    void ReleaseByProgram(uintptr_t token);
    // Gives the picture a mask (dropping any it had); the picture holds it.
    void SetMask(REALpicture picture, REALpicture mask);

    void Problem(std::string text) { problems_.push_back(std::move(text)); }
    std::vector<std::string> LedgerProblems(const std::vector<REALpicture>& returned) const;

    static uintptr_t TokenOf(const void* handle) { return reinterpret_cast<uintptr_t>(handle); }
    static REALpicture PictureHandle(uintptr_t token) { return reinterpret_cast<REALpicture>(token); }

private:
    void Destroy(uintptr_t token);
    [[noreturn]] static void CalledFromAnotherThread();

    const std::thread::id ownThread_ = std::this_thread::get_id();

    // The object of a token, or null; the last one found is kept at hand, as a
    // test or the fuzz target asks for the same picture row after row. Tokens are
    // never reused and map nodes stay put, so only Destroy has to forget it.
    HostObject* Lookup(uintptr_t token) const {
        return token == recentToken_ && token != 0 ? recent_ : LookUpInMap(token);
    }
    HostObject* LookUpInMap(uintptr_t token) const;
    mutable uintptr_t recentToken_ = 0;
    mutable HostObject* recent_ = nullptr;

    std::map<uintptr_t, HostObject> objects_;
    uintptr_t lastToken_;
    std::vector<std::string> problems_;
};

// A host held for one call: its mutex is locked for as long as this lives, when
// calls may overlap (HostState::CallsMayOverlap). Empty (false) when there is no
// host. Two pointers and no lock object, as every entry point and every row a
// test reads or writes makes one.
class HostAccess {
public:
    explicit HostAccess(HostState* host)
        : host_(host), held_(host != nullptr && host->CallsMayOverlap() ? &host->mutex : nullptr) {
        if (held_ != nullptr) held_->lock();
    }
    HostAccess(HostAccess&& other) noexcept : host_(other.host_), held_(std::exchange(other.held_, nullptr)) {}
    HostAccess& operator=(HostAccess&&) = delete;
    ~HostAccess() {
        if (held_ != nullptr) held_->unlock();
    }

    explicit operator bool() const { return host_ != nullptr; }
    HostState* operator->() const { return host_; }
    HostState& operator*() const { return *host_; }
    // Lets the host go while `work` runs: for work on what no other thread can
    // reach yet, such as the pixels of a picture still being made.
    template <typename Work>
    auto Unlocked(Work work) {
        if (held_ == nullptr) return work();
        struct Relock {
            std::mutex& mutex;
            ~Relock() { mutex.lock(); }
        };
        held_->unlock();
        const Relock relock{*held_};
        return work();
    }

private:
    HostState* host_;
    std::mutex* held_;
};

inline HostAccess HostState::Enter(const char* entryPoint) {
    HostAccess host(Active());
    if (host) host->CountCall(entryPoint);
    return host;
}

}  // namespace simhost::internal
