#include <filesystem>
#include <stdexcept>
#include <string>

#include <fontconfig/fontconfig.h>
#include <gmock/gmock.h>

#include "host/FontconfigFinder.h"
#include "host/PlayerModules.h"
#include "host/ProgramFolders.h"
#include "host/ResidentMemory.h"
#include "tests/support/AtItsEnd.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {
namespace {

using testing::HasSubstr;

TEST(AFontFinder, KnowsTheInstalledFamiliesByTheirWholeName) {
  const auto nothingIsKept = atItsEnd(FcFini);
  const FontconfigFinder fonts;
  EXPECT_TRUE(fonts.hasFamily("DejaVu Sans"));
  EXPECT_FALSE(fonts.hasFamily("DejaVu"));
  EXPECT_FALSE(fonts.hasFamily("No Such Family"));
  EXPECT_FALSE(fonts.hasFamily(""));
}

std::string reasonAgainst(const std::filesystem::path& module) {
  try {
    loadPlayerModule(module);
    return "none";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(AModuleOfPlayers, ThatCannotBeLoadedIsNamedWithTheReason) {
  const TemporaryFolder folder;
  const auto missing = folder.path() / "missing.so";
  EXPECT_THAT(reasonAgainst(missing), HasSubstr(missing.string()));
  const auto broken = folder.write("broken.so", "not a library");
  EXPECT_THAT(reasonAgainst(broken), HasSubstr(broken.string()));
  EXPECT_THAT(reasonAgainst("libm.so.6"), HasSubstr(PlayerModule::kEntryName));
  EXPECT_EQ(reasonAgainst(ProgramFolders::modules() / "corvella-mpris.so"), "none");
}

TEST(ReleasedMemory, ComesBackWithWhatItHeld) {
  const std::string text(100'000, 'x');
  ResidentMemory::release();
  EXPECT_EQ(text, std::string(100'000, 'x'));
  EXPECT_THAT(reasonAgainst("/missing"), HasSubstr("/missing"));
}

}  // namespace
}  // namespace Corvella
