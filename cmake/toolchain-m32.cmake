# 32-bit x86 (the host's "Linux X86" target) with Debian's i686 cross compiler,
# which installs beside the ARM ones (g++-multilib does not). The plug-in was
# made for 32-bit hosts, where pointers and every word of the host's definition
# records are 4 bytes; this build checks that it still holds there.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(PIXTURN_TARGET_TRIPLE i686-linux-gnu)
set(PIXTURN_TARGET_QEMU qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake)
# A 64-bit x86 kernel usually runs 32-bit programs itself: then the tests run
# natively, through the cross compiler's own dynamic loader and libraries (the
# loader is itself a program, so running it tells). Elsewhere they stay under
# qemu-i386.
set(PIXTURN_I686_LOADER /usr/${PIXTURN_TARGET_TRIPLE}/lib/ld-linux.so.2)
execute_process(COMMAND ${PIXTURN_I686_LOADER} --version
                RESULT_VARIABLE pixturn_native_32bit OUTPUT_QUIET ERROR_QUIET)
if(pixturn_native_32bit EQUAL 0)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PIXTURN_I686_LOADER} --library-path /usr/${PIXTURN_TARGET_TRIPLE}/lib)
endif()
# The rotation's arithmetic is defined in 64-bit doubles: SSE2's, not the x87's
# 80-bit registers, and no fused multiply-adds, which would round a * b + c once
# instead of twice and change the shears' pixels.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse -ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -ffp-contract=off")
