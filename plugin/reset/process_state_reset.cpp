// The reset of every process-wide value, for test and fuzz builds only: it lets
// one process run host after host, each meeting the plug-in as freshly loaded, so
// that a fuzz finding reproduces from its input alone. The shipped library is
// built without this file: a real host loads the plug-in once and keeps what
// start-up handed it to the end of the process.
#include <cstdlib>
#include <memory>

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

namespace {

// Atomic words cannot be assigned as a whole record; made anew, they are null as at
// load. The reset runs with no method under way.
template <typename Record>
void MakeAnew(Record& record) {
    std::destroy_at(&record);
    std::construct_at(&record);
}

}  // namespace

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

    MakeAnew(gHostEntryPointSlots);
    if (CFBundleRef framework = gLegacyFunctions.ApplicationServicesFramework.load()) CFRelease(framework);
    MakeAnew(gLegacyFunctions);

    gHostKind = HostKindDecision::Undecided;
}
