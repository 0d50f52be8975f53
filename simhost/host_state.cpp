// The host's objects and their references, and the ledger a test reads at its
// end. A reference count says how many holders an object has; the ledger also
// knows who they are (the program, other host objects), so whatever remains is
// what the plug-in took and did not give back.
#include "simhost/host_state.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "platform/macos/macos_system.h"

namespace simhost::internal {

namespace {

HostState* gActive = nullptr;

// Apart from the ranges the simulated system uses for its worlds and URLs.
constexpr uintptr_t kFirstObjectToken = 0x30000000u;

std::string Describe(uintptr_t token) {
    std::ostringstream text;
    text << "object 0x" << std::hex << token;
    return text.str();
}

}  // namespace

HostState::HostState(HostConfig configuration, SimulatedHost* ownerHost)
    : config(std::move(configuration)), owner(ownerHost), lastToken_(kFirstObjectToken) {
    macos_system::Configure(config.system);
    gActive = this;
}

HostState::~HostState() {
    if (gActive == this) gActive = nullptr;
}

HostState* HostState::Active() { return gActive; }

void HostState::CalledFromAnotherThread() {
    std::fputs("simulated host: a host made for one thread was called from another\n", stderr);
    std::abort();
}

uintptr_t HostState::NewPicture(Storage storage, int32_t width, int32_t height, Rgba initial) {
    return AddPicture(std::make_unique<PictureStore>(storage, width, height, config.rowPadding, initial));
}

uintptr_t HostState::AddPicture(std::unique_ptr<PictureStore> store) {
    lastToken_ += 16;
    HostObject& object = objects_[lastToken_];
    object.kind = ObjectKind::Picture;
    object.references = 1;
    object.store = std::move(store);
    return lastToken_;
}

uintptr_t HostState::NewGraphics(uintptr_t picture) {
    lastToken_ += 16;
    HostObject& object = objects_[lastToken_];
    object.kind = ObjectKind::Graphics;
    object.references = 1;
    object.target = picture;
    AddReference(picture);
    ++objects_.at(picture).hostReferences;
    return lastToken_;
}

HostObject* HostState::Find(const void* handle, const char* caller) {
    if (handle == nullptr) {
        Problem(std::string(caller) + " called with nil");
        return nullptr;
    }
    HostObject* object = Lookup(TokenOf(handle));
    if (object == nullptr)
        Problem(std::string(caller) + " called on " + Describe(TokenOf(handle)) + ", which is not alive");
    return object;
}

const HostObject* HostState::Peek(const void* handle) const { return Lookup(TokenOf(handle)); }

HostObject* HostState::LookUpInMap(uintptr_t token) const {
    auto it = objects_.find(token);
    if (it == objects_.end()) return nullptr;
    recentToken_ = token;
    // The map is the host's own and never const: only this look-up is.
    recent_ = const_cast<HostObject*>(&it->second);
    return recent_;
}

PictureStore* HostState::PixelsOf(const void* handle, const char* caller) {
    HostObject* object = Find(handle, caller);
    if (object == nullptr) return nullptr;
    if (object->kind != ObjectKind::Picture) {
        Problem(std::string(caller) + " called on a graphics object in place of a picture");
        return nullptr;
    }
    return object->store.get();
}

void HostState::AddReference(uintptr_t token) { ++objects_.at(token).references; }

void HostState::DropReference(uintptr_t token, const char* caller) {
    HostObject& object = objects_.at(token);
    if (--object.references > 0) return;
    if (object.programReferences > 0 || object.hostReferences > 0)
        Problem(std::string(caller) + " released " + Describe(token) + " while the program or the host still held it");
    Destroy(token);
}

void HostState::ReleaseByProgram(uintptr_t token) {
    HostObject& object = objects_.at(token);
    // A reference nobody accounts for is a result's, handed to the program.
    if (object.references <= object.programReferences + object.hostReferences) --object.programReferences;
    DropReference(token, "the program");
}

void HostState::SetMask(REALpicture picture, REALpicture mask) {
    HostObject* owner = Find(picture, "SetMask");
    HostObject* newMask = Find(mask, "SetMask");
    if (owner == nullptr || newMask == nullptr || owner == newMask) return;
    const uintptr_t previous = owner->mask;
    owner->mask = TokenOf(mask);
    newMask->isMask = true;
    ++newMask->hostReferences;
    AddReference(owner->mask);
    if (previous != 0) {
        --objects_.at(previous).hostReferences;
        DropReference(previous, "SetMask");
    }
}

void HostState::Destroy(uintptr_t token) {
    if (token == recentToken_) recentToken_ = 0;
    auto node = objects_.extract(token);
    HostObject& object = node.mapped();
    if (object.descriptionLocks > 0 || object.unlocksOwedForFailedLocks > 0)
        Problem(Describe(token) + " died with its description locked");
    if (object.store && object.store->world() != nullptr && macos_system::WorldPixelLocks(object.store->world()) > 0)
        Problem(Describe(token) + " died with its pixels locked");
    if (object.mask != 0) {
        --objects_.at(object.mask).hostReferences;
        DropReference(object.mask, "the host");
    }
    if (object.target != 0) {
        --objects_.at(object.target).hostReferences;
        DropReference(object.target, "the host");
    }
}

std::vector<std::string> HostState::LedgerProblems(const std::vector<REALpicture>& returned) const {
    std::vector<std::string> found = problems_;
    for (const auto& [token, object] : objects_) {
        const int returnedReferences =
            static_cast<int>(std::count(returned.begin(), returned.end(), PictureHandle(token)));
        const int expected = object.programReferences + object.hostReferences + returnedReferences;
        if (object.references != expected) {
            std::ostringstream text;
            text << Describe(token) << (object.kind == ObjectKind::Graphics ? " (graphics)" : " (picture)") << " holds "
                 << object.references << " references where the program and host account for " << expected;
            found.push_back(text.str());
        }
        if (object.descriptionLocks != 0)
            found.push_back(Describe(token) + " has its description locked " + std::to_string(object.descriptionLocks) +
                            " times");
        if (object.unlocksOwedForFailedLocks != 0)
            found.push_back(Describe(token) + " has its description locked by " +
                            std::to_string(object.unlocksOwedForFailedLocks) + " failed locks never unlocked");
        if (object.store && object.store->world() != nullptr && macos_system::WorldPixelLocks(object.store->world()) != 0)
            found.push_back(Describe(token) + " has its pixels locked");
    }
    for (REALpicture picture : returned)
        if (Peek(picture) == nullptr) found.push_back("a returned picture is not alive");

    const macos_system::Counters& system = macos_system::GetCounters();
    if (system.cfURLsAlive != 0) found.push_back(std::to_string(system.cfURLsAlive) + " URLs were never released");
    if (system.deadCFObjectCalls != 0) found.push_back("CoreFoundation was called on objects not alive");
    if (system.unexpectedFolderRequests != 0) found.push_back("FSFindFolder was asked for another folder");
    if (system.setGWorldOtherCalls != 0) found.push_back("SetGWorld was called with a port or device");
    if (system.quickDrawCallsOnDeadWorlds != 0) found.push_back("QuickDraw was called on worlds not alive");
    if (system.unbalancedUnlockPixels != 0) found.push_back("UnlockPixels was called with no lock held");
    return found;
}

}  // namespace simhost::internal
