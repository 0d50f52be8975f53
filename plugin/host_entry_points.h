// Every host service the plug-in uses, found by name through the resolver the host
// handed to REALPluginMain. The table below is the whole contract: the function
// the plug-in calls (named after the host's interface), the name the host knows it
// by, and its signature. One mechanism serves them all:
//   - the first call asks the resolver and keeps the answer in the entry point's
//     cache slot; a successful look-up is never repeated;
//   - a failed look-up is not remembered: the next call asks again, so a host that
//     learns a name later is still served;
//   - while the host has no such entry point, nothing is called and the zero of
//     the result type comes back (nil, false, nothing), which callers treat like
//     the host answering nil or false.
// The slot is one atomic pointer-sized word; racing first uses store the same
// address, so no lock is taken (plugin/process_state.h says why that is enough).
#pragma once

#include "platform/xojo/rb_plugin.h"
#include "plugin/process_state.h"

template <typename Signature>
class HostEntryPoint;

template <typename Result, typename... Arguments>
class HostEntryPoint<Result(Arguments...)> {
public:
    constexpr HostEntryPoint(const char* lookedUpAs, std::atomic<void*>* slot) : name_(lookedUpAs), slot_(slot) {}

    Result operator()(Arguments... arguments) const {
        void* address = Address();
        if (address == nullptr) return Result();
        return reinterpret_cast<Result (*)(Arguments...)>(address)(arguments...);
    }

    // Looks the entry point up (the same rule as a call) without calling it.
    bool IsAvailable() const { return Address() != nullptr; }

private:
    // A failed look-up leaves the slot as it is, so that it never undoes another
    // thread's success.
    void* Address() const {
        void* address = slot_->load(std::memory_order_relaxed);
        if (address == nullptr && gResolver != nullptr) {
            address = gResolver(name_);
            if (address != nullptr) slot_->store(address, std::memory_order_relaxed);
        }
        return address;
    }

    const char* name_;
    std::atomic<void*>* slot_;
};

// Two entry points of different signatures behind one plug-in-side name; each
// keeps its own slot.
template <typename... EntryPoints>
struct HostOverloads : EntryPoints... {
    using EntryPoints::operator()...;
};

// The description lock has two forms: the older one fills in whatever the picture
// is; the newer one asks for a picture type and says whether the host could oblige.
using LockPictureDescriptionAny = HostEntryPoint<void(REALpicture, REALpictureDescription*)>;
using LockPictureDescriptionAsType = HostEntryPoint<bool(REALpicture, REALpictureDescription*, int32_t type)>;

// Signature as the plug-in uses it, the plug-in-side name, and {the name the host
// knows, the cache slot}.
inline constexpr HostEntryPoint<void(REALclassDefinition*)>                              REALRegisterClassExtension{"PluginRegisterClassExtension", &gHostEntryPointSlots.pRegisterClassExtension};
inline constexpr HostEntryPoint<void(REALmoduleDefinition*)>                             REALRegisterModule{"PluginRegisterModule", &gHostEntryPointSlots.pRegisterModule};
inline constexpr HostEntryPoint<REALpicture(int32_t width, int32_t height, int32_t depth)> REALNewPicture{"newPicture", &gHostEntryPointSlots.pNewPicture};
inline constexpr HostOverloads<LockPictureDescriptionAny, LockPictureDescriptionAsType>  REALLockPictureDescription{LockPictureDescriptionAny{"lockPictureDescription", &gHostEntryPointSlots.pLockPictureDescription}, LockPictureDescriptionAsType{"REALLockPictureDescription", &gHostEntryPointSlots.pLockPictureDescriptionAsType}};
inline constexpr HostEntryPoint<void(REALpicture)>                                       REALUnlockPictureDescription{"unlockPictureDescription", &gHostEntryPointSlots.pUnlockPictureDescription};
inline constexpr HostEntryPoint<void(REALpicture)>                                       REALPictureClearCache{"REALPictureClearCache", &gHostEntryPointSlots.pPictureClearCache};
inline constexpr HostEntryPoint<void(REALobject)>                                        REALLockObject{"REALLockObject", &gHostEntryPointSlots.pLockObject};
inline constexpr HostEntryPoint<void(REALobject)>                                        REALUnlockObject{"REALUnlockObject", &gHostEntryPointSlots.pUnlockObject};
inline constexpr HostEntryPoint<REALobject(REALpicture)>                                 REALGetPictureGraphics{"pluginPictureGraphicsGetter", &gHostEntryPointSlots.pGetPictureGraphics};
inline constexpr HostEntryPoint<void*(REALobject, const char* declaration)>              REALLoadObjectMethod{"REALLoadObjectMethod", &gHostEntryPointSlots.pLoadObjectMethod};
inline constexpr HostEntryPoint<bool(REALobject, const char* property, int32_t* value)>  REALGetPropValueInt32{"REALGetPropValueInt", &gHostEntryPointSlots.pGetPropValue};
inline constexpr HostEntryPoint<REALpicture(REALpicture, uint8_t create)>                REALGetPictureMask{"REALGetPictureMask", &gHostEntryPointSlots.pGetPictureMask};
inline constexpr HostEntryPoint<void*(const char* className)>                            REALGetClassRef{"pluginObjectType", &gHostEntryPointSlots.pGetClassRef};
