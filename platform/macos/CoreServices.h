// Stand-in for CoreServices' folder manager: FSFindFolder on the simulated system.
#pragma once

#include "CoreFoundation.h"

extern "C" {

typedef int16_t OSErr;
typedef uint32_t OSType;

struct FSRef {
    uint8_t hidden[80];
};

enum : int16_t { kOnSystemDisk = -32767 };
enum : OSType { kFrameworksFolderType = 0x6672616D /* 'fram' */ };
enum : Boolean { kCreateFolder = 1 };
enum : OSErr { noErr = 0, fnfErr = -43 };

OSErr FSFindFolder(int16_t vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef);

}  // extern "C"
