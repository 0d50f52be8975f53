# The plug-in for macOS, cross-built here: Zig 0.11's clang compiles (it carries
# the macOS headers and builds libc++ for the target), and Debian's ld64.lld
# links, because Zig's own Mach-O linker exports every hidden symbol of the
# static libc++ and cannot keep REALPluginMain alone. The link takes Zig's
# libc++, libc++abi and compiler-rt archives, the libSystem stub Zig ships and
# the project's stubs of CoreFoundation and CoreServices, so the library loads
# only those three on a Mac. The lowest macOS is 11.0, the first on Apple
# silicon. Included by cmake/toolchain-mac-*.cmake, which set
# PIXTURN_MAC_ARCH (x86_64 or arm64).
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20.0)
set(CMAKE_SYSTEM_PROCESSOR ${PIXTURN_MAC_ARCH})
set(CMAKE_OSX_ARCHITECTURES "")
set(CMAKE_OSX_SYSROOT "/")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")
set(PIXTURN_MACOS_MINIMUM 11.0)
if(PIXTURN_MAC_ARCH STREQUAL "arm64")
  set(zig_target aarch64-macos.${PIXTURN_MACOS_MINIMUM})
else()
  set(zig_target x86_64-macos.${PIXTURN_MACOS_MINIMUM})
endif()

set(PIXTURN_ZIG /opt/pixturn-zig-0.11.0/zig)
set(PIXTURN_ZIG_LIB /opt/pixturn-zig-0.11.0/lib)
find_program(PIXTURN_LD64 NAMES ld64.lld-14 ld64.lld PATHS /usr/lib/llvm-14/bin REQUIRED)
# Zig's cache outlives `make clean`: its first build of libc++ for a target
# takes minutes on two cores, and every later one reuses it.
if(DEFINED ENV{XDG_CACHE_HOME})
  set(zig_cache $ENV{XDG_CACHE_HOME}/pixturn-zig/${zig_target})
else()
  set(zig_cache $ENV{HOME}/.cache/pixturn-zig/${zig_target})
endif()

# Zig's tools for this target, as the programs CMake knows: small scripts in the
# build folder, since each is one command of the zig executable.
function(pixturn_zig_tool variable name command)
  set(script ${CMAKE_BINARY_DIR}/zig-${name})
  file(WRITE ${script} "#!/bin/sh\nexport ZIG_GLOBAL_CACHE_DIR='${zig_cache}' ZIG_LOCAL_CACHE_DIR='${zig_cache}'\nexec '${PIXTURN_ZIG}' ${command} \"$@\"\n")
  file(CHMOD ${script} FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
  set(${variable} ${script} PARENT_SCOPE)
endfunction()
pixturn_zig_tool(CMAKE_C_COMPILER cc "cc -target ${zig_target}")
pixturn_zig_tool(CMAKE_CXX_COMPILER c++ "c++ -target ${zig_target}")
pixturn_zig_tool(CMAKE_AR ar ar)
pixturn_zig_tool(CMAKE_RANLIB ranlib ranlib)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

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
    message(FATAL_ERROR "Zig did not link a library for ${zig_target}: ${verbose}")
  endif()
  set(PIXTURN_MAC_RUNTIME "${archives}" CACHE INTERNAL "Zig's runtime archives for ${zig_target}")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PIXTURN_MAC_RUNTIME)

# The link with ld64.lld (cmake/zig-macos-link.cmake), read after CMake's own
# Darwin rules, which would link with the compiler.
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/zig-macos-link.cmake)
# The rotation's arithmetic is defined in 64-bit doubles with every product
# rounded on its own, and clang fuses a * b + c into one rounding unless told
# not to, which would change the shears' pixels.
set(CMAKE_C_FLAGS_INIT "-ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-ffp-contract=off")
