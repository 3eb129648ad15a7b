# Warning and floating-point settings shared by every target of the project.
#
# The predicted positions and the point-in-polygon test must come out bit for
# bit as documented, so the compiler may neither fuse multiply-adds
# (-ffp-contract=off) nor drop the double -> float -> double round trips that
# GCC's SLP vectoriser removes when it handles a latitude/longitude pair
# together (-fno-tree-slp-vectorize).
add_library(tarvo_build_flags INTERFACE)
target_compile_options(tarvo_build_flags INTERFACE
  -Wall -Wextra -Wshadow
  -ffp-contract=off
  $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>
  $<$<BOOL:${TARVO_WERROR}>:-Werror>)

if(TARVO_SANITIZE)
  # No float-divide-by-zero: the crossing test divides by zero on purpose for
  # edges that run along a meridian, and relies on the IEEE result.
  set(TARVO_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  target_compile_options(tarvo_build_flags INTERFACE ${TARVO_SANITIZE_FLAGS})
  target_link_options(tarvo_build_flags INTERFACE ${TARVO_SANITIZE_FLAGS})
endif()
