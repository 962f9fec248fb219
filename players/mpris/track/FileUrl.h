#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Corvella {

/// The paths that a `file:` address of this machine may mean, the likeliest first: with every valid
/// %XX decoded, then as it stands, since some players encode and some do not. Nothing is cut at '#'
/// or '?'. An absolute path counts as such an address. Empty for any other scheme or host. Any
/// thread.
std::vector<std::filesystem::path> pathsOfFileUrl(std::string_view url);

/// The decoded last component of an address of any scheme, for a track without a title; without the
/// query when it is one of the web. Always UTF-8. Any thread.
std::string baseNameOfUrl(std::string_view url);

}  // namespace Corvella
