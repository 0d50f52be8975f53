# 32-bit ARM (the host's "Linux ARM" target): ARMv7 with hard-float VFP, Debian's
# armhf baseline, with Debian's cross compiler; the tests run under qemu-arm,
# whose processor has NEON, so both the NEON and the portable paths run. NEON
# is not part of the baseline: its code carries its own target attribute and
# is chosen at run time (transforms/processor_paths.cpp).
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(PIXTURN_TARGET_TRIPLE arm-linux-gnueabihf)
set(PIXTURN_TARGET_QEMU qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
