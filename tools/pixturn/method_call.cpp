// RotateQLM's background, when not given, is what the host's compiler would
// pass: the default written in the declaration the plug-in registered, which
// differs between older and newer hosts (&cFFFFFF against &cFFFFFFFF).
#include "tools/pixturn/method_call.h"

#include <charconv>
#include <chrono>
#include <vector>

#include "simhost/declarations.h"
#include "tools/pixturn/colour_literal.h"
#include "tools/pixturn/failure.h"

namespace pixturn {

namespace {

uint32_t DeclaredBackground(const simhost::RegisteredMethod& method) {
    const std::optional<std::string> literal = simhost::ParameterDefault(method.declaration, "background");
    const std::optional<uint32_t> value = literal ? ParseColour(*literal) : std::nullopt;
    if (!value) throw RunError("no readable default background in \"" + method.declaration + "\"; give --background");
    return *value;
}

std::string CallText(const MethodEntry& entry, const MethodArguments& arguments, uint32_t background) {
    const std::string name = entry.name;
    switch (entry.form) {
        case MethodForm::AngleAndBackground:
            return name + "(" + NumberText(arguments.angle) + ", " + ColourLiteral(background) + ")";
        case MethodForm::AngleAndCut:
            return name + "(" + NumberText(arguments.angle) + ", " + (arguments.cut ? "True" : "False") + ")";
        case MethodForm::MemoryEstimate:
            return name + "(" + NumberText(arguments.angle) + ")";
        case MethodForm::Size:
            return name + "(" + std::to_string(arguments.size.width) + ", " + std::to_string(arguments.size.height) +
                   ")";
        case MethodForm::Picture:
        case MethodForm::InPlace:
            break;
    }
    return name;
}

// Every method must give back all it took: the host then holds only the
// command's own pictures and the one reference of the result.
void CheckLedger(PluginHost& host, const MethodOutcome& outcome) {
    std::vector<REALpicture> returned;
    if (outcome.picture) returned.push_back(outcome.picture.get());
    const std::vector<std::string> problems = host.host().LedgerProblems(returned);
    if (problems.empty()) return;
    std::string text;
    for (const std::string& problem : problems) text += (text.empty() ? "" : "; ") + problem;
    throw InternalError(outcome.call + " left the host's ledger unbalanced: " + text);
}

}  // namespace

bool MethodOutcome::Succeeded() const {
    if (result) return *result;
    return bytes.has_value() || static_cast<bool>(picture);
}

std::string MethodOutcome::FailureText() const {
    const std::string name = call.substr(0, call.find('('));
    return name + (result ? " returned False" : " returned nil");
}

MethodOutcome CallMethod(PluginHost& host, const MethodEntry& entry, REALpicture receiver,
                         const MethodArguments& arguments) {
    const simhost::RegisteredMethod& method = host.Method(entry);
    uint32_t background = 0;
    if (entry.form == MethodForm::AngleAndBackground) {
        background = arguments.background ? *arguments.background : DeclaredBackground(method);
    }
    MethodOutcome outcome;
    outcome.call = CallText(entry, arguments, background);
    const auto start = std::chrono::steady_clock::now();
    const simhost::MethodResult result = simhost::CallInForm(
        method.function, entry.form, receiver,
        {.angle = arguments.angle, .background = background, .cut = static_cast<signed char>(arguments.cut ? 1 : 0),
         .width = arguments.size.width, .height = arguments.size.height});
    if (entry.form == MethodForm::InPlace) outcome.result = result.changed;
    if (entry.form == MethodForm::MemoryEstimate) outcome.bytes = result.bytes;
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    outcome.picture = HostPicture(host.host(), result.picture);
    CheckLedger(host, outcome);
    return outcome;
}

std::string NumberText(double value) {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : "?";
}

}  // namespace pixturn
