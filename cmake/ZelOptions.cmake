# Standard C++ without extensions, which also names it on every command line, where clang-tidy reads it.
set(CMAKE_CXX_EXTENSIONS OFF)

# What every target of the project is compiled with. Kept on an interface target, so that a parent project's flags stay
# its own.
add_library(zel_options INTERFACE)
target_compile_features(zel_options INTERFACE cxx_std_17)
target_compile_options(zel_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)

# Sanitizers go on the directory instead: they must reach every target and every link step, GoogleTest's included.
set(ZEL_SANITIZE "" CACHE STRING "Sanitizers to build everything with, as a list for -fsanitize=")
if(ZEL_SANITIZE)
  add_compile_options(-fsanitize=${ZEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZEL_SANITIZE})
endif()
