// One call of a plug-in method on a host picture, the way a Xojo program makes
// it, with what it gave back, how long it took and how to write it down.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/pixturn/method_table.h"
#include "tools/pixturn/number_arguments.h"
#include "tools/pixturn/plugin_host.h"

namespace pixturn {

struct MethodArguments {
    double angle = 0;
    std::optional<uint32_t> background;  // none: the default in the registered declaration
    bool cut = false;
    PictureSize size;
};

struct MethodOutcome {
    std::string call;            // as Xojo code writes it: "RotateQLM(30, &cFFFFFFFF)"
    HostPicture picture;         // a picture result; nil when the method returned nil
    std::optional<bool> result;  // a boolean result (the in-place methods)
    std::optional<int64_t> bytes;  // the memory estimate
    double seconds = 0;

    // A picture came back, True came back, or the method returns a number.
    bool Succeeded() const;
    // "RotateQLM returned nil", "MirrorPictureQLM returned False".
    std::string FailureText() const;
};

// Throws Failure when the plug-in registered no such method, when a default
// argument is needed and the declaration gives none that can be read, and as an
// internal error when the call left the host's ledger unbalanced.
MethodOutcome CallMethod(PluginHost& host, const MethodEntry& entry, REALpicture receiver,
                         const MethodArguments& arguments);

// A number as a Xojo literal: the shortest decimal form that reads back exactly.
std::string NumberText(double value);

}  // namespace pixturn
