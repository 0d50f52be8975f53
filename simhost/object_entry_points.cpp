// References, class look-up and integer properties: what the host offers on any
// object. A reference taken or dropped on a nil or dead object is a fault of the
// caller, written down in the ledger.
#include <cstring>

#include "simhost/entry_points.h"
#include "simhost/host_state.h"

namespace simhost::internal::entry {

namespace {

// The application class says what kind of host this is; every kind has the
// picture and graphics classes.
const char* const kApplicationClass[] = {"Application", "ConsoleApplication", "WebApplication"};
const char* const kCommonClasses[] = {"Picture", "Graphics"};

}  // namespace

void REALLockObject(REALobject object) {
    auto host = HostState::Enter("REALLockObject");
    if (host && host->Find(object, "REALLockObject") != nullptr)
        host->AddReference(HostState::TokenOf(object));
}

void REALUnlockObject(REALobject object) {
    auto host = HostState::Enter("REALUnlockObject");
    if (host && host->Find(object, "REALUnlockObject") != nullptr)
        host->DropReference(HostState::TokenOf(object), "REALUnlockObject");
}

void* pluginObjectType(const char* className) {
    auto host = HostState::Enter("pluginObjectType");
    if (!host || className == nullptr) return nullptr;
    for (const char* const& name : kCommonClasses)
        if (std::strcmp(name, className) == 0) return const_cast<char**>(&name);
    const int kind = static_cast<int>(host->config.kind);
    if (kind < 3 && std::strcmp(kApplicationClass[kind], className) == 0)
        return const_cast<char**>(&kApplicationClass[kind]);
    return nullptr;
}

bool REALGetPropValueInt(REALobject object, const char* property, int32_t* value) {
    auto host = HostState::Enter("REALGetPropValueInt");
    if (!host || property == nullptr || value == nullptr) return false;
    const PictureStore* store = host->PixelsOf(object, "REALGetPropValueInt");
    if (store == nullptr) return false;
    if (std::strcmp(property, "Width") == 0) *value = store->width();
    else if (std::strcmp(property, "Height") == 0) *value = store->height();
    else return false;
    return true;
}

}  // namespace simhost::internal::entry
