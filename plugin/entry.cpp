// REALPluginMain, the plug-in's one exported symbol: the host calls it once after
// loading the bundle. It learns the host's version, announces the definition
// version this host understands, adapts the Picture class extension to it and
// registers it, as a class extension or, on hosts that want additions to built-in
// classes that way, as a module of global methods.
#include "plugin/definitions.h"
#include "plugin/host_entry_points.h"
#include "plugin/process_state.h"
#include "plugin/registration_forms.h"

namespace {

// Hosts at or above each version read the definition version beside it.
struct DefinitionVersionBand {
    double firstHostVersion;
    int32_t definitionVersion;
};
constexpr DefinitionVersionBand kDefinitionVersionBands[] = {
    {2013.04, kNewestDefinitionVersion}, {2013.03, 12}, {2013.0, 11}, {2012.0, 10}};

constexpr double kFirstHostWithEightDigitColours = 2011.04;
// Hosts in this range take additions to a built-in class only as a module.
constexpr double kFirstModuleHost = 2013.0;
constexpr double kFirstHostPastModules = 3000.0;

int32_t DefinitionVersionFor(double hostVersion) {
    for (const DefinitionVersionBand& band : kDefinitionVersionBands)
        if (hostVersion >= band.firstHostVersion) return band.definitionVersion;
    return kOldestDefinitionVersion;
}

// Asked of the resolver directly: both are used once, at start-up only.
void* LookUpOnce(const char* name) { return gResolver != nullptr ? gResolver(name) : nullptr; }

void Register(double hostVersion) {
    if (hostVersion >= kFirstModuleHost && hostVersion < kFirstHostPastModules) {
        gExtensionModule = BuildExtensionModule(pictureClass, gpartname, CurrentREALControlVersion);
        if (gExtensionModule != nullptr) REALRegisterModule(gExtensionModule);
    } else if (CurrentREALControlVersion > kOldestDefinitionVersion) {
        pictureClass.version = CurrentREALControlVersion;
        REALRegisterClassExtension(&pictureClass);
    } else if (ConvertToOlderLayout(pictureClass)) {
        REALRegisterClassExtension(&pictureClass);
    }
}

}  // namespace

// The library's one export: a dllexport on Windows, where the linker then
// exports nothing else; the version script (plugin/exports.map) elsewhere.
#if defined(_WIN32)
#define PIXTURN_EXPORTED __declspec(dllexport)
#else
#define PIXTURN_EXPORTED __attribute__((visibility("default")))
#endif

extern "C" PIXTURN_EXPORTED void REALPluginMain(REALResolver resolver) {
    gResolver = resolver;
    if (auto hostVersion = reinterpret_cast<double (*)()>(LookUpOnce("REALGetRBVersion")))
        rbversion_rbversion = hostVersion();
    const double hostVersion = rbversion_rbversion;

    CurrentREALControlVersion = DefinitionVersionFor(hostVersion);
    if (auto announce = reinterpret_cast<void (*)(int32_t)>(LookUpOnce("RegisterPluginVersion")))
        announce(CurrentREALControlVersion);
    gpartname = "PixTurn";

    if (hostVersion < kFirstHostWithEightDigitColours) pictureMethods[0].declaration = kRotateDeclarationSixDigitColour;
    TranslateDefinitionFlags(pictureClass, hostVersion);
    Register(hostVersion);
}
