# Flags of everything that is built here: x86 of either width with SSE2, SSE scalar arithmetic, no contraction.
#
# Old callers of 32 bits keep the stack aligned to 4 bytes only. -mstackrealign is not enough: gcc lets spilled vectors
# stand unaligned in some functions, clang reads neighbouring arguments as an aligned vector.
# -fno-strict-aliasing: scratch and state memory comes as bytes and is carved into typed arrays.
set(ZEBCV_WIDTH 32 CACHE STRING "Word size of what is built: 32 or 64")
set_property(CACHE ZEBCV_WIDTH PROPERTY STRINGS 32 64)
if(ZEBCV_WIDTH EQUAL 32)
  set(ZEBCV_VARIANT q7)
  set(ZEBCV_ARCHITECTURE i386)
  set(ZEBCV_STACK_OPTIONS $<IF:$<CXX_COMPILER_ID:GNU>,-mincoming-stack-boundary=2,-mstack-alignment=4>)
elseif(ZEBCV_WIDTH EQUAL 64)
  set(ZEBCV_VARIANT x7)
  set(ZEBCV_ARCHITECTURE amd64)
  set(ZEBCV_STACK_OPTIONS)
else()
  message(FATAL_ERROR "ZEBCV_WIDTH is ${ZEBCV_WIDTH}, not 32 or 64")
endif()
add_compile_options(-m${ZEBCV_WIDTH} -msse2 -mfpmath=sse -ffp-contract=off)
add_link_options(-m${ZEBCV_WIDTH})
set(ZEBCV_WARNINGS -Wall -Wextra -Werror)
# What runs before or while the processor is looked at is built for any processor, the kernels for AVX2 and FMA.
set(ZEBCV_FRAME_OPTIONS
    ${ZEBCV_WARNINGS} -mtune=haswell -fno-math-errno -fno-strict-aliasing -fvisibility=hidden -fPIC
    ${ZEBCV_STACK_OPTIONS}
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-threadsafe-statics;-fvisibility-inlines-hidden>)
set(ZEBCV_VECTORS -mavx2 -mfma)
set(ZEBCV_LIBRARY_OPTIONS ${ZEBCV_FRAME_OPTIONS} ${ZEBCV_VECTORS})
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Callers' pixels need no element alignment, so a loop must never be peeled up to a vector boundary.
  # Kernels name their vectors; of what is left the compiler would make two or three versions for little gain.
  list(APPEND ZEBCV_LIBRARY_OPTIONS --param=vect-max-peeling-for-alignment=0 -fno-tree-vectorize)
endif()
if(ZEBCV_SANITIZE STREQUAL thread)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(ZEBCV_SANITIZE)
  # Pixels may stand at any address by contract, hence no alignment check.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=alignment -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
