# Warning and floating-point settings shared by every target of the project.
#
# The predicted positions and the point-in-polygon test must come out bit for
# bit as documented, so the compiler may neither fuse multiply-adds
# (-ffp-contract=off) nor drop the double -> float -> double round trips that
# GCC's SLP vectoriser removes when it handles a latitude/longitude pair
# together (-fno-tree-slp-vectorize).
#
# On 32-bit x86 the default arithmetic is the x87 unit, which keeps
# intermediates in 80-bit registers: conversions, projections and crossing
# tests then differ in their last bits (and 1e308 degrees converts to a
# finite number). SSE2 arithmetic rounds every step as written, so the
# library's own build asks for it there; no packager needs to know.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("
#if !defined(__i386__)
#error not 32-bit x86
#endif
int main() { return 0; }" TARVO_TARGET_IS_I386)

add_library(tarvo_build_flags INTERFACE)
target_compile_options(tarvo_build_flags INTERFACE
  -Wall -Wextra -Wshadow
  -ffp-contract=off
  $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>
  $<$<BOOL:${TARVO_WERROR}>:-Werror>)
if(TARVO_TARGET_IS_I386)
  target_compile_options(tarvo_build_flags INTERFACE -msse2 -mfpmath=sse)
endif()

# TARVO_SANITIZE picks the sanitizers. Every target of the build must carry
# the same ones: an executable linking a sanitized shared library needs the
# runtime itself (clang never links it into shared libraries).
string(TOLOWER "${TARVO_SANITIZE}" tarvo_sanitize)
if(tarvo_sanitize STREQUAL "thread")
  set(TARVO_SANITIZE_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(tarvo_sanitize STREQUAL "address" OR
       tarvo_sanitize MATCHES "^(on|yes|true|y|1)$")
  # No float-divide-by-zero: the crossing test divides by zero on purpose for
  # edges that run along a meridian, and relies on the IEEE result.
  set(TARVO_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
elseif(TARVO_SANITIZE)
  message(FATAL_ERROR
    "TARVO_SANITIZE=${TARVO_SANITIZE}: expected OFF, ON, address or thread")
endif()
if(TARVO_SANITIZE_FLAGS)
  target_compile_options(tarvo_build_flags INTERFACE ${TARVO_SANITIZE_FLAGS})
  target_link_options(tarvo_build_flags INTERFACE ${TARVO_SANITIZE_FLAGS})
endif()
