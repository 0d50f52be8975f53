// A program's call finds its method by signature, as the host's compiler matches
// it: the same method whichever registration form the plug-in chose.
#include "simhost/declarations.h"
#include "simhost/simulated_host.h"

namespace simhost {

const RegisteredMethod* PluginLibrary::Find(const PictureMethod& method) const {
    const std::string wanted = DeclarationSignature(method.declaration);
    for (const RegisteredMethod& registered : host_.registration().methods)
        if (registered.function != nullptr && DeclarationSignature(registered.declaration) == wanted)
            return &registered;
    return nullptr;
}

}  // namespace simhost
