#include "filter/float_runs.h"

#include "filter/separable.h"

namespace zeb {

template <int channels>
void correlateRow(const Zeb32f* first, const Zeb32f* kernel, int count, Zeb32f* dst, int n) {
  withTaps<3, 5, 7>(count, [&](auto taps) {
    filterRunFloat<decltype(taps)::value, false>(Shifted<Zeb32f, channels>{first}, kernel, count, dst, n);
  });
}
template void correlateRow<1>(const Zeb32f*, const Zeb32f*, int, Zeb32f*, int);
template void correlateRow<3>(const Zeb32f*, const Zeb32f*, int, Zeb32f*, int);

void correlateColumns(const Zeb32f* const* rows, const Zeb32f* kernel, int count, Zeb32f* dst, int n) {
  withTaps<3, 5, 7>(count, [&](auto taps) {
    constexpr int known = decltype(taps)::value;
    filterRunFloat<known, known == 3>(Stacked<Zeb32f, known>(rows), kernel, count, dst, n);
  });
}

}  // namespace zeb
