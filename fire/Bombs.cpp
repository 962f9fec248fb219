#include "fire/Bombs.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <png.h>

namespace Corvella {

namespace {

using namespace std::string_view_literals;

void append(png_structp png, png_bytep bytes, png_size_t count) {
  auto& file = *static_cast<std::string*>(png_get_io_ptr(png));
  file.append(reinterpret_cast<const char*>(bytes), count);
}

}  // namespace

std::string giantPng() {
  constexpr std::uint32_t kSide = 30'000;
  std::string file;
  const std::vector<std::uint8_t> row(kSide / 8 + 1);
  auto* png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  auto* info = png_create_info_struct(png);
  if (info == nullptr) throw std::runtime_error("no memory for a picture");
  png_set_write_fn(png, &file, append, nullptr);
  png_set_IHDR(png, info, kSide, kSide, 1, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_filter(png, 0, PNG_FILTER_NONE);
  png_write_info(png, info);
  for (std::uint32_t i = 0; i < kSide; ++i) png_write_row(png, row.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

std::string manyScansJpeg() {
  constexpr int kScans = 3'000;
  std::string file(
      "\xFF\xD8"
      "\xFF\xDB\x00\x43\x00"sv);
  file.append(64, '\x01');  // The table of steps.
  file +=
      // A progressive picture of 4000 × 4000 pixels, in grey.
      "\xFF\xC2\x00\x0B\x08\x0F\xA0\x0F\xA0\x01\x01\x11\x00"
      // Two tables of codes that know one code each, of one bit.
      "\xFF\xC4\x00\x14\x00\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
      "\xFF\xC4\x00\x14\x10\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00"
      // The first scan, of the average of each block.
      "\xFF\xDA\x00\x08\x01\x01\x00\x00\x00\x00"sv;
  for (int i = 0; i < kScans; ++i) {
    // Each of the others tells of all details, with no data at all.
    file += "\xFF\xDA\x00\x08\x01\x01\x00\x01\x3F\x00"sv;
  }
  return file + "\xFF\xD9";
}

}  // namespace Corvella
