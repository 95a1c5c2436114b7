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

Zeb8u* q7_zebsMalloc_8u(int count) {
  return allocate<Zeb8u>(count);
}
Zeb16u* q7_zebsMalloc_16u(int count) {
  return allocate<Zeb16u>(count);
}
Zeb32s* q7_zebsMalloc_32s(int count) {
  return allocate<Zeb32s>(count);
}
Zeb32f* q7_zebsMalloc_32f(int count) {
  return allocate<Zeb32f>(count);
}
void q7_zebsFree(void* pointer) {
  zebFree(pointer);
}

int q7_owncvGetMaxNumThreads(void) {
  return 1;
}

int q7_owncvGetCacheSize(void) {
  int size = 0;
  zebGetMaxCacheSizeB(&size);
  return size;
}
