// The host's plug-in interface as this plug-in uses it: handles, the picture
// description, the host bitmap record and the definition records handed over at
// start-up. The real host ships its own header; this one mirrors the word layouts
// it documents, with a pointer-sized field wherever a word holds a pointer, so the
// same code builds for 32-bit hosts (every word 32 bits) and for 64-bit test hosts.
#pragma once

#include <cstdint>
#include <cstring>

// Opaque, reference-counted host objects. The plug-in never looks inside them;
// a picture is an object, so it passes wherever the host takes one.
struct REALobjectStruct {};
struct REALpictureStruct : REALobjectStruct {};

using REALobject = REALobjectStruct*;
using REALpicture = REALpictureStruct*;

// The resolver the host hands to REALPluginMain: entry-point name to address.
using REALResolver = void* (*)(const char* entryName);

// Filled by the host's description lock. Only the first four fields are read.
struct REALpictureDescription {
    int32_t pictureType;
    void* pictureData;
    int32_t width;
    int32_t height;
    int32_t hostReserved[4];
};

enum REALPictureType : int32_t {
    kPictureTypeGWorld = 4,      // pictureData is a QuickDraw GWorldPtr
    kPictureTypeVector = 8,      // accepted without looking at the data
    kPictureTypeHostBitmap = 10  // pictureData is a host bitmap record
};

// The host bitmap record (picture type 10) is read at fixed byte positions.
// 7228 is not pointer-aligned in a 64-bit build, so fields go through memcpy.
namespace host_bitmap {
constexpr size_t kZeroWordOffset = 0;   // must be 0
constexpr size_t kWidthOffset = 4;
constexpr size_t kHeightOffset = 8;
constexpr size_t kValidWordOffset = 7224;  // must be non-zero
constexpr size_t kRowTableOffset = 7228;   // uint8_t** : one pointer per row
constexpr size_t kRecordSize = kRowTableOffset + sizeof(void*);

inline int32_t ReadWord(const void* record, size_t offset) {
    int32_t word;
    std::memcpy(&word, static_cast<const uint8_t*>(record) + offset, sizeof word);
    return word;
}
inline uint8_t** ReadRowTable(const void* record) {
    uint8_t** table;
    std::memcpy(&table, static_cast<const uint8_t*>(record) + kRowTableOffset, sizeof table);
    return table;
}
}  // namespace host_bitmap

using REALproc = void (*)();

// Method definition: six words. The older layout (definition version 9) keeps the
// first four.
struct REALmethodDefinition {
    REALproc function;
    REALproc setterFunction;
    const char* declaration;
    uint32_t mFlags;
    uint32_t attributeCount;
    void* attributes;
};
struct REALmethodDefinitionV9 {
    REALproc function;
    REALproc setterFunction;
    const char* declaration;
    uint32_t mFlags;
};

// Property definition: twelve words, flags in word 3. The older layout keeps ten.
struct REALproperty {
    const char* group;
    const char* name;
    const char* type;
    uint32_t flags;
    REALproc getter;
    REALproc setter;
    intptr_t param;
    REALproc editor;
    uint32_t enumCount;
    void* enumEntries;
    void* attributes;
    uint32_t attributeCount;
};
struct REALpropertyV9 {
    const char* group;
    const char* name;
    const char* type;
    uint32_t flags;
    REALproc getter;
    REALproc setter;
    intptr_t param;
    REALproc editor;
    uint32_t enumCount;
    void* enumEntries;
};

// Class definition: thirty words. Words 0 to 24 are the older 25-word layout,
// whose property and method tables have the shorter entries.
template <typename Property, typename Method>
struct REALclassDefinitionWords0To24 {
    int32_t version;                   // 0
    const char* name;                  // 1
    const char* superName;             // 2
    int32_t dataSize;                  // 3
    int32_t forSystemUse;              // 4
    REALproc constructor;              // 5
    REALproc destructor;               // 6
    Property* properties;              // 7
    int32_t propertyCount;             // 8
    Method* methods;                   // 9
    int32_t methodCount;               // 10
    void* events;                      // 11: 4-word entries (2 in the older layout)
    int32_t eventCount;                // 12
    void* eventInstances;              // 13
    int32_t eventInstanceCount;        // 14
    const char* interfaces;            // 15
    void* bindDescriptions;            // 16
    int32_t bindDescriptionCount;      // 17
    void* constants;                   // 18: 5-word entries (3 in the older layout)
    int32_t constantCount;             // 19
    uint32_t mFlags;                   // 20
    Property* sharedProperties;        // 21
    int32_t sharedPropertyCount;       // 22
    void* sharedMethods;               // 23: 6-word entries (4 in the older layout)
    int32_t sharedMethodCount;         // 24
};

using REALclassDefinitionV9 = REALclassDefinitionWords0To24<REALpropertyV9, REALmethodDefinitionV9>;

struct REALclassDefinition : REALclassDefinitionWords0To24<REALproperty, REALmethodDefinition> {
    void* delegates;                   // 25
    int32_t delegateCount;             // 26
    void* reserved[3];                 // 27 to 29
};

// The older record is registered in the memory of the newer one.
static_assert(sizeof(REALclassDefinitionV9) <= sizeof(REALclassDefinition));

struct REALmoduleDefinition {
    int32_t version;                   // 0
    const char* name;                  // 1
    REALmethodDefinition* methods;     // 2
    int32_t methodCount;               // 3
    void* otherWords[20];              // 4 to 23: unused here, zero
};

// Flag bits the plug-in moves or sets; their meaning is the host's.
constexpr uint32_t kFlagNewStyle = 0x40000;     // copied down to 0x4 on newer hosts
constexpr uint32_t kFlagNewStyleHigh = 0x80000; // copied down to 0x8 on newer hosts
constexpr uint32_t kFlagGlobalMethod = 0x10;    // added to module methods
