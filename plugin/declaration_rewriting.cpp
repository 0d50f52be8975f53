// Declarations of the global methods that stand in for class-extension methods on
// hosts that take a module instead: the extended object becomes the first
// parameter ("extends ref as <class>") and, for a setter, the assigned value the
// last one. The host reads declarations from fixed 1000-byte buffers, so results
// are cut to fit them.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "plugin/registration_forms.h"

namespace {

constexpr size_t kBufferSize = 1000;
// Longest result when text is spliced in at a blank or "(", and when it is only
// appended to the whole declaration.
constexpr size_t kSplicedLimit = kBufferSize - 2;
constexpr size_t kAppendedLimit = kBufferSize - 1;

// Keeps the first `count` characters of `text` (no more than `limit`); returns
// where the rest goes and leaves in `room` the size left for it, its NUL included.
char* KeepHead(char* buffer, const char* text, size_t count, size_t limit, size_t& room) {
    const size_t kept = std::min(count, limit);
    std::memcpy(buffer, text, kept);
    room = limit + 1 - kept;
    return buffer + kept;
}

}  // namespace

char* AddClassParameter(const char* declaration, const char* className) {
    if (declaration == nullptr || className == nullptr) return nullptr;
    char buffer[kBufferSize] = {};
    const size_t split = std::strcspn(declaration, " (");
    size_t room;
    if (declaration[split] == '(') {
        char* rest = KeepHead(buffer, declaration, split, kSplicedLimit, room);
        std::snprintf(rest, room, "(extends ref as %s, %s", className, declaration + split + 1);
    } else if (declaration[split] == ' ') {
        char* rest = KeepHead(buffer, declaration, split, kSplicedLimit, room);
        std::snprintf(rest, room, "(extends ref as %s)%s", className, declaration + split);
    } else {
        std::snprintf(buffer, kAppendedLimit + 1, "%s(extends ref as %s)", declaration, className);
    }
    return strdup(buffer);
}

char* AssignmentDeclaration(const char* declaration, const char* className) {
    char* withClass = AddClassParameter(declaration, className);
    if (withClass == nullptr) return nullptr;
    char buffer[kBufferSize] = {};
    bool formed = true;
    size_t room;
    if (const char* close = std::strchr(withClass, ')')) {
        char* rest = KeepHead(buffer, withClass, size_t(close - withClass), kSplicedLimit, room);
        std::snprintf(rest, room, ", assigns value%s)", close + 1);
    } else if (const char* blank = std::strchr(withClass, ' ')) {
        char* rest = KeepHead(buffer, withClass, size_t(blank - withClass), kSplicedLimit, room);
        std::snprintf(rest, room, "(assigns value%s)", blank);
    } else {
        formed = false;
    }
    std::free(withClass);
    return formed ? strdup(buffer) : nullptr;
}
