# 64-bit ARM (the host's "Linux arm64" target) with Debian's cross compiler;
# NEON is part of the baseline. The tests run under qemu-aarch64.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(PIXTURN_TARGET_TRIPLE aarch64-linux-gnu)
set(PIXTURN_TARGET_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
# The rotation's arithmetic is defined in 64-bit doubles with every product
# rounded on its own. g++ for aarch64 fuses a * b + c into one rounding by
# default (0.1 * 3.3 - 0.33 comes out -1.4988e-17, not 0), which would change
# the shears' pixels: no contraction.
set(CMAKE_C_FLAGS_INIT "-ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-ffp-contract=off")
