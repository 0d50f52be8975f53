# What the Windows toolchain files share: Debian's mingw-w64 compiler for
# PIXTURN_TARGET_TRIPLE in its POSIX-threads flavour, whose libraries live under
# /usr/<triple>, and Wine running the build's programs (the tests) in a prefix
# of the build's own, made on the first start, so that runs depend on nothing
# in $HOME and print none of Wine's diagnostics. Included by
# cmake/toolchain-win*.cmake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${PIXTURN_TARGET_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${PIXTURN_TARGET_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${PIXTURN_TARGET_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${PIXTURN_TARGET_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Programs carry their C++, GCC and thread runtimes, so Wine needs no DLL from
# the compiler's folders.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
# The rotation's arithmetic is defined in 64-bit doubles with every product
# rounded on its own: no fused multiply-adds. GCC for Windows keeps the stack
# aligned to 16 bytes only, yet may spill an AVX2 register with an aligned
# 32-byte move (GCC bug 54412); the assembler makes every such move unaligned,
# which costs nothing on processors that have AVX2.
set(PIXTURN_MINGW_FLAGS "-ffp-contract=off -Wa,-muse-unaligned-vector-move ${PIXTURN_TARGET_FLAGS}")
set(CMAKE_C_FLAGS_INIT "${PIXTURN_MINGW_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${PIXTURN_MINGW_FLAGS}")
find_program(PIXTURN_WINE ${PIXTURN_TARGET_WINE} PATHS /usr/lib/wine REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR env WINEPREFIX=${CMAKE_BINARY_DIR}/wine-prefix WINEDEBUG=-all ${PIXTURN_WINE})
