// A program's call finds its method by signature, as the host's compiler matches
// it: the same method whichever registration form the plug-in chose.
#include "simhost/declarations.h"
#include "simhost/simulated_host.h"

namespace simhost {

const RegisteredMethod* Registration::Find(const PictureMethod& method) const {
    const std::string wanted = DeclarationSignature(method.declaration);
    for (const RegisteredMethod& registered : methods)
        if (registered.function != nullptr && DeclarationSignature(registered.declaration) == wanted)
            return &registered;
    return nullptr;
}

const RegisteredMethod* PluginLibrary::Find(const PictureMethod& method) const {
    return host_.registration().Find(method);
}

}  // namespace simhost
