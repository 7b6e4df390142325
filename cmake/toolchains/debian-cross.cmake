# What the toolchains beside this have in common: one of Debian's cross compilers, named by `triplet`, and QEMU's
# user-mode emulation of `emulated` for the tests. There is no CMAKE_FIND_ROOT_PATH on purpose: Debian keeps each
# architecture's libraries in a directory of its own, and the header-only packages that the command needs lie outside of
# any cross root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${emulated} -L /usr/${triplet})
