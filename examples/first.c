/* Averages three small frames: the running mean of every pixel. */
#include <stdio.h>

#include "zebcv.h"
#include "zebcv/status.h"

int main(void) {
  const Zeb8u frames[3][2][4] = {
      {{10, 20, 30, 40}, {50, 60, 70, 80}}, {{13, 20, 27, 40}, {53, 60, 67, 80}}, {{10, 23, 30, 37}, {50, 63, 70, 77}}};
  const ZebiSize size = {4, 2};
  Zeb32f mean[2][4] = {{0}};
  int k;
  for (k = 0; k < 3; ++k) { /* steps are in bytes */
    ZebStatus status = zebiAddWeighted_8u32f_C1IR(frames[k][0], 4, mean[0], sizeof mean[0], size, 1.0f / (k + 1));
    if (status != zebStsOk) {
      fprintf(stderr, "%s: %s\n", zebStatusName(status), zebStatusText(status));
      return 1;
    }
  }
  for (k = 0; k < 2; ++k) printf("%6.2f %6.2f %6.2f %6.2f\n", mean[k][0], mean[k][1], mean[k][2], mean[k][3]);
  const ZebLibraryVersion* v = zebcvGetLibVersion();
  printf("%s %d.%d.%d\n", v->Name, v->major, v->minor, v->majorBuild);
  return 0;
}
