// The records that callers may look into: words in an order that is a contract.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <vector>

namespace test {

// A record of words, some of them pointers, as one letter each: 'i' an int or float, 'p' a pointer. Where pointers take
// two words they stand on multiples of their size, and the record ends on one.
class Record {
 public:
  Record(const void* record, const char* letters) : record_(static_cast<const char*>(record)) {
    size_t widest = 1;
    for (; *letters; ++letters) {
      const size_t size = *letters == 'p' ? sizeof(void*) : sizeof(int);
      bytes_ = (bytes_ + size - 1) / size * size;
      at_.push_back(bytes_);
      bytes_ += size;
      if (size > widest) widest = size;
    }
    bytes_ = (bytes_ + widest - 1) / widest * widest;
  }

  template <class T = int>
  T word(size_t index) const {
    T value;
    memcpy(&value, record_ + at_.at(index), sizeof(value));
    return value;
  }
  template <class T>
  const T* pointer(size_t index) const {
    return word<const T*>(index);
  }
  uintptr_t address(size_t index) const { return word<uintptr_t>(index); }
  size_t bytes() const { return bytes_; }
  // The one that follows, as in an array.
  const void* end() const { return record_ + bytes_; }

 private:
  const char* record_;
  std::vector<size_t> at_;
  size_t bytes_ = 0;
};

// The records that states begin with, and those that they point to.
inline Record morphState(const void* state) {
  return {state, "pppppiiiiiiiiiiiiiii"};
}
inline Record morphShape(const void* shape) {
  return {shape, "iiiiiiiipppp"};
}
inline Record morphAdvState(const void* state) {
  return {state, "pppiiiii"};
}
inline Record morphGrayState(const void* state) {
  return {state, "piiiiii"};
}
inline Record haarStage(const void* stage) {
  return {stage, "iipiiiiiiiii"};
}
inline Record haarClassifier(const void* classifier) {
  return {classifier, "ipiiii"};
}

}  // namespace test
