# zel_library(TARGET KIND OUTPUT SOURCES ... HEADERS ... [NEEDS TARGET] [SYSTEM LIBRARY...]): a library with C++17
# inside and a C interface, shared and static from one set of objects. TARGET and TARGET_static become zel::KIND and
# zel::KIND_static, lib<OUTPUT>. NEEDS is another library made here. Without the shared ones (BUILD_SHARED_LIBS=OFF),
# zel::KIND is the static one, which is always built: tests and command use it.
function(zel_library target kind output)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "NEEDS" "SOURCES;HEADERS;SYSTEM")
  zel_library_objects(${target} ${arg_SOURCES})

  # In the tree, too, a host writes <zel/libzel.h>.
  set(include ${CMAKE_CURRENT_BINARY_DIR}/include)
  foreach(header IN LISTS arg_HEADERS)
    configure_file(${header} ${include}/zel/${header} COPYONLY)
  endforeach()
  target_include_directories(${target}_objects PRIVATE ${include})

  add_library(${target}_static STATIC $<TARGET_OBJECTS:${target}_objects>)
  target_link_libraries(${target}_static PUBLIC ${arg_SYSTEM})
  set(libraries ${target}_static)
  if(BUILD_SHARED_LIBS OR NOT DEFINED BUILD_SHARED_LIBS)
    add_library(${target} SHARED $<TARGET_OBJECTS:${target}_objects>)
    target_link_libraries(${target} PRIVATE ${arg_SYSTEM})
    zel_shared_library(${target} ${output})
    list(APPEND libraries ${target})
  else()
    add_library(zel::${kind} ALIAS ${target}_static)
  endif()
  foreach(library IN LISTS libraries)
    string(REPLACE ${target} ${kind} name ${library})
    add_library(zel::${name} ALIAS ${library})
    # The C driver links: the library needs the C runtime alone, and so does a host in C.
    set_target_properties(${library} PROPERTIES OUTPUT_NAME ${output} EXPORT_NAME ${name} LINKER_LANGUAGE C)
    target_include_directories(${library} INTERFACE
      $<BUILD_INTERFACE:${include}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  endforeach()

  if(arg_NEEDS)
    set(needed $<TARGET_PROPERTY:${arg_NEEDS}_static,INTERFACE_INCLUDE_DIRECTORIES>)
    target_include_directories(${target}_objects PRIVATE ${needed})
    target_link_libraries(${target}_static PUBLIC ${arg_NEEDS}_static)
    if(TARGET ${target})
      target_link_libraries(${target} PRIVATE ${arg_NEEDS})
      # Beside it, in a tree that the system does not search. Packages, which go into one that it does, carry no path.
      if(NOT APPLE AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
      endif()
      target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${needed}>)
    endif()
  endif()
  set_property(GLOBAL APPEND PROPERTY ZEL_LIBRARIES ${libraries})
endfunction()

function(zel_library_objects target)
  add_library(${target}_objects OBJECT ${ARGN})
  set_target_properties(${target}_objects PROPERTIES
    CXX_STANDARD 17
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # GCC 12 vectorises none of the loops at -O2. A parent project without a build type compiles at -O0, which makes the
  # library 30 times slower: there it takes its own level, unless the flags ask for one.
  set(optimised $<CONFIG:Release,RelWithDebInfo>)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES AND NOT " ${CMAKE_CXX_FLAGS}" MATCHES " -O")
    set(optimised 1)
  endif()
  # Float contraction stays at the compiler's default. Calls between exported functions stay inside the library.
  # Sections of their own let a static host drop what it does not use. NaNs and infinities are input like any other,
  # whatever -ffast-math among the flags of a parent project says. Single precision that becomes double unseen costs
  # time on the target; elsewhere double is what is wanted.
  target_compile_options(${target}_objects PRIVATE $<${optimised}:-O3> -Wdouble-promotion
    -fno-fast-math -fno-unsafe-math-optimizations -fno-finite-math-only -fno-math-errno
    -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-semantic-interposition -ffunction-sections -fdata-sections)
  # GCC's copy of each loop for a stride of one is a tenth of the code and no faster.
  target_compile_options(${target}_objects PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-version-loops-for-strides>)
  # A parent in C links without the runtime that clang's check of calls through pointers asks for in C++.
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang AND NOT ZEL_SANITIZE)
    target_compile_options(${target}_objects PRIVATE -fno-sanitize=function)
  endif()
  target_link_libraries(${target}_objects PRIVATE $<BUILD_INTERFACE:zel_options>)
endfunction()

# No --no-undefined: clang leaves the runtime of its sanitizers to the program, and a parent project may use them. What
# is missing shows when the tests link a host.
function(zel_shared_library target output)
  set(exported ${PROJECT_SOURCE_DIR}/cmake/${output}.map)
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${exported})
  if(NOT APPLE)
    target_link_options(${target} PRIVATE -Wl,--as-needed -Wl,-Bsymbolic-functions -Wl,--version-script=${exported})
  endif()
endfunction()
