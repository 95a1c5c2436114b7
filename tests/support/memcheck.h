// What the memory checker of valgrind is told, where it runs and its header was there to build with.
#pragma once

#include <stddef.h>

#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#else
#define VALGRIND_MAKE_MEM_UNDEFINED(start, bytes) (static_cast<void>(start), static_cast<void>(bytes))
#define VALGRIND_MAKE_MEM_DEFINED(start, bytes) (static_cast<void>(start), static_cast<void>(bytes))
#endif

namespace test {

// The bytes hold nothing that a result may depend on.
inline void holdsNothing(const void* start, size_t bytes) {
  VALGRIND_MAKE_MEM_UNDEFINED(start, bytes);
}
// The bytes may be looked at, whatever they hold.
inline void mayBeLookedAt(const void* start, size_t bytes) {
  VALGRIND_MAKE_MEM_DEFINED(start, bytes);
}

// The same of the rows of an image, some of which a call may leave as they are.
template <class Image>
void mayBeLookedAt(const Image& image) {
  const auto *first = image.pixels(), *end = image.pixels(image.size().width, image.size().height - 1);
  mayBeLookedAt(first, static_cast<size_t>(reinterpret_cast<const char*>(end) - reinterpret_cast<const char*>(first)));
}

}  // namespace test
