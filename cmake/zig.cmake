# What the libraries Zig 0.11 cross-builds (the Mac ones and Windows arm64) share:
# Zig's clang for ZIG_TARGET as the C and C++ compilers, its archiver, and its
# cache. Zig carries each target's C headers and builds the C and C++ runtimes
# for it from source. Included by cmake/zig-macos.cmake and
# cmake/toolchain-win-arm64.cmake, which set ZIG_TARGET.
set(PIXTURN_ZIG /opt/pixturn-zig-0.11.0/zig)
set(PIXTURN_ZIG_LIB /opt/pixturn-zig-0.11.0/lib)
# Zig's cache outlives `make clean`: its first build of the runtimes for a target
# takes minutes on two cores, and every later one reuses it.
if(DEFINED ENV{XDG_CACHE_HOME})
  set(zig_cache $ENV{XDG_CACHE_HOME}/pixturn-zig/${ZIG_TARGET})
else()
  set(zig_cache $ENV{HOME}/.cache/pixturn-zig/${ZIG_TARGET})
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
pixturn_zig_tool(CMAKE_C_COMPILER cc "cc -target ${ZIG_TARGET}")
pixturn_zig_tool(CMAKE_CXX_COMPILER c++ "c++ -target ${ZIG_TARGET}")
pixturn_zig_tool(CMAKE_AR ar ar)
pixturn_zig_tool(CMAKE_RANLIB ranlib ranlib)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# The rotation's arithmetic is defined in 64-bit doubles with every product
# rounded on its own, and clang fuses a * b + c into one rounding unless told
# not to, which would change the shears' pixels.
set(CMAKE_C_FLAGS_INIT "-ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-ffp-contract=off")
