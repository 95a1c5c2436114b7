# Flags of everything that is built here: 32-bit x86, AVX2 and FMA, SSE scalar arithmetic, no contraction.
#
# -mstackrealign: old callers keep the stack aligned to 4 bytes only.
# -fno-strict-aliasing: scratch and state memory comes as bytes and is carved into typed arrays.
add_compile_options(-m32 -mavx2 -mfma -mfpmath=sse -ffp-contract=off)
add_link_options(-m32)
set(ZEBCV_WARNINGS -Wall -Wextra -Werror)
set(ZEBCV_LIBRARY_OPTIONS
    ${ZEBCV_WARNINGS} -mtune=haswell -mstackrealign -fno-math-errno -fno-strict-aliasing -fvisibility=hidden -fPIC
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-threadsafe-statics;-fvisibility-inlines-hidden>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # Callers' pixels need no element alignment, so a loop must never be peeled up to a vector boundary.
  list(APPEND ZEBCV_LIBRARY_OPTIONS --param=vect-max-peeling-for-alignment=0)
endif()
if(ZEBCV_SANITIZE)
  # Pixels may stand at any address by contract, hence no alignment check.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=alignment -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
