#include "fire/HostileValues.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "fire/Bombs.h"

namespace Corvella {

namespace {

using Value = MadePlayer::Value;
using Values = MadePlayer::Values;

constexpr std::size_t kMebibyte = 1U << 20U;

// As much as a message may carry. Under the address sanitizer it is less: libsystemd asks realloc()
// for the size of the whole message before it reads the next 200 KB of it, and the sanitizer's
// realloc() copies everything each time. 64 MiB would take the program half a minute, and whatever
// comes behind them would wait for so long.
#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kHuge = 4 * kMebibyte;
#else
constexpr std::size_t kHuge = 64 * kMebibyte;
#endif

std::string repeated(const std::string& part, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += part;
  return text;
}

/// Metadata inside of metadata, as deep as the bus lets through.
Value nested() {
  Value value = "the innermost";
  for (int i = 0; i < 20; ++i) value = Value(Values{{"xesam:title", value}});
  return value;
}

HostileValues ofTrack(const std::string& what, Values entries) {
  entries.try_emplace("xesam:title", what);
  return {what, {{"Metadata", Value(entries)}, {"PlaybackStatus", "Playing"}}};
}

/// Made only when chosen, as some are large.
using Maker = std::function<HostileValues()>;

const std::vector<Maker>& all() {
  using Doubles = std::numeric_limits<double>;
  using Integers = std::numeric_limits<std::int64_t>;
  static const std::vector<Maker> makers{
      [] {
        return HostileValues{"no number",
                             {{"Volume", Doubles::quiet_NaN()},
                              {"Position", Doubles::quiet_NaN()},
                              {"Rating", Doubles::quiet_NaN()}}};
      },
      [] {
        return HostileValues{"infinite numbers",
                             {{"Volume", Doubles::infinity()},
                              {"Position", -Doubles::infinity()},
                              {"Rating", Doubles::max()}}};
      },
      [] {
        return HostileValues{"the least position",
                             {{"Position", Integers::min()}, {"Volume", -1e308}}};
      },
      [] {
        return HostileValues{"the greatest position",
                             {{"Position", Integers::max()}, {"Volume", 1e308}}};
      },
      [] {
        return HostileValues{"an unsigned position", {{"Position", Value::of("t", UINT64_MAX)}}};
      },
      [] {
        return HostileValues{
            "texts for numbers",
            {{"Position", "1"}, {"Volume", "1"}, {"Rating", "5"}, {"CanPlay", "yes"}}};
      },
      [] {
        return HostileValues{"numbers for texts",
                             {{"PlaybackStatus", INT64_C(1)}, {"Metadata", 2.5}}};
      },
      [] {
        return HostileValues{"no metadata", {{"Metadata", Value(Values())}}};
      },
      [] {
        return HostileValues{"an identity of a megabyte",
                             {{"Identity", repeated("\u202eW", kMebibyte)}}};
      },
      [] {
        return HostileValues{"an identity of markup",
                             {{"Identity", "<img src='/dev/zero'><b>\x01\n"}}};
      },
      [] {
        return HostileValues{"a player that can do nothing",
                             {{"CanControl", Value::of("b", 0)}, {"CanPlay", Value::of("b", 0)}}};
      },
      [] {
        return ofTrack("a negative length", {{"mpris:length", Integers::min()}});
      },
      [] {
        return ofTrack("the greatest length", {{"mpris:length", Integers::max()}});
      },
      [] {
        return ofTrack("a length that is no number", {{"mpris:length", Doubles::quiet_NaN()}});
      },
      [] {
        return ofTrack(
            "wrong types",
            {{"xesam:title", nested()}, {"xesam:artist", INT64_C(7)}, {"mpris:artUrl", 1.0}});
      },
      [] {
        return ofTrack("deep nesting", {{"xesam:comment", nested()}, {"xesam:artist", nested()}});
      },
      [] {
        return ofTrack(
            "control characters",
            {{"xesam:title", "\x01\x1b[31m\a\b\n\r\t\x7f\u0085\u009b"}, {"xesam:album", "\u0000"}});
      },
      [] {
        return ofTrack("bidirectional controls",
                       {{"xesam:title", repeated("\u202e\u2066\u2067\u202d\u061c x", 3000)}});
      },
      [] {
        return ofTrack("piled accents", {{"xesam:title", repeated("\u0301\u0323\u20dd", 4000)}});
      },
      [] {
        return ofTrack("megabytes of title",
                       {{"xesam:title", repeated("W\u05d0\U0001f389", 5 * kMebibyte)}});
      },
      [] {
        return ofTrack("megabytes of lyrics",
                       {{"xesam:asText", repeated("[00:01.00] la\n", 8 * kMebibyte)}});
      },
      [] {
        return ofTrack("megabytes of address",
                       {{"xesam:url", repeated("file:///%41/../", 2 * kMebibyte)}});
      },
      [] {
        return ofTrack("ratings beyond all", {{"xesam:userRating", 1e300}});
      },
      [] {
        return ofTrack("artwork that is no base64",
                       {{"mpris:artUrl", "data:image/png;base64,%%%%"}});
      },
      [] {
        return ofTrack(
            "megabytes of artwork",
            {{"mpris:artUrl", repeated("data:image/png;base64,iVBORw0KGgo", 8 * kMebibyte)}});
      },
  };
  return makers;
}

}  // namespace

void makeHostileFiles(const std::filesystem::path& folder) {
  ::mkfifo((folder / "fifo").c_str(), 0600);
  std::ofstream(folder / "giant.png", std::ios::binary) << giantPng();
  std::ofstream(folder / "scans.jpg", std::ios::binary) << manyScansJpeg();
  std::ofstream(folder / "short.flac", std::ios::binary) << "fLaC" << std::string(1000, '\xff');
  std::filesystem::create_symlink("loop", folder / "loop");
}

HostileValues hostileValues(Dice& dice) {
  return dice.of(all())();
}

HostileValues hostilePlaces(Dice& dice, const HostilePlaces& places) {
  const auto file = [&](const std::string& name) {
    return "file://" + (places.folder / name).string();
  };
  const std::vector<std::string> addresses{file("fifo"),
                                           file("giant.png"),
                                           file("scans.jpg"),
                                           file("short.flac"),
                                           file("loop"),
                                           file(""),
                                           file("missing"),
                                           "file:///dev/zero",
                                           "file:///dev/urandom",
                                           "file:///proc/self/mem",
                                           "file:///dev/stdin",
                                           "file://../../",
                                           "file:",
                                           ":",
                                           "gopher://127.0.0.1/",
                                           "http://",
                                           "http://127.0.0.1:1/",
                                           places.server + "/endless",
                                           places.server + "/silent",
                                           places.server + "/loop",
                                           places.server + "/to-file",
                                           places.server + "/slow",
                                           places.server + "/giant.png",
                                           places.server + "/scans.jpg",
                                           places.server + "/garbage",
                                           places.server + "/cover.png"};
  const auto& artwork = dice.of(addresses);
  const auto& track = dice.of(addresses);
  return ofTrack(artwork + " and " + track, {{"mpris:artUrl", artwork}, {"xesam:url", track}});
}

HostileValues hugeMetadata() {
  return ofTrack("huge metadata", {{"xesam:comment", std::string(kHuge - 4'096, 'x')}});
}

}  // namespace Corvella
