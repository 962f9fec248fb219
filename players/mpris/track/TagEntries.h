#pragma once

#include <tbytevector.h>

namespace Corvella {

/// How many entries a tag may have, or an entry of it parts. TagLib makes an object of each, which
/// takes up to 400 bytes for one byte of the file.
inline constexpr int kMostEntries = 10'000;

// Whether the tag with that content has so many entries that TagLib must not read it. Each function
// steps from entry to entry as TagLib does. Any thread.

/// An APE tag without its footer. Its entries may be lists with NUL between their parts.
bool hasTooManyApeItems(const TagLib::ByteVector& content);

/// The comments of FLAC, Vorbis and Opus, from `start` on.
bool hasTooManyXiphFields(const TagLib::ByteVector& content, unsigned start = 0);

/// The box of an entry of MP4, which holds further ones with its values.
bool hasTooManyMp4Values(const TagLib::ByteVector& content);

/// The list of type INFO in a WAV file.
bool hasTooManyInfoChunks(const TagLib::ByteVector& content);

}  // namespace Corvella
