// Builds a state, which the library allocates through its support library, and uses it.
#include <iostream>
#include <vector>

#include "zebcv.h"

int main() {
  std::vector<Zeb8u> image{0, 0, 0, 0, 9, 0, 0, 0, 0}, grown(9), square(9, 1);
  ZebiMorphState* state = nullptr;
  ZebStatus status = zebiMorphologyInitAlloc_8u_C1R(3, square.data(), {3, 3}, {1, 1}, &state);
  if (status == zebStsOk)
    status = zebiDilateBorderReplicate_8u_C1R(image.data(), 3, grown.data(), 3, {3, 3}, zebBorderRepl, state);
  if (state) zebiMorphologyFree(state);
  for (int v : grown) std::cout << v << ' ';
  std::cout << zebcvGetLibVersion()->Name << '\n';
  return status == zebStsOk && grown == std::vector<Zeb8u>(9, 9) ? 0 : 1;
}
