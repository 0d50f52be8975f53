// The command line: pixturn COMMAND [OPERAND...] [OPTION...], options in any
// order, "--name value" or "--name=value", "--" before operands that begin
// with "-".
#pragma once

#include "tools/pixturn/command_table.h"
#include "tools/pixturn/invocation.h"

namespace pixturn {

// Throws a usage Failure naming the argument that is wrong: an unknown command
// or option, an option the command does not take or a value it cannot read, a
// missing required option, an operand too many.
Invocation ParseCommandLine(int argc, const char* const* argv);

}  // namespace pixturn
