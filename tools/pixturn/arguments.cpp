// Values are converted here, while the argument they came from is at hand for
// the message; the commands then work with checked values only.
#include "tools/pixturn/arguments.h"

#include <cstdint>
#include <cstring>

#include "tools/pixturn/colour_literal.h"
#include "tools/pixturn/failure.h"
#include "tools/pixturn/plugin_host.h"

namespace pixturn {

namespace {

const OptionSpec* FindOption(const std::string& name) {
    for (const OptionSpec& option : AllOptions()) {
        if (name == option.name || (option.shortName != nullptr && name == option.shortName)) return &option;
    }
    return nullptr;
}

uint32_t ColourValue(const std::string& value, const OptionSpec& option) {
    const std::optional<uint32_t> colour = ParseColour(value);
    if (!colour) throw UsageError(std::string(option.name) + ": '" + value + "' is not a colour (" + ColourForms() + ")");
    return *colour;
}

void Store(Invocation& invocation, const OptionSpec& option, const std::string& value) {
    switch (option.bit) {
        case kOptionAngle:
            invocation.angle = ParseFiniteNumber(value, option.name);
            break;
        case kOptionBackground:
            invocation.background = ColourValue(value, option);
            break;
        case kOptionFlatten:
            invocation.encoding.jpeg.flatten = ColourValue(value, option);
            break;
        case kOptionPngLevel:
            invocation.encoding.pngLevel = ParseWholeNumber(value, option.name, 0, 9);
            break;
        case kOptionQuality:
            invocation.encoding.jpeg.quality = ParseWholeNumber(value, option.name, 1, 100);
            break;
        case kOptionFormat:
            if (value != "png" && value != "jpeg" && value != "jpg") {
                throw UsageError(std::string(option.name) + ": '" + value + "' is not png or jpeg");
            }
            invocation.encoding.format = value == "png" ? FileFormat::Png : FileFormat::Jpeg;
            break;
        case kOptionOutDir:
            invocation.outDir = value;
            break;
        case kOptionNoAutoOrient:
            invocation.reading.autoOrient = false;
            break;
        case kOptionHost:
            HostChoiceNamed(value);
            invocation.host = value;
            break;
        case kOptionHostVersion:
            invocation.hostVersion = value == "none" ? std::nullopt
                                                     : std::optional<double>(ParseFiniteNumber(value, option.name));
            break;
        case kOptionOutput:
            invocation.output = value;
            break;
        case kOptionMask:
            invocation.mask = value;
            break;
        case kOptionCut:
            invocation.cut = true;
            break;
        case kOptionMaskOutput:
            invocation.maskOutput = value;
            break;
        case kOptionSize:
            invocation.size = ParsePictureSize(value, option.name);
            break;
        case kOptionPlugin:
            invocation.plugin = value;
            break;
        case kOptionInput:
            invocation.input = value;
            break;
    }
}

// "--angle=30" is "--angle" "30"; short options take no "=".
std::pair<std::string, std::optional<std::string>> SplitInlineValue(const std::string& argument) {
    const size_t equals = argument.find('=');
    if (argument.rfind("--", 0) != 0 || equals == std::string::npos) return {argument, std::nullopt};
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

// A command takes no operand, one (its input file, its directory or the command
// to explain) or, with "FILE...", any number of input files.
size_t OperandLimit(const Command& command) {
    if (command.operands[0] == '\0') return 0;
    return std::strstr(command.operands, "...") != nullptr ? SIZE_MAX : 1;
}

void CheckComplete(const Command& command, const Invocation& invocation) {
    for (const OptionSpec& option : AllOptions()) {
        if ((command.required & option.bit) != 0 && !invocation.Has(option.bit)) {
            throw UsageError(std::string(command.name) + ": missing " + option.name + " " + option.value);
        }
    }
    if (std::strncmp(command.operands, "FILE", 4) == 0 && invocation.operands.empty()) {
        throw UsageError(std::string(command.name) + ": missing the input FILE");
    }
}

}  // namespace

Invocation ParseCommandLine(int argc, const char* const* argv) {
    Invocation invocation;
    if (argc < 2) throw UsageError("missing a command (pixturn --help lists them)");
    invocation.command = argv[1];
    if (invocation.command == "--help" || invocation.command == "-h" || invocation.command == "--version") {
        invocation.command = invocation.command == "--version" ? "version" : "help";
        return invocation;
    }
    const Command* command = FindCommand(invocation.command);
    if (command == nullptr) {
        throw UsageError("unknown command '" + invocation.command + "' (pixturn --help lists them)");
    }
    bool operandsOnly = false;
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        // "-" alone is an operand: standard input.
        if (operandsOnly || argument.size() < 2 || argument[0] != '-') {
            if (invocation.operands.size() >= OperandLimit(*command)) {
                throw UsageError(invocation.command + ": unexpected argument '" + argument + "'");
            }
            invocation.operands.push_back(argument);
            continue;
        }
        if (argument == "--") {
            operandsOnly = true;
            continue;
        }
        if (argument == "--help" || argument == "-h") {
            invocation.help = true;
            continue;
        }
        const auto [name, inlineValue] = SplitInlineValue(argument);
        const OptionSpec* option = FindOption(name);
        if (option == nullptr) throw UsageError("unknown option '" + name + "' (pixturn --help lists them)");
        if ((command->accepted & option->bit) == 0) {
            throw UsageError("option " + name + " does not apply to '" + invocation.command + "'");
        }
        if (invocation.Has(option->bit)) throw UsageError("option " + name + " given twice");
        std::string value;
        if (option->value == nullptr) {
            if (inlineValue) throw UsageError("option " + name + " takes no value");
        } else if (inlineValue) {
            value = *inlineValue;
        } else if (i + 1 < argc) {
            value = argv[++i];
        } else {
            throw UsageError("option " + name + " needs a value " + option->value);
        }
        Store(invocation, *option, value);
        invocation.given |= option->bit;
    }
    if (!invocation.help) CheckComplete(*command, invocation);
    return invocation;
}

}  // namespace pixturn
