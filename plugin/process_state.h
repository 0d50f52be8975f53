// Every value the plug-in keeps for the life of the process, in one place. Each
// is written once, at start-up or at its first use, and only read afterwards:
// the cache slots and function pointers are single words written whole, and
// racing first uses store the same value, so no lock is taken anywhere.
//
// Test and fuzz builds link a reset (plugin/reset/) that returns all of them, and
// the definition records start-up edits (plugin/definitions.h), to their state at
// load; the shipped library has no such reset.
#pragma once

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
    void* pRegisterClassExtension;
    void* pRegisterModule;
    void* pNewPicture;
    void* pLockPictureDescription;        // the two-argument lock
    void* pLockPictureDescriptionAsType;  // the three-argument lock
    void* pUnlockPictureDescription;
    void* pPictureClearCache;
    void* pLockObject;
    void* pUnlockObject;
    void* pGetPictureGraphics;
    void* pLoadObjectMethod;
    void* pGetPropValue;
    void* pGetPictureMask;
    void* pGetClassRef;
};
extern HostEntryPointSlots gHostEntryPointSlots;

// The legacy pixel-map bridge (picture/legacy_bridge.h): the framework, loaded on
// first need and never released, and the QuickDraw functions found in it.
struct LegacyFunctionSlots {
    CFBundleRef ApplicationServicesFramework;
    SetGWorldProc _SetGWorld;
    GetPortPixMapProc _GetPortPixMap;
    GetPixDepthProc _GetPixDepth;
    UnlockPixelsProc _UnlockPixels;
    LockPixelsProc _LockPixels;
    GetGWorldPixMapProc _GetGWorldPixMap;
    GetPixBaseAddrProc _GetPixBaseAddr;
    GetPixRowBytesProc _GetPixRowBytes;
};
extern LegacyFunctionSlots gLegacyFunctions;

// Which way pictures are reached (picture/picture_editor.h); decided on the
// first binding of the process, after which exactly one stays true.
extern bool IsDesktop;
extern bool IsConsole;

// Test and fuzz builds only: every value above back to its state at load, the
// definition records unedited, and what start-up allocated for the host freed
// (call it only once no host holds on to it).
void ResetProcessState();
// What it frees: a module BuildExtensionModule made (nullptr allowed), and the
// tables ConvertToOlderLayout allocated for a definition it converted.
void FreeExtensionModule(REALmoduleDefinition* module);
void FreeOlderLayoutTables(REALclassDefinition& definition);
