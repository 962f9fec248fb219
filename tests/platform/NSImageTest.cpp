#include <gtest/gtest.h>

#include "platform/appkit/NSImage.h"
#include "tests/support/FakeImageDecoder.h"

namespace {

TEST(ImagesByName, AreNullWhereTheBundleHasNoSuchFile) {
  FakeImageDecoder decoder;
  decoder.knowAnythingElseAs(2, 3);
  const NSBundle bundle(CORVELLA_RESOURCES);
  EXPECT_EQ(NSImage::imageNamed("empty_artwork.png", bundle, decoder)->height(), 3);
  EXPECT_EQ(NSImage::imageNamed("missing.png", bundle, decoder), nullptr);
  EXPECT_EQ(NSImage::imageNamed("covers", bundle, decoder), nullptr);  // a folder
}

}  // namespace
