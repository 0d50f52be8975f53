# What the cross toolchain files share: Debian's cross compiler for
# PIXTURN_TARGET_TRIPLE, whose libraries live under /usr/<triple>, and QEMU's
# user-mode emulator PIXTURN_TARGET_QEMU, which runs the build's programs (the
# tests) with that same tree as their root, and the compiler flags every target
# needs besides the target's own PIXTURN_TARGET_FLAGS. Included by
# cmake/toolchain-*.cmake.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${PIXTURN_TARGET_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${PIXTURN_TARGET_TRIPLE}-g++)
set(CMAKE_FIND_ROOT_PATH /usr/${PIXTURN_TARGET_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
find_program(PIXTURN_QEMU ${PIXTURN_TARGET_QEMU} REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${PIXTURN_QEMU} -L /usr/${PIXTURN_TARGET_TRIPLE})
# The rotation's arithmetic is defined in 64-bit doubles with every product
# rounded on its own: no target may fuse a * b + c into one rounding. g++ for
# aarch64 does so by default (0.1 * 3.3 - 0.33 comes out -1.4988e-17, not 0,
# under qemu-aarch64), which would change the shears' pixels.
set(CMAKE_C_FLAGS_INIT "-ffp-contract=off ${PIXTURN_TARGET_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "-ffp-contract=off ${PIXTURN_TARGET_FLAGS}")
