// The reset of every process-wide value, for test and fuzz builds only: it lets
// one process run host after host, each meeting the plug-in as freshly loaded, so
// that a fuzz finding reproduces from its input alone. The shipped library is
// built without this file: a real host loads the plug-in once and keeps what
// start-up handed it to the end of the process.
#include <cstdlib>

#include "plugin/definitions.h"
#include "plugin/process_state.h"

void FreeExtensionModule(REALmoduleDefinition* module) {
    if (module == nullptr) return;
    for (int32_t i = 0; i < module->methodCount; ++i) std::free(const_cast<char*>(module->methods[i].declaration));
    std::free(module->methods);
    std::free(const_cast<char*>(module->name));
    std::free(module);
}

void FreeOlderLayoutTables(REALclassDefinition& definition) {
    if (definition.version != kOldestDefinitionVersion) return;
    auto& older = reinterpret_cast<REALclassDefinitionV9&>(definition);
    std::free(older.properties);
    std::free(older.methods);
    std::free(older.sharedProperties);
}

void ResetProcessState() {
    FreeExtensionModule(gExtensionModule);
    FreeOlderLayoutTables(pictureClass);
    pictureMethods = PictureMethodsAsLoaded();
    pictureClass = PictureClassAsLoaded();

    gResolver = nullptr;
    rbversion_rbversion = 0.0;
    CurrentREALControlVersion = kNewestDefinitionVersion;
    gpartname = nullptr;
    gExtensionModule = nullptr;

    gHostEntryPointSlots = {};
    if (CFBundleRef framework = gLegacyFunctions.ApplicationServicesFramework) CFRelease(framework);
    gLegacyFunctions = {};

    IsDesktop = false;
    IsConsole = false;
}
