// Structure tensors of floats, and what all of them share.
#include "core/loops.h"
#include "feature/structure_tensor.h"

namespace zeb {
namespace {

constexpr int room = V32f::lanes;  // elements behind a row of sums
constexpr int mostRows = 255;

int64_t stride(int64_t n) {
  return (n + 31) / 16 * 16;
}

// Products of the rows of a window, summed down the columns in order.
void sumColumns(const Zeb32f* const* dx, const Zeb32f* const* dy, int rows, int n, Zeb32f* const* sums) {
  const auto column = [=](int x, auto part, auto vectors) ZEB_BODY {
    constexpr int count = vectors;
    V32f xx[count], xy[count], yy[count];
#pragma GCC unroll 2
    for (int k = 0; k < count; ++k) {
      const V32f p = part.from(dx[0] + x + 8 * k), q = part.from(dy[0] + x + 8 * k);
      xx[k] = p * p, xy[k] = p * q, yy[k] = q * q;
    }
    for (int i = 1; i < rows; ++i) {
#pragma GCC unroll 2
      for (int k = 0; k < count; ++k) {
        const V32f p = part.from(dx[i] + x + 8 * k), q = part.from(dy[i] + x + 8 * k);
        xx[k] = fma(p, p, xx[k]), xy[k] = fma(p, q, xy[k]), yy[k] = fma(q, q, yy[k]);
      }
    }
#pragma GCC unroll 2
    for (int k = 0; k < count; ++k) {
      part.to(sums[0] + x + 8 * k, xx[k]);
      part.to(sums[1] + x + 8 * k, xy[k]);
      part.to(sums[2] + x + 8 * k, yy[k]);
    }
  };
  int x = 0;
  for (; x <= n - 16; x += 16) column(x, WholeVector{}, std::integral_constant<int, 2>());
  forVectors<8>(x, n, [=](int at, auto part) ZEB_BODY { column(at, part, std::integral_constant<int, 1>()); });
}

}  // namespace

Zeb32f TensorForm::scale() const {
  const double ramp = op == Operator::sobel3 ? 8 : op == Operator::sobel5 ? 128 : 32;
  return static_cast<Zeb32f>(1 / (ramp * ramp * window * window));
}

int64_t TensorRows<Zeb32f>::scratchBytes(TensorForm form, int width) {
  const int64_t n = form.extended(width);
  return DerivativeRows<Zeb32f>::scratchBytes(form.op, static_cast<int>(n < INT32_MAX ? n : INT32_MAX)) +
         2 * RowRing<Zeb32f>::bytes(form.window, stride(n)) + 3 * (n + room) * static_cast<int64_t>(sizeof(Zeb32f)) +
         6 * 32;
}

TensorRows<Zeb32f>::TensorRows(TensorForm form, const BorderedImage& source, Scratch& scratch)
    : form_(form),
      scale_(form.scale()),
      columns_(static_cast<int>(form.extended(source.size().width))),
      derivatives_(form.op, source, scratch, form.margins()),
      dx_(scratch, form.window, stride(columns_), 32),
      dy_(scratch, form.window, stride(columns_), 32),
      entered_(-form.before()) {
  for (Zeb32f*& sums : sums_) {
    sums = scratch.take<Zeb32f>(int64_t{columns_} + room);
    store(sums + columns_, splat(0.0f));
  }
}

void TensorRows<Zeb32f>::next() {
  ++y_;
  for (; entered_ <= y_ + form_.after(); ++entered_) derivatives_.form(entered_, dx_.enter(), dy_.enter());
  const Zeb32f *dx[mostRows], *dy[mostRows];
  for (int i = 0; i < form_.window; ++i) dx[i] = dx_.back(form_.window - 1 - i), dy[i] = dy_.back(form_.window - 1 - i);
  sumColumns(dx, dy, form_.window, columns_, sums_);
  x_ = 0;
}

void TensorRows<Zeb32f>::take(int n, TensorBlock& block) {
  Zeb32f* const out[3] = {block.a, block.b, block.c};
  const V32f scale = splat(scale_);
  for (int k = 0; k < 3; ++k) {
    const Zeb32f* const p = sums_[k] + x_;
    for (int x = 0; x < n; x += 8) {
      V32f sum = load(p + x);
      for (int i = 1; i < form_.window; ++i) sum = sum + load(p + x + i);
      store(out[k] + x, sum * scale);
    }
  }
  x_ += n;
}

}  // namespace zeb
