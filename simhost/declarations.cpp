#include "simhost/declarations.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace simhost {

namespace {

struct Parts {
    std::string name;
    std::vector<std::string> parameters;  // as written: "angle as double", ...
    std::string rest;                     // what follows the parameter list: " as picture"
};

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

Parts Split(const std::string& declaration) {
    Parts parts;
    const size_t stop = declaration.find_first_of("( ");
    parts.name = declaration.substr(0, stop);
    if (stop == std::string::npos) return parts;
    if (declaration[stop] != '(') {
        parts.rest = declaration.substr(stop);
        return parts;
    }
    const size_t close = declaration.find(')', stop);
    const std::string list = declaration.substr(stop + 1, close - stop - 1);
    if (close != std::string::npos) parts.rest = declaration.substr(close + 1);
    if (Trim(list).empty()) return parts;
    for (size_t start = 0;;) {
        const size_t comma = list.find(',', start);
        parts.parameters.push_back(Trim(list.substr(start, comma - start)));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return parts;
}

// "background as color = &cFFFFFFFF" gives "color".
std::string ParameterType(const std::string& parameter) {
    const std::string lower = Lower(parameter);
    const size_t as = lower.find(" as ");
    if (as == std::string::npos) return "";
    const size_t equals = lower.find('=', as);
    return Trim(lower.substr(as + 4, equals - as - 4));
}

bool IsExtendedObject(const std::string& parameter) { return Lower(parameter).rfind("extends ", 0) == 0; }

}  // namespace

std::string DeclarationSignature(const std::string& declaration) {
    const Parts parts = Split(declaration);
    std::string signature = parts.name + "(";
    bool first = true;
    for (const std::string& parameter : parts.parameters) {
        if (IsExtendedObject(parameter)) continue;
        if (!first) signature += ",";
        signature += ParameterType(parameter);
        first = false;
    }
    signature += ")";
    const std::string rest = Lower(Trim(parts.rest));
    if (rest.rfind("as ", 0) == 0) signature += Trim(rest.substr(3));
    return signature;
}

std::optional<std::string> ParameterDefault(const std::string& declaration, const std::string& parameter) {
    for (const std::string& written : Split(declaration).parameters) {
        if (Lower(written.substr(0, written.find(' '))) != Lower(parameter)) continue;
        const size_t equals = written.find('=');
        if (equals == std::string::npos) return std::nullopt;
        return Trim(written.substr(equals + 1));
    }
    return std::nullopt;
}

}  // namespace simhost
