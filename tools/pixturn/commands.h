// What each command does once its command line is parsed. Each returns the exit
// status or throws Failure.
#pragma once

#include "tools/pixturn/command_table.h"

namespace pixturn {

// One picture in, the command's method called on it, its result out (the
// receiver itself for the in-place mirrors).
int RunPictureMethod(const Command& command, const Invocation& invocation);
// RotateImageAndMaskQLM on a picture given its mask, the turned mask written too.
int RunRotateWithMask(const Command& command, const Invocation& invocation);
// The byte estimate of RotateMemoryQLM for a file or a size.
int RunMemoryEstimate(const Command& command, const Invocation& invocation);
// What the host received when the plug-in started.
int RunMethodsListing(const Command& command, const Invocation& invocation);
// Every method on the test card or a user's file, with a contact sheet.
int RunDemo(const Command& command, const Invocation& invocation);
// pixturn help [COMMAND]
int RunHelp(const Command& command, const Invocation& invocation);
// pixturn --version
int RunVersion(const Command& command, const Invocation& invocation);

}  // namespace pixturn
