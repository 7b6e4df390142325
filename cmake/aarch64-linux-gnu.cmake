# The target: 64-bit ARM Linux on a Cortex-A53, built by Debian's cross compiler and run under user-mode emulation.
# There is no CMAKE_FIND_ROOT_PATH on purpose: Debian keeps each architecture's libraries in a directory of its own, and
# the header-only packages that the command needs lie outside of any cross root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_C_FLAGS_INIT -mcpu=cortex-a53)
set(CMAKE_CXX_FLAGS_INIT -mcpu=cortex-a53)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu)
