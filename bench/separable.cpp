// Separable filters, driven as an application drives them: a rolling set of rows between the row and the column filter.
// Integer rows keep all bits of their sums; the column filter divides once.
#include "reference/filter.h"

#include <algorithm>
#include <array>
#include <memory>

#include "bench.h"

namespace {

using namespace bench;

// The two halves of a filter of one type; only the second one divides.
template <class S, class Row, class D, class K>
struct Separable {
  std::vector<K> kernel;
  int divisor;
  ZebStatus (*rowSize)(ZebiSize, int, int*);
  ZebStatus (*columnSize)(ZebiSize, int, int*);
  std::function<ZebStatus(const S*, int, Row**, ZebiSize, const K*, int, Zeb8u*)> rows;
  std::function<ZebStatus(const Row**, D*, int, ZebiSize, const K*, int, Zeb8u*)> columns;
};

constexpr int strip = 8;  // rows that are filtered between two turns of the ring

// The destination's border rows come from the replicated first and last source row.
template <class S, class Row, class D, class K>
class Driver {
 public:
  Driver(const Separable<S, Row, D, K>& filter, ZebiSize size)
      : filter_(filter), size_(size), taps_(static_cast<int>(filter.kernel.size())) {
    int rowBytes = 0, columnBytes = 0;
    filter_.rowSize({size.width, strip}, taps_, &rowBytes);
    filter_.columnSize({size.width, strip}, taps_, &columnBytes);
    scratch_.resize(std::max(rowBytes, columnBytes));
    stride_ = (size.width + 63) / 64 * 64 + 32;  // rows a power of two apart would share their cache sets
    ring_.resize(static_cast<size_t>(stride_) * (strip + taps_ - 1));
    pointers_.resize(strip + taps_ - 1);
    for (size_t i = 0; i < pointers_.size(); ++i) pointers_[i] = ring_.data() + i * stride_;
  }

  ZebStatus operator()(const Image<S>& src, Image<D>& dst) {
    const int above = (taps_ - 1) / 2;
    ZebStatus status = zebStsOk;
    int filled = 0, next = -above;  // rows in the ring; the source row that comes next
    for (int y = 0; y < size_.height;) {
      const int lines = std::min(strip, size_.height - y);
      while (filled < lines + taps_ - 1) {
        int count = lines + taps_ - 1 - filled;
        if (next < 0 || next >= size_.height) {
          count = 1;
        } else {
          count = std::min(count, size_.height - next);
        }
        const int row = std::clamp(next, 0, size_.height - 1);
        status |= filter_.rows(src.row(row), src.step(), pointers_.data() + filled, {size_.width, count},
                               filter_.kernel.data(), taps_, scratch_.data());
        filled += count;
        next += count;
      }
      status |= filter_.columns(const_cast<const Row**>(pointers_.data()), dst.row(y), dst.step(), {size_.width, lines},
                                filter_.kernel.data(), taps_, scratch_.data());
      std::rotate(pointers_.begin(), pointers_.begin() + lines, pointers_.end());
      filled -= lines;
      y += lines;
    }
    return status;
  }

 private:
  Separable<S, Row, D, K> filter_;
  ZebiSize size_;
  int taps_;
  int stride_;
  Pixels<Row> ring_;
  std::vector<Row*> pointers_;
  std::vector<Zeb8u> scratch_;
};

template <class S, class Row, class D, class K>
Work separable(const Scene& scene, const Separable<S, Row, D, K>& filter) {
  struct State {
    Image<S> src;
    Image<D> dst;
    Driver<S, Row, D, K> driver;
  };
  auto state = std::make_shared<State>(State{scene.imageOf<S>(scene.photo), scene.image<D>(), {filter, scene.size}});
  Work work;
  work.bytes = {1.0 * sizeof(S), 1.0 * sizeof(D)};
  work.run = [=] { return state->driver(state->src, state->dst); };
  work.check = [=, size = scene.size]() -> std::optional<std::string> {
    const int taps = static_cast<int>(filter.kernel.size()), above = (taps - 1) / 2;
    ref::Plane<S> bordered(size.width, size.height + taps - 1);
    for (int y = 0; y < bordered.height; ++y)
      std::copy_n(state->src.row(std::clamp(y - above, 0, size.height - 1)), size.width,
                  bordered.data.begin() + static_cast<ptrdiff_t>(y) * size.width);
    const auto rows = ref::filterRows<Row, S, K>(bordered, 0, size.width, filter.kernel, above, zebBorderRepl, {}, 1);
    const auto wanted = ref::filterColumns<D, Row, K>(rows, filter.kernel, filter.divisor);
    if (auto bad = failure(work.run())) return bad;
    return firstDifference(Pixels<D>(wanted.data.begin(), wanted.data.end()), state->dst.compact(), size.width);
  };
  return work;
}

Work bytes5(const Scene& scene) {
  return separable<Zeb8u, Zeb16s, Zeb8u, Zeb16s>(
      scene,
      {{1, 4, 6, 4, 1},
       256,
       zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R,
       zebiFilterColumnPipelineGetBufferSize_16s8u_C1R,
       [](const Zeb8u* src, int step, Zeb16s** dst, ZebiSize size, const Zeb16s* kernel, int taps, Zeb8u* buffer) {
         return zebiFilterRowBorderPipeline_8u16s_C1R(src, step, dst, size, kernel, taps, (taps - 1) / 2, zebBorderRepl,
                                                      0, 1, buffer);
       },
       [](const Zeb16s** src, Zeb8u* dst, int step, ZebiSize size, const Zeb16s* kernel, int taps, Zeb8u* buffer) {
         return zebiFilterColumnPipeline_16s8u_C1R(src, dst, step, size, kernel, taps, 256, buffer);
       }});
}

Work floats(const Scene& scene, std::vector<Zeb32f> kernel) {
  return separable<Zeb32f, Zeb32f, Zeb32f, Zeb32f>(
      scene,
      {std::move(kernel), 1, zebiFilterRowBorderPipelineGetBufferSize_32f_C1R,
       zebiFilterColumnPipelineGetBufferSize_32f_C1R,
       [](const Zeb32f* src, int step, Zeb32f** dst, ZebiSize size, const Zeb32f* kernel, int taps, Zeb8u* buffer) {
         return zebiFilterRowBorderPipeline_32f_C1R(src, step, dst, size, kernel, taps, (taps - 1) / 2, zebBorderRepl,
                                                    0, buffer);
       },
       [](const Zeb32f** src, Zeb32f* dst, int step, ZebiSize size, const Zeb32f* kernel, int taps, Zeb8u* buffer) {
         return zebiFilterColumnPipeline_32f_C1R(src, dst, step, size, kernel, taps, buffer);
       }});
}

const Family family(30, "Separable filters",
                    {
                        {"row 8u16s + column 16s8u, 5 taps", timesMemcpy(8), bytes5},
                        {"row + column 32f, 5 taps", timesMemcpy(12),
                         [](const Scene& scene) {
                           return floats(scene, {0.06f, 0.25f, 0.38f, 0.25f, 0.06f});
                         }},
                        {"row + column 32f, 7 taps", timesMemcpy(15),
                         [](const Scene& scene) {
                           return floats(scene, {0.03f, 0.11f, 0.22f, 0.28f, 0.22f, 0.11f, 0.03f});
                         }},
                    });

}  // namespace
