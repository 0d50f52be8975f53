# Windows arm64 (the host's "Windows arm64" target), with Zig 0.11 for
# aarch64-windows-gnu: its MinGW-w64 headers and C runtime, linked by its
# lld against KERNEL32 and msvcrt only. Debian has neither an arm64 MinGW
# compiler nor an arm64 Wine; the win-arm64 preset runs the tests on this
# library in a Linux arm64 process through the simulated host's PE loader.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ARM64)
set(ZIG_TARGET aarch64-windows-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/zig.cmake)
set(PIXTURN_ZIG_WINDOWS ON)
