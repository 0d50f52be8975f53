# 32-bit x86 (the host's "Linux X86" target) with Debian's i686 cross compiler,
# which installs beside the ARM ones (g++-multilib does not). The plug-in was
# made for 32-bit hosts, where pointers and every word of the host's definition
# records are 4 bytes; this build checks that it still holds there.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(PIXTURN_TARGET_TRIPLE i686-linux-gnu)
set(PIXTURN_TARGET_QEMU qemu-i386)
# The rotation's doubles in SSE2's registers rather than the x87's 80-bit ones.
set(PIXTURN_TARGET_FLAGS "-msse2 -mfpmath=sse")
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
