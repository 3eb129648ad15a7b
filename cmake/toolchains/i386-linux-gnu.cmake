# Builds for 32-bit x86 on a 64-bit x86 machine with the versioned
# g++-N-multilib, which runs the result natively. That package, unlike
# g++-multilib, can sit beside the ARM cross compilers, but it lacks the
# /usr/include/asm link that g++-multilib adds: a folder of the build's own
# provides it. SQLite is Debian's i386 runtime library (libsqlite3-0:i386)
# with the machine's own headers.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(tarvo_i386_include ${CMAKE_BINARY_DIR}/i386-include)
file(MAKE_DIRECTORY ${tarvo_i386_include})
file(CREATE_LINK /usr/include/x86_64-linux-gnu/asm ${tarvo_i386_include}/asm
     SYMBOLIC)
set(CMAKE_C_FLAGS_INIT "-m32 -isystem ${tarvo_i386_include}")
set(CMAKE_CXX_FLAGS_INIT "-m32 -isystem ${tarvo_i386_include}")
set(SQLite3_INCLUDE_DIR /usr/include CACHE PATH "")
set(SQLite3_LIBRARY /usr/lib/i386-linux-gnu/libsqlite3.so.0 CACHE FILEPATH "")
