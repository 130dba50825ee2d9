# GoogleTest for a cross build: Debian's googletest sources compiled with the cross
# compiler, under the names find_package(GTest) gives a native build (1.12 makes some of
# them itself).
set(ZEBREADER_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources for cross builds")
if(NOT EXISTS ${ZEBREADER_GTEST_SOURCE}/CMakeLists.txt)
  message(FATAL_ERROR "No GoogleTest sources in ${ZEBREADER_GTEST_SOURCE} (package googletest)")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${ZEBREADER_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(lib gtest gtest_main gmock gmock_main)
  if(NOT TARGET GTest::${lib})
    add_library(GTest::${lib} ALIAS ${lib})
  endif()
endforeach()
