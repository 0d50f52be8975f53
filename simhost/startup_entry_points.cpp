// What the host offers a plug-in at start-up: its version, the announcement of
// the definition version, and the two registrations. What is registered is
// copied at once, as the host reads it: in the older 25-word layout when the
// record says definition version 9.
#include "simhost/entry_points.h"
#include "simhost/host_state.h"

namespace simhost::internal::entry {

namespace {

std::string TextOrEmpty(const char* text) { return text != nullptr ? text : ""; }

template <typename Method>
RegisteredMethod CopyMethod(const Method& method) {
    RegisteredMethod copy;
    copy.function = method.function;
    copy.setter = method.setterFunction;
    copy.declaration = TextOrEmpty(method.declaration);
    copy.flags = method.mFlags;
    if constexpr (requires { method.attributeCount; }) copy.attributeCount = method.attributeCount;
    return copy;
}

template <typename Record>
void CopyClass(Registration& registration, const Record& record) {
    registration.name = TextOrEmpty(record.name);
    registration.classFlags = record.mFlags;
    registration.methods.clear();
    for (int32_t i = 0; record.methods != nullptr && i < record.methodCount; ++i)
        registration.methods.push_back(CopyMethod(record.methods[i]));
}

}  // namespace

double REALGetRBVersion() {
    auto host = HostState::Enter("REALGetRBVersion");
    return host && host->config.version ? *host->config.version : 0.0;
}

void RegisterPluginVersion(int32_t definitionVersion) {
    if (auto host = HostState::Enter("RegisterPluginVersion")) host->registration.announcedVersion = definitionVersion;
}

void PluginRegisterClassExtension(REALclassDefinition* definition) {
    auto host = HostState::Enter("PluginRegisterClassExtension");
    if (!host) return;
    if (definition == nullptr) return host->Problem("PluginRegisterClassExtension called with nil");
    Registration& registration = host->registration;
    ++registration.registrations;
    registration.form = Registration::Form::ClassExtension;
    registration.definitionVersion = definition->version;
    registration.olderLayout = definition->version == 9;
    if (registration.olderLayout)
        CopyClass(registration, *reinterpret_cast<const REALclassDefinitionV9*>(definition));
    else
        CopyClass(registration, *definition);
}

void PluginRegisterModule(REALmoduleDefinition* module) {
    auto host = HostState::Enter("PluginRegisterModule");
    if (!host) return;
    if (module == nullptr) return host->Problem("PluginRegisterModule called with nil");
    Registration& registration = host->registration;
    ++registration.registrations;
    registration.form = Registration::Form::Module;
    registration.definitionVersion = module->version;
    registration.olderLayout = false;
    registration.name = TextOrEmpty(module->name);
    registration.classFlags = 0;
    registration.methods.clear();
    for (int32_t i = 0; module->methods != nullptr && i < module->methodCount; ++i)
        registration.methods.push_back(CopyMethod(module->methods[i]));
}

}  // namespace simhost::internal::entry
