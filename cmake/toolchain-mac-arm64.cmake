# The Mac arm64 library (Apple silicon), with Zig and ld64.lld; the linker signs
# it ad hoc, without which Apple silicon runs none of its code.
set(PIXTURN_MAC_ARCH arm64)
include(${CMAKE_CURRENT_LIST_DIR}/zig-macos.cmake)
