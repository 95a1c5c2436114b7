// Fills, copies and element-wise helpers over runs of elements.
#include <string.h>

#include "core/loops.h"
#include "core/services.h"

namespace {

using namespace zeb;

template <class T>
void fill(T value, T* p, int count) {
  const int64_t bytes = static_cast<int64_t>(count) * static_cast<int64_t>(sizeof(T));
  fillRun(p, count, value, streamsRun(bytes));
}

// Wider types are moved as bytes, in pieces whose byte count fits.
template <class T>
void copy(const T* src, T* dst, int count) {
  constexpr int piece = 0x1FFFFFFF;
  while (count > 0) {
    const int n = count < piece ? count : piece;
    memcpy(dst, src, static_cast<size_t>(n) * sizeof(T));
    src += n, dst += n, count -= n;
  }
}

template <class T>
void minEvery(const T* src, T* dst, int count) {
  mapRow([](Vec<T> a, Vec<T> b) ZEB_BODY { return min(a, b); }, dst, count, src, dst);
}
template <class T>
void maxEvery(const T* src, T* dst, int count) {
  mapRow([](Vec<T> a, Vec<T> b) ZEB_BODY { return max(a, b); }, dst, count, src, dst);
}

}  // namespace

void zebsSet_8u(Zeb8u value, Zeb8u* pDst, int count) {
  fill(value, pDst, count);
}
void zebsSet_16s(Zeb16s value, Zeb16s* pDst, int count) {
  fill(value, pDst, count);
}
void zebsSet_32s(Zeb32s value, Zeb32s* pDst, int count) {
  fill(value, pDst, count);
}
void zebsSet_32f(Zeb32f value, Zeb32f* pDst, int count) {
  fill(value, pDst, count);
}
void zebsZero_8u(Zeb8u* pDst, int count) {
  fill(Zeb8u(0), pDst, count);
}
void zebsZero_16s(Zeb16s* pDst, int count) {
  fill(Zeb16s(0), pDst, count);
}
void zebsZero_32s(Zeb32s* pDst, int count) {
  fill(Zeb32s(0), pDst, count);
}
void zebsZero_32f(Zeb32f* pDst, int count) {
  fill(Zeb32f(0), pDst, count);
}

void zebsCopy_8u(const Zeb8u* pSrc, Zeb8u* pDst, int count) {
  copy(pSrc, pDst, count);
}
void zebsCopy_16s(const Zeb16s* pSrc, Zeb16s* pDst, int count) {
  copy(pSrc, pDst, count);
}
void zebsCopy_32f(const Zeb32f* pSrc, Zeb32f* pDst, int count) {
  copy(pSrc, pDst, count);
}

void zebsMinEvery_8u(const Zeb8u* pSrc, Zeb8u* pSrcDst, int count) {
  minEvery(pSrc, pSrcDst, count);
}
void zebsMinEvery_16u(const Zeb16u* pSrc, Zeb16u* pSrcDst, int count) {
  minEvery(pSrc, pSrcDst, count);
}
void zebsMinEvery_32f(const Zeb32f* pSrc, Zeb32f* pSrcDst, int count) {
  minEvery(pSrc, pSrcDst, count);
}
void zebsMinEvery_64f(const Zeb64f* pSrc, Zeb64f* pSrcDst, int count) {
  minEvery(pSrc, pSrcDst, count);
}
void zebsMaxEvery_8u(const Zeb8u* pSrc, Zeb8u* pSrcDst, int count) {
  maxEvery(pSrc, pSrcDst, count);
}
void zebsMaxEvery_16u(const Zeb16u* pSrc, Zeb16u* pSrcDst, int count) {
  maxEvery(pSrc, pSrcDst, count);
}
void zebsMaxEvery_32f(const Zeb32f* pSrc, Zeb32f* pSrcDst, int count) {
  maxEvery(pSrc, pSrcDst, count);
}
void zebsMaxEvery_64f(const Zeb64f* pSrc, Zeb64f* pSrcDst, int count) {
  maxEvery(pSrc, pSrcDst, count);
}

void zebsSqrt_32f(const Zeb32f* pSrc, Zeb32f* pDst, int count) {
  mapRow([](V32f a) ZEB_BODY { return sqrt(a); }, pDst, count, pSrc);
}
