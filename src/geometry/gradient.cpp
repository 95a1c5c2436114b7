// Gradient vectors: derivatives along x and y, magnitude and angle, those of them that are asked for, in one pass.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "filter/derivative.h"
#include "geometry/gradient_rows.h"

namespace {

using namespace zeb;

// The derivatives of a row in all channels where there are three, and those of the pixels.
template <class T>
int64_t bufferBytes(Operator op, int width, int channels) {
  const int64_t row = (int64_t{width} * (sizeof(T) == 1 ? 2 : 4) + 32) * 2;
  if constexpr (sizeof(T) == 1) {
    return DerivativeRows<T>::scratchBytes(op, width, channels) + row + (channels > 1 ? channels * row : 0);
  } else {
    return DerivativeRows<T>::scratchBytes(op, width) + row;
  }
}

template <class D>
struct Outputs {
  Optional<D, 1> gx, gy, magnitude;
  Optional<Zeb32f, 1> angle;

  bool any() const { return gx || gy || magnitude || angle; }
  bool beyondDerivatives() const { return magnitude || angle; }
};

struct Kind {
  Operator op;
  ZebNormType norm;
};

template <int channels, class T, class D>
void formVectors(const BorderedImage& source, const Outputs<D>& out, Kind kind, Zeb8u* pBuffer) {
  const ZebiSize size = source.size();
  Scratch scratch(pBuffer, bufferBytes<T>(kind.op, size.width, channels));
  constexpr bool colour = channels > 1;
  const bool wantX = out.gx || out.beyondDerivatives() || colour, wantY = out.gy || out.beyondDerivatives() || colour;
  DerivativeRows<T> derivatives(kind.op, source, scratch, Margins{}, Axes{wantX, wantY});
  D *const lineX = scratch.take<D>(size.width), *const lineY = scratch.take<D>(size.width);
  [[maybe_unused]] D *x3 = nullptr, *y3 = nullptr;
  if constexpr (colour) {
    x3 = scratch.take<D>(int64_t{size.width} * channels);
    y3 = scratch.take<D>(int64_t{size.width} * channels);
  }
  for (int y = 0; y < size.height; ++y) {
    D *const gx = out.gx ? out.gx.row(y) : lineX, *const gy = out.gy ? out.gy.row(y) : lineY;
    if constexpr (colour) {
      derivatives.form(y, x3, y3);
      strongestRow(kind.norm, x3, y3, size.width, gx, gy);
    } else {
      derivatives.form(y, wantX ? gx : nullptr, wantY ? gy : nullptr);
    }
    if (out.magnitude) magnitudeRow(kind.norm, gx, gy, size.width, out.magnitude.row(y));
    if (out.angle) angleRow(gx, gy, size.width, out.angle.row(y));
  }
}

template <int channels, class T, class D>
ZebStatus vectors(const T* pSrc, int srcStep, const Outputs<D>& out, ZebiSize roi, bool sobel, Kind kind, int mask,
                  ZebiBorderType border, const T* value, Zeb8u* pBuffer) {
  const bool valued = borderBase(border) != zebBorderConst || value != nullptr;
  if (auto bad = firstFailure(
          require(out.any() && valued, zebStsErrNullPointer),
          checked(roi, image<channels>(pSrc, srcStep), out.gx, out.gy, out.magnitude, out.angle, also(pBuffer)),
          isMaskSize(mask), require(sobel || mask == zebMskSize3x3, zebStsErrMaskSize),
          require(kind.norm == zebNormInf || kind.norm == zebNormL1 || kind.norm == zebNormL2, zebStsErrNorm),
          takesBorder(withoutSides(border))))
    return bad;
  if (sobel) kind.op = sobelOf(mask);
  if (bufferBytes<T>(kind.op, roi.width, channels) > INT32_MAX) return zebStsErrOverflow;
  formVectors<channels, T>(BorderedImage(pSrc, srcStep, roi, channels * static_cast<int>(sizeof(T)), border, value),
                           out, kind, pBuffer);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiGradientVectorGetBufferSize)
(ZebiSize roiSize, int maskSize, ZebDataType dataType, int numChannels, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize), isMaskSize(maskSize),
                              require(dataType == zeb8u || dataType == zeb32f, zebStsErrDataType),
                              require(numChannels == 1 || numChannels == 3, zebStsErrNumChannels),
                              require(numChannels == 1 || dataType == zeb8u, zebStsErrChannelCount)))
    return bad;
  const Operator op = sobelOf(maskSize);
  return reportSize(dataType == zeb8u ? bufferBytes<Zeb8u>(op, roiSize.width, numChannels)
                                      : bufferBytes<Zeb32f>(op, roiSize.width, 1),
                    pBufferSize);
}

#define VECTOR(name, channels, T, D, Value, value, sobel, op)                                                       \
  ZEB_ENTRY(zebiGradientVector##name)                                                                               \
  (const T* pSrc, int srcStep, D* pGx, int gxStep, D* pGy, int gyStep, D* pMag, int magStep, Zeb32f* pAngle,        \
   int angleStep, ZebiSize roiSize, int maskSize, ZebNormType norm, ZebiBorderType borderType, Value,               \
   Zeb8u* pBuffer) {                                                                                                \
    const Outputs<D> out = {                                                                                        \
        {image(pGx, gxStep)}, {image(pGy, gyStep)}, {image(pMag, magStep)}, {image(pAngle, angleStep)}};            \
    return vectors<channels>(pSrc, srcStep, out, roiSize, sobel, {op, norm}, maskSize, borderType, value, pBuffer); \
  }
#define VECTOR_OF(stem, sobel, op)                                                                 \
  VECTOR(stem##_8u16s_C1R, 1, Zeb8u, Zeb16s, Zeb8u borderValue, &borderValue, sobel, Operator::op) \
  VECTOR(stem##_32f_C1R, 1, Zeb32f, Zeb32f, Zeb32f borderValue, &borderValue, sobel, Operator::op)
#define VECTOR_OF_COLOURS(stem, sobel, op) \
  VECTOR(stem##_8u16s_C3C1R, 3, Zeb8u, Zeb16s, const Zeb8u* pBorderValue, pBorderValue, sobel, Operator::op)

VECTOR_OF(Sobel, true, sobel3)
VECTOR_OF(Scharr, false, scharr)
VECTOR_OF(Prewitt, false, prewitt)
VECTOR_OF_COLOURS(Sobel, true, sobel3)
VECTOR_OF_COLOURS(Scharr, false, scharr)
