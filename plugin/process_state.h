// Every value the plug-in keeps for the life of the process, in one place.
//
// Threads. Since Xojo 2024r3 a program may call the picture methods from several
// preemptive threads at once, so every value here may be read by one thread while
// another writes it. No lock is taken for that, anywhere:
//   - Start-up values are written once, by REALPluginMain on the thread that loads
//     the plug-in, before the host lets any method be called; they stay plain.
//   - Everything written later, at its first use, is one atomic word: the
//     entry-point cache slots, the framework bundle and the QuickDraw functions
//     found in it, and the host kind. A plain variable written by one thread while
//     another reads it is a data race, undefined even when both store the same
//     value; an atomic word is not, and costs a plain load on the processors the
//     host runs on.
//   - A first use that races another does its look-up too and stores the same
//     value, so the order of the stores does not matter and relaxed ordering is
//     enough: a host entry point or a QuickDraw function is code that was there
//     before either thread looked it up. The framework bundle is the exception: a
//     thread that finds it goes on to use the object another thread set up, so it
//     is published with release and read with acquire, and of two bundles loaded
//     at once the first stored is kept and the other given back.
//   - The host kind is two facts that must never be seen together (desktop and
//     console), so it is one word holding the decision, moved from undecided to a
//     kind by one compare-and-exchange: the first decision stands, and no reader
//     can see a state that no single thread would have written.
//   - Values the library decides as it is loaded (the fast loops' processor
//     path, transforms/processor_paths.cpp) are start-up values too.
//
// Test and fuzz builds link a reset (plugin/reset/) that returns all of them, and
// the definition records start-up edits (plugin/definitions.h), to their state at
// load; the shipped library has no such reset.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/macos/CoreFoundation.h"
#include "platform/macos/QuickDraw.h"
#include "platform/xojo/rb_plugin.h"

// Start-up values (REALPluginMain).
extern REALResolver gResolver;
extern double rbversion_rbversion;         // host version, e.g. 2013.04; 0.0 when unknown
extern int32_t CurrentREALControlVersion;  // definition version chosen for this host
extern const char* gpartname;
// The module registered on hosts that take one; the host points into it to the end.
extern REALmoduleDefinition* gExtensionModule;

// Hosts before 2012.0 expect a description unlock even after a failed lock.
inline bool HostUnlocksAfterFailedLock() { return rbversion_rbversion < 2012.0; }

// Cache slots of the host entry points (plugin/host_entry_points.h), null until
// their first successful look-up.
struct HostEntryPointSlots {
    std::atomic<void*> pRegisterClassExtension;
    std::atomic<void*> pRegisterModule;
    std::atomic<void*> pNewPicture;
    std::atomic<void*> pLockPictureDescription;        // the two-argument lock
    std::atomic<void*> pLockPictureDescriptionAsType;  // the three-argument lock
    std::atomic<void*> pUnlockPictureDescription;
    std::atomic<void*> pPictureClearCache;
    std::atomic<void*> pLockObject;
    std::atomic<void*> pUnlockObject;
    std::atomic<void*> pGetPictureGraphics;
    std::atomic<void*> pLoadObjectMethod;
    std::atomic<void*> pGetPropValue;
    std::atomic<void*> pGetPictureMask;
    std::atomic<void*> pGetClassRef;
};
extern HostEntryPointSlots gHostEntryPointSlots;

// The legacy pixel-map bridge (picture/legacy_bridge.h): the framework, loaded on
// first need and never released, and the QuickDraw functions found in it.
struct LegacyFunctionSlots {
    std::atomic<CFBundleRef> ApplicationServicesFramework;
    std::atomic<SetGWorldProc> _SetGWorld;
    std::atomic<GetPortPixMapProc> _GetPortPixMap;
    std::atomic<GetPixDepthProc> _GetPixDepth;
    std::atomic<UnlockPixelsProc> _UnlockPixels;
    std::atomic<LockPixelsProc> _LockPixels;
    std::atomic<GetGWorldPixMapProc> _GetGWorldPixMap;
    std::atomic<GetPixBaseAddrProc> _GetPixBaseAddr;
    std::atomic<GetPixRowBytesProc> _GetPixRowBytes;
};
extern LegacyFunctionSlots gLegacyFunctions;

// Which way pictures are reached (picture/picture_editor.h): undecided at load,
// decided on the first binding of the process, after which exactly one of
// IsDesktop and IsConsole stays true.
enum class HostKindDecision : uint8_t { Undecided, Desktop, Console };
extern std::atomic<HostKindDecision> gHostKind;
inline bool IsDesktop() { return gHostKind.load(std::memory_order_relaxed) == HostKindDecision::Desktop; }
inline bool IsConsole() { return gHostKind.load(std::memory_order_relaxed) == HostKindDecision::Console; }
// Decides the kind unless it is decided already: the first decision stands.
inline void DecideHostKind(HostKindDecision kind) {
    HostKindDecision undecided = HostKindDecision::Undecided;
    gHostKind.compare_exchange_strong(undecided, kind, std::memory_order_relaxed);
}

// Test and fuzz builds only: every value above back to its state at load, the
// definition records unedited, and what start-up allocated for the host freed
// (call it only once no host holds on to it).
void ResetProcessState();
// What it frees: a module BuildExtensionModule made (nullptr allowed), and the
// tables ConvertToOlderLayout allocated for a definition it converted.
void FreeExtensionModule(REALmoduleDefinition* module);
void FreeOlderLayoutTables(REALclassDefinition& definition);
