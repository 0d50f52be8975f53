// The commands of pixturn: name, operands, the options each accepts and
// requires, the line of help, and the function that runs it.
#pragma once

#include <string>
#include <vector>

#include "tools/pixturn/invocation.h"
#include "tools/pixturn/method_table.h"

namespace pixturn {

struct Command {
    const char* name;
    const char* operands;  // as the usage line shows them: "FILE", "[DIR]", ""
    const char* summary;   // what it does and which Xojo method does it
    unsigned accepted;     // OptionBits
    unsigned required;     // OptionBits
    const MethodEntry* method;  // the plug-in method it calls, if it calls one
    int (*run)(const Command&, const Invocation&);
};

const std::vector<Command>& AllCommands();
const Command* FindCommand(const std::string& name);

struct OptionSpec {
    OptionBit bit;
    const char* name;       // "--angle"
    const char* shortName;  // "-o", or null
    const char* value;      // "DEG", or null for a switch
    const char* help;
};

const std::vector<OptionSpec>& AllOptions();

}  // namespace pixturn
