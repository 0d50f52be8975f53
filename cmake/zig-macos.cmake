# The plug-in for macOS, cross-built here: Zig 0.11's clang compiles
# (cmake/zig.cmake), and Debian's ld64.lld links, because Zig's own Mach-O
# linker exports every hidden symbol of the static libc++ and cannot keep
# REALPluginMain alone. The link takes Zig's libc++, libc++abi and compiler-rt
# archives, the libSystem stub Zig ships and the project's stubs of
# CoreFoundation and CoreServices, so the library loads only those three on a
# Mac. The lowest macOS is 11.0, the first on Apple silicon. Included by
# cmake/toolchain-mac-*.cmake, which set PIXTURN_MAC_ARCH (x86_64 or arm64).
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20.0)
set(CMAKE_SYSTEM_PROCESSOR ${PIXTURN_MAC_ARCH})
set(CMAKE_OSX_ARCHITECTURES "")
set(CMAKE_OSX_SYSROOT "/")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")
set(PIXTURN_MACOS_MINIMUM 11.0)
if(PIXTURN_MAC_ARCH STREQUAL "arm64")
  set(ZIG_TARGET aarch64-macos.${PIXTURN_MACOS_MINIMUM})
else()
  set(ZIG_TARGET x86_64-macos.${PIXTURN_MACOS_MINIMUM})
endif()
include(${CMAKE_CURRENT_LIST_DIR}/zig.cmake)
find_program(PIXTURN_LD64 NAMES ld64.lld-14 ld64.lld PATHS /usr/lib/llvm-14/bin REQUIRED)

# The runtime archives Zig built for this target: a shared library linked once
# by Zig itself, whose link line (-v) names them.
if(NOT PIXTURN_MAC_RUNTIME)
  set(probe ${CMAKE_BINARY_DIR}/zig-runtime-probe)
  file(MAKE_DIRECTORY ${probe})
  file(WRITE ${probe}/probe.cpp "#include <new>\nint* Probe() { return new int(1); }\n")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -v -shared -O2 -fno-exceptions probe.cpp -o probe.dylib
    WORKING_DIRECTORY ${probe} RESULT_VARIABLE failed ERROR_VARIABLE verbose OUTPUT_QUIET)
  string(REGEX MATCH "zig ld [^\n]*" link_line "${verbose}")
  string(REGEX MATCHALL "[^ \n]*/lib(compiler_rt|c\\+\\+abi|c\\+\\+)\\.a" archives "${link_line}")
  list(LENGTH archives found)
  if(failed OR NOT found EQUAL 3)
    message(FATAL_ERROR "Zig did not link a library for ${ZIG_TARGET}: ${verbose}")
  endif()
  set(PIXTURN_MAC_RUNTIME "${archives}" CACHE INTERNAL "Zig's runtime archives for ${ZIG_TARGET}")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PIXTURN_MAC_RUNTIME)

# The link with ld64.lld (cmake/zig-macos-link.cmake), read after CMake's own
# Darwin rules, which would link with the compiler.
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/zig-macos-link.cmake)
