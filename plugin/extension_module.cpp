// The class extension recast as a module of global methods, the form hosts from
// 2013.0 on take for additions to a built-in class: each method becomes a global
// method whose first parameter is the extended object, and each setter one whose
// last parameter is the value assigned.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "plugin/registration_forms.h"

namespace {

constexpr size_t kModuleNameSize = 100;

REALmethodDefinition GlobalMethod(REALproc function, char* declaration, const REALmethodDefinition& method) {
    return {function, nullptr, declaration, method.mFlags | kFlagGlobalMethod, method.attributeCount,
            method.attributes};
}

}  // namespace

REALmoduleDefinition* BuildExtensionModule(const REALclassDefinition& extended, const char* partName,
                                           int32_t definitionVersion) {
    if (extended.methods == nullptr || extended.methodCount <= 0) return nullptr;
    int32_t globalCount = 0;
    for (int32_t i = 0; i < extended.methodCount; ++i)
        globalCount += (extended.methods[i].function != nullptr) + (extended.methods[i].setterFunction != nullptr);
    if (globalCount == 0) return nullptr;

    char name[kModuleNameSize];
    std::snprintf(name, sizeof name, "%s%s%s", extended.name, partName, "ExtensionQLM");
    auto* module = static_cast<REALmoduleDefinition*>(std::calloc(1, sizeof(REALmoduleDefinition)));
    auto* globals = static_cast<REALmethodDefinition*>(std::calloc(size_t(globalCount), sizeof(REALmethodDefinition)));
    char* heapName = strdup(name);
    if (module == nullptr || globals == nullptr || heapName == nullptr) {
        std::free(module);
        std::free(globals);
        std::free(heapName);
        return nullptr;
    }

    REALmethodDefinition* next = globals;
    for (int32_t i = 0; i < extended.methodCount; ++i) {
        const REALmethodDefinition& method = extended.methods[i];
        if (method.setterFunction != nullptr)
            *next++ = GlobalMethod(method.setterFunction, AssignmentDeclaration(method.declaration, extended.name),
                                   method);
        if (method.function != nullptr)
            *next++ = GlobalMethod(method.function, AddClassParameter(method.declaration, extended.name), method);
    }
    module->version = definitionVersion;
    module->name = heapName;
    module->methods = globals;
    module->methodCount = globalCount;
    return module;
}
