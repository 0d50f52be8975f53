// `pixturn methods`: the registration exactly as the host received it, so that a
// user can see what each host version gets (class extension, older layout or
// module of global methods, and RotateQLM's default background).
#include <cstdio>

#include "tools/pixturn/command_support.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

const char* FormText(const simhost::Registration& registration) {
    switch (registration.form) {
        case simhost::Registration::Form::ClassExtension:
            return registration.olderLayout ? "class extension, older layout (4-word method entries)"
                                            : "class extension";
        case simhost::Registration::Form::Module:
            return "module of global methods";
        case simhost::Registration::Form::Nothing:
            break;
    }
    return "nothing";
}

}  // namespace

int RunMethodsListing(const Command&, const Invocation& invocation) {
    PluginHost host(SettingsFrom(invocation));
    const simhost::Registration& registration = host.registration();
    std::printf("plug-in: %s\n", host.pluginPath().c_str());
    std::printf("host: %s\n", HostText(invocation).c_str());
    std::printf("announced definition version: %s\n",
                registration.announcedVersion ? std::to_string(*registration.announcedVersion).c_str() : "none");
    std::printf("registered: %s%s%s\n", FormText(registration), registration.name.empty() ? "" : " ",
                registration.name.c_str());
    if (registration.form == simhost::Registration::Form::Nothing) {
        throw RunError("the plug-in registered no methods on the " + HostText(invocation));
    }
    std::printf("definition version: %d\n", registration.definitionVersion);
    if (registration.form == simhost::Registration::Form::ClassExtension) {
        std::printf("class flags: 0x%X\n", static_cast<unsigned>(registration.classFlags));
    }
    std::printf("registration calls: %d\n", registration.registrations);
    std::printf("methods: %zu\n", registration.methods.size());
    for (const simhost::RegisteredMethod& method : registration.methods) {
        std::printf("  flags 0x%-5X %s%s\n", static_cast<unsigned>(method.flags),
                    method.declaration.empty() ? "(no declaration)" : method.declaration.c_str(),
                    method.function == nullptr ? "  [no function]" : "");
    }
    return kExitSuccess;
}

}  // namespace pixturn
