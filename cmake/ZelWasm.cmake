# WebAssembly by Debian's packages clang, lld, wasi-libc, libc++-dev-wasm32 and libclang-rt-dev-wasm32, or others in the
# same places. Nothing is downloaded.
find_program(ZEL_WASM_CXX NAMES clang++ clang++-14)
find_program(ZEL_WASM_LD NAMES wasm-ld wasm-ld-14)
find_path(ZEL_WASM_LIBC stdlib.h PATHS /usr/include/wasm32-wasi NO_DEFAULT_PATH)
find_path(ZEL_WASM_LIBCXX vector PATHS /usr/include/wasm32-wasi/c++/v1 NO_DEFAULT_PATH)
if(ZEL_WASM_CXX)
  execute_process(COMMAND ${ZEL_WASM_CXX} --target=wasm32-wasi -print-libgcc-file-name
    OUTPUT_VARIABLE ZEL_WASM_RUNTIME OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
set(ZEL_WASM_FOUND OFF)
if(ZEL_WASM_LD AND ZEL_WASM_LIBC AND ZEL_WASM_LIBCXX AND EXISTS "${ZEL_WASM_RUNTIME}")
  set(ZEL_WASM_FOUND ON)
endif()

# A module without a main(). No exceptions, and no fused products, which the
# processor has not.
set(ZEL_WASM_FLAGS --target=wasm32-wasi -std=c++17 -O2 -DNDEBUG -fno-exceptions -fno-rtti -fvisibility=hidden
  -ffunction-sections -fdata-sections -ffp-contract=off -msimd128
  -isystem ${ZEL_WASM_LIBCXX} -isystem ${ZEL_WASM_LIBC})

function(zel_add_wasm name)
  cmake_parse_arguments(PARSE_ARGV 1 wasm "" "" "SOURCES;INCLUDES;EXPORTS")
  list(TRANSFORM wasm_INCLUDES PREPEND -I)
  set(exports ${wasm_EXPORTS} _initialize)
  list(TRANSFORM exports PREPEND --export=)
  set(objects "")
  foreach(source ${wasm_SOURCES})
    string(MAKE_C_IDENTIFIER "${source}" object)
    string(REGEX REPLACE "^.*_(tools|src)_" "\\1_" object ${object})
    set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}.dir/${object}.o)
    add_custom_command(OUTPUT ${object}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/${name}.dir
      COMMAND ${ZEL_WASM_CXX} ${ZEL_WASM_FLAGS} ${wasm_INCLUDES} -MD -MF ${object}.d -c ${source} -o ${object}
      DEPENDS ${source} DEPFILE ${object}.d VERBATIM)
    list(APPEND objects ${object})
  endforeach()
  set(libraries /usr/lib/wasm32-wasi)
  add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.wasm
    COMMAND ${ZEL_WASM_LD} -m wasm32 --gc-sections --strip-all --no-entry ${exports}
      -z stack-size=1048576 -L${libraries} ${libraries}/crt1-reactor.o ${objects} -lc++ -lc++abi -lc
      ${ZEL_WASM_RUNTIME} -o ${CMAKE_CURRENT_BINARY_DIR}/${name}.wasm
    DEPENDS ${objects} VERBATIM)
endfunction()
