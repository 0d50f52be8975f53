// Flag words of the definitions in the dialect of the running host. The plug-in's
// definitions carry the new-style bits high up (0x40000, 0x80000); hosts from
// 2010.029 on expect them as 0x4 and 0x8, older hosts not at all, and no host
// accepts the high bits, so they are always cleared.
#include "plugin/registration_forms.h"

namespace {

constexpr double kFirstHostWithLowFlags = 2010.029;
constexpr uint32_t kHighFlagBits = 0x40000 | 0x80000 | 0x100000;

template <typename Definition>
void TranslateTable(Definition* table, int32_t count, uint32_t Definition::*flags, double hostVersion) {
    if (table == nullptr) return;
    for (int32_t i = 0; i < count; ++i) table[i].*flags = TranslateFlags(table[i].*flags, hostVersion);
}

}  // namespace

uint32_t TranslateFlags(uint32_t flags, double hostVersion) {
    if ((flags & (kFlagNewStyle | kFlagNewStyleHigh)) != 0 && hostVersion >= kFirstHostWithLowFlags)
        flags = flags | ((flags >> 16) & 0x4) | ((flags >> 16) & 0x8);
    return flags & ~kHighFlagBits;
}

void TranslateDefinitionFlags(REALclassDefinition& definition, double hostVersion) {
    definition.mFlags = TranslateFlags(definition.mFlags, hostVersion);
    TranslateTable(definition.methods, definition.methodCount, &REALmethodDefinition::mFlags, hostVersion);
    TranslateTable(static_cast<REALmethodDefinition*>(definition.sharedMethods), definition.sharedMethodCount,
                   &REALmethodDefinition::mFlags, hostVersion);
    TranslateTable(definition.properties, definition.propertyCount, &REALproperty::flags, hostVersion);
    TranslateTable(definition.sharedProperties, definition.sharedPropertyCount, &REALproperty::flags, hostVersion);
}
