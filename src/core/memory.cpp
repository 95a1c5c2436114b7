// Allocation wrappers and the questions to the core support library.
#include "core/services.h"
#include "zebcore.h"

namespace {

template <class T>
T* allocate(int count) {
  if (count <= 0) return nullptr;
  return static_cast<T*>(zebMalloc(static_cast<int>(static_cast<unsigned>(count) * sizeof(T))));
}

}  // namespace

Zeb8u* zebsMalloc_8u(int count) {
  return allocate<Zeb8u>(count);
}
Zeb16u* zebsMalloc_16u(int count) {
  return allocate<Zeb16u>(count);
}
Zeb32s* zebsMalloc_32s(int count) {
  return allocate<Zeb32s>(count);
}
Zeb32f* zebsMalloc_32f(int count) {
  return allocate<Zeb32f>(count);
}
void zebsFree(void* pointer) {
  zebFree(pointer);
}

int owncvGetMaxNumThreads(void) {
  return 1;
}

int owncvGetCacheSize(void) {
  int size = 0;
  zebGetMaxCacheSizeB(&size);
  return size;
}
