// Calling a function with a stack pointer that is aligned to 4 bytes only, as old callers do.
#pragma once

#include <stdint.h>
#include <string.h>

#include <vector>

namespace test {

// Calls function with the argument words on a stack that stands shift bytes (0, 4, 8 or 12) past a multiple of 16.
int callOnStack(const void* function, const uint32_t* words, int count, int shift);

// The same for typed arguments; each takes a whole number of 32-bit words.
template <class... A, class... V>
int callMisaligned(int shift, int (*function)(A...), V... values) {
  std::vector<uint32_t> words;
  const auto push = [&words](const auto& value) {
    static_assert(sizeof(value) % 4 == 0, "arguments are whole words");
    const size_t at = words.size();
    words.resize(at + sizeof(value) / 4);
    memcpy(&words[at], &value, sizeof(value));
  };
  (push(static_cast<A>(values)), ...);
  return callOnStack(reinterpret_cast<const void*>(function), words.data(), static_cast<int>(words.size()), shift);
}

}  // namespace test
