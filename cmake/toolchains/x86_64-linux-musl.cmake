# Static libraries for musl, the C library of Alpine and OpenWrt, with Debian's package musl-tools, which has a wrapper
# for the C compiler only. The libraries take nothing from the C++ one but headers. Those of Debian's are named here,
# before musl's, and the one macro of glibc that they ask for is answered.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER musl-gcc)
set(CMAKE_CXX_COMPILER g++)
execute_process(COMMAND g++ -dumpversion OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_CXX_FLAGS_INIT "-specs=/usr/lib/x86_64-linux-musl/musl-gcc.specs \
-isystem /usr/include/c++/${version} -isystem /usr/include/x86_64-linux-gnu/c++/${version} '-D__GLIBC_PREREQ(a,b)=0'")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # no program in C++ can be linked
set(BUILD_SHARED_LIBS OFF)
