// The one piece of a C++ runtime the Windows arm64 library takes from outside
// its own code (CMakeLists.txt says why not Zig's libc++). The plug-in never
// allocates with new; the picture editor's virtual destructor still names
// operator delete in its table, so the library must hold one, and the C
// library's free is what it would be.
#include <cstdlib>

void operator delete(void* block) noexcept { std::free(block); }
