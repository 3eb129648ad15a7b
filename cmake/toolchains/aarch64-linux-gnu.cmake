# Cross-compiles for aarch64-linux-gnu with Debian's cross compiler (g++-aarch64-linux-gnu) and runs
# what it builds under qemu-user. The loader and libc come from the cross
# toolchain's own folder: a child the program forks hangs when they do not
# match. SQLite is Debian's runtime library of that architecture
# (libsqlite3-0:<arch>) with the machine's own headers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /usr/aarch64-linux-gnu
    -E LD_LIBRARY_PATH=/usr/aarch64-linux-gnu/lib:/usr/lib/aarch64-linux-gnu)
set(SQLite3_INCLUDE_DIR /usr/include CACHE PATH "")
set(SQLite3_LIBRARY /usr/lib/aarch64-linux-gnu/libsqlite3.so.0 CACHE FILEPATH "")
