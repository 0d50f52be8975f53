# 32-bit x86 (the host's "Linux X86" target) with Debian's i686 cross compiler,
# which installs beside the ARM ones (g++-multilib does not). The plug-in was
# made for 32-bit hosts, where pointers and every word of the host's definition
# records are 4 bytes; this build checks that it still holds there. The tests
# run under qemu-i386, whatever the kernel's 32-bit support.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(PIXTURN_TARGET_TRIPLE i686-linux-gnu)
set(PIXTURN_TARGET_QEMU qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
# The rotation's arithmetic is defined in 64-bit doubles: SSE2's, not the x87's
# 80-bit registers, and no fused multiply-adds, which would round a * b + c once
# instead of twice and change the shears' pixels.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -ffp-contract=off")
