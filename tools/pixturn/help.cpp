// `pixturn --help` and `pixturn help COMMAND`, written from the command and
// option tables.
#include <cstdio>
#include <string>

#include "tools/pixturn/colour_literal.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

void PrintWrapped(const std::string& text, size_t indent, size_t width) {
    size_t column = indent;
    std::string word;
    std::printf("%*s", static_cast<int>(indent), "");
    const auto flush = [&] {
        if (word.empty()) return;
        if (column > indent && column + 1 + word.size() > width) {
            std::printf("\n%*s", static_cast<int>(indent), "");
            column = indent;
        }
        if (column > indent) {
            std::printf(" ");
            ++column;
        }
        std::printf("%s", word.c_str());
        column += word.size();
        word.clear();
    };
    for (char c : text) {
        if (c == ' ') {
            flush();
        } else {
            word += c;
        }
    }
    flush();
    std::printf("\n");
}

// With every option the command takes, or (brief, for the overview) with the
// ones it requires and "[OPTION...]" for the rest, which "help COMMAND" lists.
std::string UsageLine(const Command& command, bool brief) {
    std::string line = std::string("pixturn ") + command.name;
    if (command.operands[0] != '\0') line += std::string(" ") + command.operands;
    for (const OptionSpec& option : AllOptions()) {
        const bool required = (command.required & option.bit) != 0;
        if ((command.accepted & option.bit) == 0 || (brief && !required)) continue;
        std::string text = option.shortName != nullptr ? option.shortName : option.name;
        if (option.value != nullptr) text += std::string(" ") + option.value;
        line += required ? " " + text : " [" + text + "]";
    }
    if (brief && (command.accepted & ~command.required) != 0) line += " [OPTION...]";
    return line;
}

void PrintOptions(unsigned accepted) {
    for (const OptionSpec& option : AllOptions()) {
        if ((accepted & option.bit) == 0) continue;
        std::string heading = option.shortName != nullptr ? std::string(option.shortName) + ", " : "";
        heading += option.name;
        if (option.value != nullptr) heading += std::string(" ") + option.value;
        std::printf("  %s\n", heading.c_str());
        PrintWrapped(option.help, 6, 96);
    }
}

void PrintCommandHelp(const Command& command) {
    std::printf("usage: %s\n\n", UsageLine(command, false).c_str());
    PrintWrapped(command.summary, 2, 96);
    if (command.accepted != 0) {
        std::printf("\noptions:\n");
        PrintOptions(command.accepted);
    }
}

void PrintOverview() {
    std::printf(
        "usage: pixturn COMMAND [FILE...] [OPTION...]\n\n"
        "Runs the PixTurn plug-in's Picture methods on image files. pixturn is a Xojo host: it loads the\n"
        "shipped plug-in library, starts it through REALPluginMain and calls the methods it registers.\n"
        "Input: PNG (any kind) or JPEG, '-' for standard input. Output: PNG or JPEG by the output's\n"
        "extension or --format. 'pixturn help COMMAND' shows the options a command takes.\n\n"
        "commands:\n");
    for (const Command& command : AllCommands()) {
        std::printf("  %s\n", UsageLine(command, true).c_str());
        PrintWrapped(command.summary, 6, 96);
    }
    std::printf("\noptions:\n");
    unsigned all = 0;
    for (const OptionSpec& option : AllOptions()) all |= option.bit;
    PrintOptions(all);
    std::printf("\ncolours (--background, --flatten):\n");
    PrintWrapped(std::string(ColourForms()) +
                     ". Every form becomes the 32-bit value 0xAARRGGBB the host passes, whose top byte AA "
                     "is the pixel's alpha: FF opaque, 00 transparent. #RRGGBB and names are opaque; in "
                     "#RRGGBBAA and &cRRGGBBAA the last byte is that alpha as it is (so &c000000FF is opaque "
                     "black and &c000000 transparent black, the other way round from Xojo's own colour "
                     "literals); quote # and & in the shell. Names: " +
                     ColourNames() + ".",
                 2, 96);
    std::printf(
        "\nexamples:\n"
        "  pixturn demo                                   every method on the test card, into demo-output/\n"
        "  pixturn demo photos/ --input photo.jpg         the gallery of a photo of your own\n"
        "  pixturn rotate photo.jpg --angle 30 -o turned.png\n"
        "  pixturn rotate photo.png --angle -12.5 --background black -o on-black.png\n"
        "  pixturn rotate photo.png --angle 12.5 --background transparent -o see-through.png\n"
        "  pixturn rotate90 *.jpg --out-dir turned/        each file's quarter turn under its own name\n"
        "  cat photo.jpg | pixturn hmirror - -o - --format jpeg > mirrored.jpg\n"
        "  pixturn rotate-mask photo.png --mask mask.png --angle 30 --cut -o t.png --mask-out t-mask.png\n"
        "  pixturn memory --size 4000x3000 --angle 30\n"
        "  pixturn methods --host-version 2012.0\n\n"
        "exit status: 0 done; 1 a file, picture or method failed (\"RotateQLM returned nil: ...\");\n"
        "2 the command line is wrong; 3 internal error: a method left the host's ledger unbalanced (a\n"
        "reference or lock kept, a call the host forbids). Errors are one line on stderr; no output file\n"
        "is left behind.\n");
}

}  // namespace

int RunHelp(const Command&, const Invocation& invocation) {
    if (invocation.operands.empty()) {
        PrintOverview();
        return kExitSuccess;
    }
    const Command* command = FindCommand(invocation.operands.front());
    if (command == nullptr) throw UsageError("help: unknown command '" + invocation.operands.front() + "'");
    PrintCommandHelp(*command);
    return kExitSuccess;
}

int RunVersion(const Command&, const Invocation&) {
    std::printf("pixturn %s\n", PIXTURN_VERSION);
    return kExitSuccess;
}

}  // namespace pixturn
