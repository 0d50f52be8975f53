# 64-bit Windows (the host's "Windows x86-64" target) with Debian's mingw-w64
# compiler; the tests run under wine64.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(PIXTURN_TARGET_TRIPLE x86_64-w64-mingw32)
set(PIXTURN_TARGET_WINE wine64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
