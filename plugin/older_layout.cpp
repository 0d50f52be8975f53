// The class record in the layout of hosts before 2012.0 (definition version 9):
// 25 words instead of 30, with shorter entries in its tables. Only the method
// table and the property tables are rebuilt; this plug-in's other tables are
// empty. The new tables stay allocated for the host, which keeps pointing at them.
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "plugin/definitions.h"
#include "plugin/registration_forms.h"

namespace {

static_assert(offsetof(REALpropertyV9, enumEntries) == offsetof(REALproperty, enumEntries),
              "the older property is the first ten words of the newer one");

// A table of the older entries is needed and could not be made.
bool Missing(const void* rebuilt, const void* original, int32_t count) {
    return rebuilt == nullptr && original != nullptr && count > 0;
}

REALmethodDefinitionV9* FixMethods(const REALmethodDefinition* methods, int32_t count) {
    if (methods == nullptr || count <= 0) return nullptr;
    auto* older = static_cast<REALmethodDefinitionV9*>(std::calloc(size_t(count), sizeof(REALmethodDefinitionV9)));
    if (older == nullptr) return nullptr;
    for (int32_t i = 0; i < count; ++i)
        older[i] = {methods[i].function, methods[i].setterFunction, methods[i].declaration, methods[i].mFlags};
    return older;
}

}  // namespace

REALpropertyV9* FixProperties(const REALproperty* properties, int32_t count) {
    if (properties == nullptr || count <= 0) return nullptr;
    auto* older = static_cast<REALpropertyV9*>(std::calloc(size_t(count), sizeof(REALpropertyV9)));
    if (older == nullptr) return nullptr;
    for (int32_t i = 0; i < count; ++i) std::memcpy(&older[i], &properties[i], sizeof(REALpropertyV9));
    return older;
}

bool ConvertToOlderLayout(REALclassDefinition& definition) {
    auto* older = static_cast<REALclassDefinitionV9*>(std::calloc(1, sizeof(REALclassDefinitionV9)));
    if (older == nullptr) return false;
    older->version = kOldestDefinitionVersion;
    older->name = definition.name;
    older->superName = definition.superName;
    older->dataSize = definition.dataSize;
    older->forSystemUse = definition.forSystemUse;
    older->constructor = definition.constructor;
    older->destructor = definition.destructor;
    older->properties = FixProperties(definition.properties, definition.propertyCount);
    older->propertyCount = definition.propertyCount;
    older->methods = FixMethods(definition.methods, definition.methodCount);
    older->methodCount = definition.methodCount;
    older->eventCount = definition.eventCount;
    older->eventInstances = definition.eventInstances;
    older->eventInstanceCount = definition.eventInstanceCount;
    older->interfaces = definition.interfaces;
    older->constantCount = definition.constantCount;
    older->mFlags = definition.mFlags;
    older->sharedProperties = FixProperties(definition.sharedProperties, definition.sharedPropertyCount);
    older->sharedPropertyCount = definition.sharedPropertyCount;
    older->sharedMethodCount = definition.sharedMethodCount;

    const bool complete = !Missing(older->properties, definition.properties, definition.propertyCount) &&
                          !Missing(older->methods, definition.methods, definition.methodCount) &&
                          !Missing(older->sharedProperties, definition.sharedProperties,
                                   definition.sharedPropertyCount);
    if (complete) {
        std::memcpy(static_cast<void*>(&definition), older, sizeof(REALclassDefinitionV9));
    } else {
        std::free(older->properties);
        std::free(older->methods);
        std::free(older->sharedProperties);
    }
    std::free(older);
    return complete;
}
