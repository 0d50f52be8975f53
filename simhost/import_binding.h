// What the loaders of foreign libraries (macho_imports.cpp, pe_imports.cpp and
// apple_arm64_calls.cpp) share in binding a library's imports: a function's
// address as an import table holds it, tables of names and addresses and their
// look-up, and on arm64 a glibc va_list over arguments that another system's
// caller laid out in 8-byte slots.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <string>

namespace simhost::internal {

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

struct Binding {
    const char* symbol;
    void* address;
};

// The address `symbol` is bound to in `table`, or null.
template <size_t count>
void* Find(const Binding (&table)[count], const std::string& symbol) {
    for (const Binding& binding : table)
        if (symbol == binding.symbol) return binding.address;
    return nullptr;
}

#if defined(__aarch64__)
// Apple's va_list and Windows' point at the arguments, one 8-byte slot each,
// floating ones included. A glibc va_list whose register save areas are used up
// reads every argument from its stack pointer the same way, so one over `slots`
// reads what the other system's caller passed.
inline void VaListOverSlots(void* slots, va_list& arguments) {
    struct GlibcVaList {
        void* stack;
        void* generalTop;
        void* vectorTop;
        int generalOffset;
        int vectorOffset;
    };
    static_assert(sizeof(GlibcVaList) == sizeof(va_list));
    const GlibcVaList overSlots{slots, nullptr, nullptr, 0, 0};
    std::memcpy(&arguments, &overSlots, sizeof arguments);
}
#endif

}  // namespace simhost::internal
