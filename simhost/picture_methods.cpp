// A program's call finds its method by signature, as the host's compiler matches
// it: the same method whichever registration form the plug-in chose. It then
// calls it with the native arguments of the method's form, the one place that
// knows them.
#include <stdexcept>
#include <string>

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

MethodResult PluginLibrary::Call(const PictureMethod& method, REALpicture receiver,
                                 const MethodArguments& arguments) const {
    const RegisteredMethod* found = Find(method);
    if (found == nullptr) throw std::out_of_range(std::string("no registered method ") + method.declaration);
    return CallInForm(found->function, method.form, receiver, arguments);
}

namespace {

template <typename Result, typename... Arguments>
Result Invoke(REALproc function, REALpicture receiver, Arguments... arguments) {
    return reinterpret_cast<Result (*)(REALpicture, Arguments...)>(function)(receiver, arguments...);
}

}  // namespace

MethodResult CallInForm(REALproc function, MethodForm form, REALpicture receiver, const MethodArguments& arguments) {
    const MethodArguments& a = arguments;
    switch (form) {
        case MethodForm::Picture: return {.picture = Invoke<REALpicture>(function, receiver)};
        case MethodForm::AngleAndBackground:
            return {.picture = Invoke<REALpicture>(function, receiver, a.angle, a.background)};
        case MethodForm::AngleAndCut: return {.picture = Invoke<REALpicture>(function, receiver, a.angle, a.cut)};
        case MethodForm::Size: return {.picture = Invoke<REALpicture>(function, receiver, a.width, a.height)};
        case MethodForm::InPlace: return {.changed = Invoke<bool>(function, receiver)};
        case MethodForm::MemoryEstimate: return {.bytes = Invoke<int64_t>(function, receiver, a.angle)};
    }
    return {};
}

}  // namespace simhost
