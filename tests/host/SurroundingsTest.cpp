#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

#include "host/services/FontconfigFinder.h"
#include "tests/support/AtItsEnd.h"

namespace Corvella {
namespace {

TEST(AFontFinder, KnowsTheInstalledFamiliesByTheirWholeName) {
  const auto nothingIsKept = atItsEnd(FcFini);
  const FontconfigFinder fonts;
  EXPECT_TRUE(fonts.hasFamily("DejaVu Sans"));
  EXPECT_FALSE(fonts.hasFamily("DejaVu"));
  EXPECT_FALSE(fonts.hasFamily("No Such Family"));
  EXPECT_FALSE(fonts.hasFamily(""));
}

}  // namespace
}  // namespace Corvella
