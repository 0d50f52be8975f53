# 32-bit Windows (the host's "Windows" target) with Debian's mingw-w64 compiler;
# the rotation's doubles in SSE2's registers rather than the x87's 80-bit ones.
# Its programs would run under Wine's 32-bit loader, which comes with Debian's
# i386 package wine32 (docs/reliability.md says why make test leaves it out).
set(CMAKE_SYSTEM_PROCESSOR x86)
set(PIXTURN_TARGET_TRIPLE i686-w64-mingw32)
set(PIXTURN_TARGET_FLAGS "-msse2 -mfpmath=sse")
set(PIXTURN_TARGET_WINE wine)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
