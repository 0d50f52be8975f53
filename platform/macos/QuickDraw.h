// QuickDraw's types and the published calling forms of the eight functions the
// plug-in reaches through ApplicationServices. The plug-in never links them: it
// finds them by name in the loaded framework bundle, hence the pointer types.
#pragma once

#include "CoreFoundation.h"

extern "C" {

typedef char* Ptr;
typedef struct OpaqueGrafPtr* CGrafPtr;
typedef CGrafPtr GWorldPtr;
typedef struct GDevice** GDHandle;
typedef struct PixMap** PixMapHandle;

typedef void (*SetGWorldProc)(CGrafPtr port, GDHandle device);
typedef PixMapHandle (*GetPortPixMapProc)(CGrafPtr port);
typedef PixMapHandle (*GetGWorldPixMapProc)(GWorldPtr world);
typedef int16_t (*GetPixDepthProc)(PixMapHandle pixMap);
typedef Boolean (*LockPixelsProc)(PixMapHandle pixMap);
typedef void (*UnlockPixelsProc)(PixMapHandle pixMap);
typedef Ptr (*GetPixBaseAddrProc)(PixMapHandle pixMap);
typedef int32_t (*GetPixRowBytesProc)(PixMapHandle pixMap);

}  // extern "C"
