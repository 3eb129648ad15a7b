# Cross-compiles for arm-linux-gnueabihf with Debian's cross compiler (g++-arm-linux-gnueabihf) and runs
# what it builds under qemu-user. The loader and libc come from the cross
# toolchain's own folder: a child the program forks hangs when they do not
# match. SQLite is Debian's runtime library of that architecture
# (libsqlite3-0:<arch>) with the machine's own headers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# GCC notes that passing some structures changed in GCC 7.1; everything here
# is built by one compiler, so the note says nothing about this build.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf
    -E LD_LIBRARY_PATH=/usr/arm-linux-gnueabihf/lib:/usr/lib/arm-linux-gnueabihf)
set(SQLite3_INCLUDE_DIR /usr/include CACHE PATH "")
set(SQLite3_LIBRARY /usr/lib/arm-linux-gnueabihf/libsqlite3.so.0 CACHE FILEPATH "")
