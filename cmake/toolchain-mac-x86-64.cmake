# The Mac x86-64 library (Intel Macs), with Zig and ld64.lld.
set(PIXTURN_MAC_ARCH x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/zig-macos.cmake)
