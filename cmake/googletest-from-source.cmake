# Answers find_package(GTest) with GoogleTest built inside this build from
# Debian's googletest sources, for builds the installed libgtest doesn't fit
# (the 32-bit one). Include it through CMAKE_PROJECT_TOP_LEVEL_INCLUDES; every
# other package is still found the usual way.
set(PIXTURN_GOOGLETEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest sources")

macro(pixturn_provide_googletest method package_name)
  if("${package_name}" STREQUAL "GTest")
    if(NOT TARGET GTest::gtest_main)
      set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
      set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
      add_subdirectory(${PIXTURN_GOOGLETEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    endif()
    set(GTest_FOUND TRUE)
  endif()
endmacro()

cmake_language(SET_DEPENDENCY_PROVIDER pixturn_provide_googletest SUPPORTED_METHODS FIND_PACKAGE)
