# The Mac library's link (cmake/zig-macos.cmake says why ld64.lld): Zig's
# runtime archives, the libSystem stub Zig ships and the project's stubs of
# CoreFoundation and CoreServices.
set(stubs ${CMAKE_CURRENT_LIST_DIR}/../platform/macos/link-stubs)
string(REPLACE ";" " " runtime "${PIXTURN_MAC_RUNTIME}")
set(CMAKE_CXX_CREATE_SHARED_LIBRARY
  "${PIXTURN_LD64} -dylib -arch ${PIXTURN_MAC_ARCH} -platform_version macos ${PIXTURN_MACOS_MINIMUM} ${PIXTURN_MACOS_MINIMUM} -install_name @rpath/<TARGET_SONAME> <LINK_FLAGS> -o <TARGET> <OBJECTS> <LINK_LIBRARIES> ${runtime} ${PIXTURN_ZIG_LIB}/libc/darwin/libSystem.11.tbd ${stubs}/CoreFoundation.tbd ${stubs}/CoreServices.tbd")
