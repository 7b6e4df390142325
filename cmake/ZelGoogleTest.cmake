# Provides GTest::gtest, GTest::gtest_main and GTest::gmock. Debian's libraries serve the machine itself; what is built
# for another one compiles them from the sources in Debian's googletest package.
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  return()
endif()

set(ZEL_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest, for a cross build")
if(NOT EXISTS ${ZEL_GOOGLETEST_SOURCE}/CMakeLists.txt)
  message(FATAL_ERROR "No GoogleTest sources in ${ZEL_GOOGLETEST_SOURCE}: install Debian's googletest package")
endif()
set(INSTALL_GTEST OFF)
add_subdirectory(${ZEL_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
