#include "filter/border.h"

namespace zeb {

template <int pixelBytes>
void fetchPixels(const BorderedImage& source, int64_t y, const BorderedImage::Columns& c, void* out) {
  source.fetch<pixelBytes>(y, c, static_cast<Zeb8u*>(out));
}
template void fetchPixels<1>(const BorderedImage&, int64_t, const BorderedImage::Columns&, void*);
template void fetchPixels<4>(const BorderedImage&, int64_t, const BorderedImage::Columns&, void*);
template void fetchPixels<12>(const BorderedImage&, int64_t, const BorderedImage::Columns&, void*);

template <class T>
void completeEnds(T* line, const BorderedImage::Columns& c, int channels, const T* pixel) {
  T* const kept = line + c.before * channels;
  T* const end = kept + c.keptCount() * channels;
  const T* const left = pixel ? pixel : kept;
  const T* const right = pixel ? pixel : end - channels;
  for (int k = 0; k < channels; ++k) {
    T* p = line + k;
    for (ptrdiff_t i = 0; i < c.before; ++i, p += channels) *p = left[k];
    p = end + k;
    for (ptrdiff_t i = 0; i < c.after; ++i, p += channels) *p = right[k];
  }
}
template void completeEnds(Zeb16s*, const BorderedImage::Columns&, int, const Zeb16s*);
template void completeEnds(Zeb32f*, const BorderedImage::Columns&, int, const Zeb32f*);

}  // namespace zeb
