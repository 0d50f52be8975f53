# 64-bit ARM (the host's "Linux arm64" target) with Debian's cross compiler;
# NEON is part of the baseline. The tests run under qemu-aarch64.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(PIXTURN_TARGET_TRIPLE aarch64-linux-gnu)
set(PIXTURN_TARGET_QEMU qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
