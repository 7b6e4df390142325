# `cpack -G DEB`: libzel1, libzel-dev, zel-tools, gstreamer1.0-zel and python3-zel. Configure with
# -DCMAKE_INSTALL_PREFIX=/usr, so that the libraries go where Debian has them. A cross build gives the packages of its
# target.
set(CPACK_PACKAGE_NAME libzel)
set(CPACK_PACKAGE_VENDOR "The libzel authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # or it would be the synopsis of all three
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL zel_runtime zel_development)
if(ZEL_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL zel_tools)
endif()
if(TARGET gstzel)
  list(APPEND CPACK_COMPONENTS_ALL zel_gstreamer)
endif()
if(ZEL_BUILD_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL zel_python)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_SOURCE_GENERATOR "")

# Whoever builds the packages answers for them; the environment is that of Debian's own tools.
set(maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
if(NOT maintainer MATCHES "^.+ <.+@.+>$")
  set(maintainer "The libzel authors <libzel@example.org>")
endif()
set(ZEL_MAINTAINER ${maintainer} CACHE STRING "Maintainer of the Debian packages, as NAME <ADDRESS>")
set(CPACK_PACKAGE_CONTACT ${ZEL_MAINTAINER})

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(package_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(about "libzel numbers the boxes that an object detector finds in the frames of a
video: the same object has the same number, frame after frame.\n")

# package COMPONENT NAME SECTION MULTI_ARCH SYNOPSIS TEXT. CPack knows no field for MULTI_ARCH before version 3.31.
function(zel_package component name section multi_arch synopsis text)
  string(TOUPPER CPACK_DEBIAN_${component} package)
  set(${package}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${package}_PACKAGE_SECTION "${section}\nMulti-Arch: ${multi_arch}" PARENT_SCOPE)
  set(${package}_DESCRIPTION "multi-object tracking, ${synopsis}\n${about}\n${text}" PARENT_SCOPE)

  # The licence goes where Debian looks for it, but only into the packages; so do the two changelogs.
  set(doc ${CMAKE_INSTALL_DATADIR}/doc/${name})
  file(READ LICENSE licence)
  if(component STREQUAL zel_tools)
    file(READ cmake/debian/CLI11 cli11)
    file(READ cmake/debian/nlohmann_json json)
    string(APPEND licence "${cli11}${json}")
  endif()
  file(WRITE ${PROJECT_BINARY_DIR}/debian/${name}/copyright "${licence}")
  install(FILES ${PROJECT_BINARY_DIR}/debian/${name}/copyright DESTINATION ${doc}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES CHANGELOG.md DESTINATION ${doc} RENAME changelog COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog DESTINATION ${doc} RENAME changelog.Debian
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

zel_package(zel_runtime libzel${PROJECT_VERSION_MAJOR} libs same "shared library"
  "This is the library, which needs the C runtime alone.")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ZEL_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)

zel_package(zel_development libzel-dev libdevel same "development files"
  "These are the headers, the static library, the guide and examples of hosts.")
set(CPACK_DEBIAN_ZEL_DEVELOPMENT_PACKAGE_DEPENDS "libzel${PROJECT_VERSION_MAJOR} (= ${package_version})")
install(FILES docs/guide.md docs/many-sequences.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzel-dev
  COMPONENT zel_development EXCLUDE_FROM_ALL)
install(FILES docs/images/life.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzel-dev/images
  COMPONENT zel_development EXCLUDE_FROM_ALL)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libzel-dev COMPONENT zel_development EXCLUDE_FROM_ALL)

zel_package(zel_tools zel-tools utils foreign "command"
  "This is the command zeltrack, which tracks files of detections and shows what
happened, frame by frame.")

if(TARGET gstzel)
  zel_package(zel_gstreamer gstreamer1.0-zel libs same "GStreamer plugin"
    "This is the plugin for GStreamer, with the element zeltracker and two elements
that read and write files of detections and tracks.")
  set(CPACK_DEBIAN_ZEL_GSTREAMER_PACKAGE_DEPENDS "libzel${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_ZEL_GSTREAMER_PACKAGE_GENERATE_SHLIBS OFF)  # nobody links with it
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/host)
  install(FILES docs/gstreamer.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/gstreamer1.0-zel
    COMPONENT zel_gstreamer EXCLUDE_FROM_ALL)
endif()

if(ZEL_BUILD_PYTHON)
  zel_package(zel_python python3-zel python foreign "Python package"
    "This is the package zel for Python 3, which takes and gives numpy arrays.")
  set(CPACK_DEBIAN_ZEL_PYTHON_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_ZEL_PYTHON_PACKAGE_DEPENDS
    "libzel${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION}), python3 (>= 3.9), python3-numpy")
  set(CPACK_DEBIAN_ZEL_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/python/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/python/prerm)
  install(FILES docs/python.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-zel
    COMPONENT zel_python EXCLUDE_FROM_ALL)
  install(DIRECTORY examples/python/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-zel/examples
    COMPONENT zel_python EXCLUDE_FROM_ALL)
endif()

# Debian's own changelog, dated as the release is. What is not released yet is of today.
file(STRINGS CHANGELOG.md released REGEX "^## \\[${PROJECT_VERSION}\\]")
if(NOT released MATCHES "([0-9]+-[0-9]+-[0-9]+)$")
  string(TIMESTAMP released "- %Y-%m-%d" UTC)
endif()
string(REGEX REPLACE ".* " "" released "${released}")
execute_process(COMMAND date --utc --rfc-email --date ${released} OUTPUT_VARIABLE released OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(cmake/debian/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/compress.cmake)

# The dependencies are read from the files. Those of another architecture cannot be: there it is the C library that the
# cross compiler comes with.
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
  execute_process(COMMAND ${CMAKE_C_COMPILER} -dM -E -include features.h -x c /dev/null OUTPUT_VARIABLE macros)
  string(REGEX REPLACE ".*__GLIBC__ ([0-9]+).*" "\\1" major "${macros}")
  string(REGEX REPLACE ".*__GLIBC_MINOR__ ([0-9]+).*" "\\1" minor "${macros}")
  string(REGEX REPLACE "[.].*" "" gcc ${CMAKE_CXX_COMPILER_VERSION})
  set(CPACK_DEBIAN_ZEL_RUNTIME_PACKAGE_DEPENDS "libc6 (>= ${major}.${minor})")
  set(CPACK_DEBIAN_ZEL_TOOLS_PACKAGE_DEPENDS
    "libc6 (>= ${major}.${minor}), libstdc++6 (>= ${gcc}), libgcc-s1 (>= ${gcc})")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
  string(REPLACE aarch64 arm64 CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
  string(REPLACE armv7l armhf CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
