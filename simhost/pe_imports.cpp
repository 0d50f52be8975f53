// What a Windows arm64 library's imports are bound to in this Linux process, by
// name: exactly the imports of the library as Zig's MinGW-w64 runtime and its
// link make it (the C runtime's start-up, its atexit table and locks, the printf
// family it compiles into the library, and the rotation's sin, cos and tan,
// which the link takes from msvcrt.dll on purpose: CMakeLists.txt says why). A
// new one refuses the load with its name until it is given a binding here.
//   KERNEL32.dll
//     InitializeCriticalSection, EnterCriticalSection, LeaveCriticalSection,
//     DeleteCriticalSection   a recursive mutex of this process, its address
//                             kept in the section's first eight bytes (a
//                             critical section is re-entrant as it is)
//     GetLastError            0: no stand-in here fails with an error code
//     Sleep                   this thread sleeps as long
//     TlsGetValue, VirtualQuery, VirtualProtect, IsDBCSLeadByteEx,
//     MultiByteToWideChar, WideCharToMultiByte
//                             stop the process with their name: the runtime
//                             asks them only for thread-local keys, for
//                             pseudo-relocations and for wide characters in
//                             formats, none of which the library has
//   msvcrt.dll
//     malloc, calloc, realloc, free, abort, strchr, strcspn, strlen, strncmp,
//     strerror, ldexp, sin, cos, tan
//                             glibc's, the same shapes (16-byte aligned blocks
//                             on both; strerror's texts are glibc's; the tests'
//                             models turn by the same sin, cos and tan)
//     _strdup                 glibc's strdup
//     _errno                  glibc's errno location (the runtime compares it
//                             with no code whose number differs)
//     _initterm               calls each function of the table, as msvcrt does
//     _lock, _unlock          one recursive mutex per msvcrt lock number
//     _amsg_exit              stops the process, as msvcrt's ends it
//     ___lc_codepage_func     0 and 1: the "C" locale, in which msvcrt
//     ___mb_cur_max_func      starts
//     localeconv              the "C" locale's conventions, in msvcrt's
//                             layout (its char fields, then its wide ones)
//     wcslen                  counts 16-bit characters: wchar_t is 16 bits
//     __iob_func              msvcrt's stdin, stdout and stderr records, which
//                             fputc, fwrite and vfprintf take as glibc's
//     fputc, fwrite           glibc's on the matching stream
//     vfprintf                glibc's vfprintf on the matching stream, the
//                             va_list (a pointer to 8-byte slots on Windows)
//                             made into glibc's
// No import takes variadic arguments, and none a long.
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <strings.h>
#include <thread>

#include "simhost/import_binding.h"
#include "simhost/pe_loader.h"

namespace simhost::internal {

namespace {

[[noreturn]] void Stop(const char* what) {
    std::fprintf(stderr, "the Windows arm64 library reached %s, which its imports' stand-ins do not provide\n", what);
    std::abort();
}

template <const char* name>
[[noreturn]] void Unexpected() {
    Stop(name);
}

void InitializeCriticalSection(void* section) {
    auto* mutex = new std::recursive_mutex;
    std::memcpy(section, &mutex, sizeof mutex);
}
std::recursive_mutex& MutexOf(void* section) {
    std::recursive_mutex* mutex;
    std::memcpy(&mutex, section, sizeof mutex);
    return *mutex;
}
void EnterCriticalSection(void* section) { MutexOf(section).lock(); }
void LeaveCriticalSection(void* section) { MutexOf(section).unlock(); }
void DeleteCriticalSection(void* section) { delete &MutexOf(section); }

uint32_t GetLastError() { return 0; }

void Sleep(uint32_t milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

int* ErrorLocation() { return &errno; }

void InitTerm(void (**begin)(), void (**end)()) {
    for (; begin < end; ++begin)
        if (*begin != nullptr) (*begin)();
}

// msvcrt numbers its locks up to _TOTAL_LOCKS, 36.
std::recursive_mutex gRuntimeLocks[36];
std::recursive_mutex& RuntimeLock(int number) {
    if (number < 0 || number >= static_cast<int>(std::size(gRuntimeLocks))) Stop("a C runtime lock out of range");
    return gRuntimeLocks[number];
}
void Lock(int number) { RuntimeLock(number).lock(); }
void Unlock(int number) { RuntimeLock(number).unlock(); }

[[noreturn]] void RuntimeErrorExit(int code) {
    std::fprintf(stderr, "the Windows arm64 library's C runtime failed (runtime error R6%03d)\n", code);
    std::abort();
}

int CodePage() { return 0; }
int MultiByteMaximum() { return 1; }

struct MsvcrtConventions {
    const char* text[10];  // decimal_point ... negative_sign
    char numbers[8];       // int_frac_digits ... n_sign_posn
    const char16_t* wide[8];
};
const MsvcrtConventions* CConventions() {
    static const MsvcrtConventions conventions{
        {".", "", "", "", "", "", "", "", "", ""},
        {CHAR_MAX, CHAR_MAX, CHAR_MAX, CHAR_MAX, CHAR_MAX, CHAR_MAX, CHAR_MAX, CHAR_MAX},
        {u".", u"", u"", u"", u"", u"", u"", u""}};
    return &conventions;
}

size_t WideLength(const char16_t* text) {
    size_t length = 0;
    while (text[length] != 0) ++length;
    return length;
}

// msvcrt's FILE record, of which only the address matters here.
struct MsvcrtFile {
    char record[48];
};
MsvcrtFile gStandardStreams[3];
MsvcrtFile* StandardStreams() { return gStandardStreams; }
FILE* Stream(MsvcrtFile* file) {
    if (file == &gStandardStreams[0]) return stdin;
    if (file == &gStandardStreams[1]) return stdout;
    if (file == &gStandardStreams[2]) return stderr;
    Stop("a stream other than stdin, stdout and stderr");
}

int PutCharacter(int character, MsvcrtFile* file) { return std::fputc(character, Stream(file)); }
size_t Write(const void* data, size_t size, size_t count, MsvcrtFile* file) {
    return std::fwrite(data, size, count, Stream(file));
}

// A Windows va_list is a pointer to the arguments' 8-byte slots.
int FormatToStream(MsvcrtFile* file, const char* format, void* slots) {
    va_list arguments;
    VaListOverSlots(slots, arguments);
    return std::vfprintf(Stream(file), format, arguments);
}

constexpr char kTlsGetValue[] = "TlsGetValue";
constexpr char kVirtualQuery[] = "VirtualQuery";
constexpr char kVirtualProtect[] = "VirtualProtect";
constexpr char kIsDbcsLeadByteEx[] = "IsDBCSLeadByteEx";
constexpr char kMultiByteToWideChar[] = "MultiByteToWideChar";
constexpr char kWideCharToMultiByte[] = "WideCharToMultiByte";

const Binding kKernel32[] = {
    {"InitializeCriticalSection", Address(&InitializeCriticalSection)},
    {"EnterCriticalSection", Address(&EnterCriticalSection)},
    {"LeaveCriticalSection", Address(&LeaveCriticalSection)},
    {"DeleteCriticalSection", Address(&DeleteCriticalSection)},
    {"GetLastError", Address(&GetLastError)},
    {"Sleep", Address(&Sleep)},
    {kTlsGetValue, Address(&Unexpected<kTlsGetValue>)},
    {kVirtualQuery, Address(&Unexpected<kVirtualQuery>)},
    {kVirtualProtect, Address(&Unexpected<kVirtualProtect>)},
    {kIsDbcsLeadByteEx, Address(&Unexpected<kIsDbcsLeadByteEx>)},
    {kMultiByteToWideChar, Address(&Unexpected<kMultiByteToWideChar>)},
    {kWideCharToMultiByte, Address(&Unexpected<kWideCharToMultiByte>)},
};

const Binding kMsvcrt[] = {
    {"malloc", Address(&std::malloc)},
    {"calloc", Address(&std::calloc)},
    {"realloc", Address(&std::realloc)},
    {"free", Address(&std::free)},
    {"abort", Address(&std::abort)},
    {"strchr", Address(static_cast<const char* (*)(const char*, int)>(&std::strchr))},
    {"strcspn", Address(&std::strcspn)},
    {"strlen", Address(&std::strlen)},
    {"strncmp", Address(&std::strncmp)},
    {"strerror", Address(&std::strerror)},
    {"ldexp", Address(static_cast<double (*)(double, int)>(&std::ldexp))},
    {"sin", Address(static_cast<double (*)(double)>(&std::sin))},
    {"cos", Address(static_cast<double (*)(double)>(&std::cos))},
    {"tan", Address(static_cast<double (*)(double)>(&std::tan))},
    {"_strdup", Address(&strdup)},
    {"_errno", Address(&ErrorLocation)},
    {"_initterm", Address(&InitTerm)},
    {"_lock", Address(&Lock)},
    {"_unlock", Address(&Unlock)},
    {"_amsg_exit", Address(&RuntimeErrorExit)},
    {"___lc_codepage_func", Address(&CodePage)},
    {"___mb_cur_max_func", Address(&MultiByteMaximum)},
    {"localeconv", Address(&CConventions)},
    {"wcslen", Address(&WideLength)},
    {"__iob_func", Address(&StandardStreams)},
    {"fputc", Address(&PutCharacter)},
    {"fwrite", Address(&Write)},
    {"vfprintf", Address(&FormatToStream)},
};

}  // namespace

void* WindowsImport(const std::string& library, const std::string& symbol) {
    if (strcasecmp(library.c_str(), "KERNEL32.dll") == 0) return Find(kKernel32, symbol);
    if (strcasecmp(library.c_str(), "msvcrt.dll") == 0) return Find(kMsvcrt, symbol);
    return nullptr;
}

}  // namespace simhost::internal
