// Stand-in for the part of CoreFoundation the plug-in calls (bundles, URLs,
// constant strings, CFRelease). The real framework does not exist here; these
// functions act on the simulated system of macos_system.h.
#pragma once

#include <cstdint>

extern "C" {

typedef unsigned char Boolean;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFBundle* CFBundleRef;
typedef const void* CFTypeRef;
struct FSRef;

extern const CFAllocatorRef kCFAllocatorSystemDefault;

// Constant strings live for the life of the process, as CFSTR's do.
CFStringRef __CFStringMakeConstantString(const char* cString);
#define CFSTR(cString) __CFStringMakeConstantString(cString)

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* fsRef);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef pathComponent, Boolean isDirectory);
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
Boolean CFBundleLoadExecutable(CFBundleRef bundle);
void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);
void CFRelease(CFTypeRef object);

}  // extern "C"
