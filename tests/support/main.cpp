#include <gtest/gtest.h>

#include "support/random.h"
#include "support/zebcore_double.h"

int main(int argc, char** argv) {
  test::zebcore().featureCallsAtLoad = test::zebcore().featureCalls;
  testing::InitGoogleTest(&argc, argv);
  if (!GTEST_FLAG_GET(list_tests))
    printf("seed %llu (set ZEBCV_TEST_SEED for another)\n", static_cast<unsigned long long>(test::seed()));
  return RUN_ALL_TESTS();
}
