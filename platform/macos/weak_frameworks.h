// The CoreFoundation and CoreServices functions the plug-in calls, as weak
// references: where the process holds them (the simulated host with its
// stand-ins) they are those, and elsewhere (a real Linux host, the simulated
// host without the stand-ins) null, for code that must run in both.
#pragma once

#include "CoreServices.h"

#pragma weak kCFAllocatorSystemDefault
#pragma weak __CFStringMakeConstantString
#pragma weak CFURLCreateFromFSRef
#pragma weak CFURLCreateCopyAppendingPathComponent
#pragma weak CFBundleCreate
#pragma weak CFBundleLoadExecutable
#pragma weak CFBundleGetFunctionPointerForName
#pragma weak CFRelease
#pragma weak FSFindFolder
