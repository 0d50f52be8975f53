# 32-bit x86 build on a 64-bit Debian host (g++-multilib). The plug-in was made
# for 32-bit hosts, where pointers and every word of the host's definition
# records are 4 bytes; this build checks that it still holds there.
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
# Debian's 32-bit libraries live under /usr/lib32 and i386-linux-gnu; never let a
# search fall back to the 64-bit ones.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(FIND_LIBRARY_USE_LIB32_PATHS ON)
set(FIND_LIBRARY_USE_LIB64_PATHS OFF)

# Some kernels are built without 32-bit support; there the build's programs
# (the tests) run under QEMU's user-mode emulator. The 32-bit dynamic loader is
# itself a program, so running it tells which kind of machine this is.
execute_process(COMMAND /lib/ld-linux.so.2 --version
                RESULT_VARIABLE pixturn_native_32bit OUTPUT_QUIET ERROR_QUIET)
if(NOT pixturn_native_32bit EQUAL 0)
  find_program(PIXTURN_QEMU_I386 qemu-i386 REQUIRED)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PIXTURN_QEMU_I386})
endif()
