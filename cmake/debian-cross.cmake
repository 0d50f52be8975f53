# What the cross toolchain files share: Debian's cross compiler for
# PIXTURN_TARGET_TRIPLE, whose libraries live under /usr/<triple>, and QEMU's
# user-mode emulator PIXTURN_TARGET_QEMU, which runs the build's programs (the
# tests) with that same tree as their root. Included by cmake/toolchain-*.cmake.
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
