// The library as a whole: exports, version, load-time behaviour.
#include <ctype.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include "support/zebcore_double.h"
#include "zebcv.h"

namespace {

TEST(Library, VersionRecord) {
  const ZebLibraryVersion* v = zebcvGetLibVersion();
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v, zebcvGetLibVersion());
  EXPECT_EQ(memcmp(v->targetCpu, ZEBCV_VARIANT "\0", 4), 0);
  EXPECT_STREQ(v->Name, "zebCV AVX2 (" ZEBCV_VARIANT ")");
  char text[64];
  snprintf(text, sizeof(text), "%d.%d.%d (r%d)", v->major, v->minor, v->majorBuild, v->build);
  EXPECT_STREQ(v->Version, text);
  int day = 0, year = 0;
  char month[4] = {};
  ASSERT_EQ(strlen(v->BuildDate), 11u) << v->BuildDate;
  ASSERT_EQ(sscanf(v->BuildDate, "%3s %2d %4d", month, &day, &year), 3) << v->BuildDate;
  EXPECT_NE(strstr("Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec", month), nullptr);
  EXPECT_TRUE(v->BuildDate[4] == ' ' ? day < 10 : day >= 10) << v->BuildDate;
}

// The double was loaded before the library, so the load-time call reached it.
TEST(Library, DetectsTheProcessorOnceAtLoad) {
  EXPECT_EQ(test::zebcore().featureCallsAtLoad, 1);
  EXPECT_TRUE(test::zebcore().featureArgumentsNull);
}

}  // namespace
