# Refuses compilers that are too old for the library, before one of them fails in the middle of a source.
set(ZEL_LEAST_GNU 11)
set(ZEL_LEAST_Clang 13)
set(ZEL_LEAST_AppleClang 13)
set(found "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
if(NOT DEFINED ZEL_LEAST_${CMAKE_CXX_COMPILER_ID})
  message(WARNING "libzel is tried with GCC and clang only, found ${found}")
elseif(CMAKE_CXX_COMPILER_VERSION VERSION_LESS ZEL_LEAST_${CMAKE_CXX_COMPILER_ID})
  message(FATAL_ERROR "libzel needs GCC 11 or clang 13 or later, found ${found}")
endif()

# The library's objects are compiled without it, but GCC then also links a program so that denormal numbers are zero.
string(TOUPPER "${CMAKE_BUILD_TYPE}" type)
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${type}} ${CMAKE_C_FLAGS} ${CMAKE_C_FLAGS_${type}}" MATCHES "-ffast-math|-Ofast")
  message(WARNING "-ffast-math breaks what libzel promises about NaN and denormal numbers: see SECURITY.md")
endif()
