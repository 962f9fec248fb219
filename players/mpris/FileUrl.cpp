#include "players/mpris/FileUrl.h"

#include "players/mpris/UrlText.h"
#include "players/mpris/Utf8.h"

namespace Corvella {

namespace {

constexpr std::string_view hostMark = "//";

/// What follows the scheme and the host; empty when that is not an absolute path of this machine.
std::string_view pathOfFileUrl(std::string_view url) {
  url.remove_prefix(std::string_view("file:").size());
  if (url.starts_with(hostMark)) {
    url.remove_prefix(hostMark.size());
    const auto host = url.substr(0, url.find('/'));
    // The host with a colon put behind it reads like a scheme, which knows no case either.
    if (!host.empty() && !hasScheme(std::string(host) + ':', "localhost")) return {};
    url.remove_prefix(host.size());
  }
  return url.starts_with('/') ? url : std::string_view();
}

void addPath(std::vector<std::filesystem::path>& paths, std::string_view path) {
  // The system would read such a path only as far as the NUL, and open another file.
  if (path.empty() || path.find('\0') != std::string_view::npos) return;
  paths.emplace_back(path);
}

std::string_view withoutScheme(std::string_view url) {
  const auto slash = url.find(":/");
  return slash == std::string_view::npos ? url : url.substr(slash + 1);
}

std::string_view withoutQuery(std::string_view url) {
  const bool hasQuery = hasScheme(url, "http") || hasScheme(url, "https");
  return hasQuery ? url.substr(0, url.find_first_of("?#")) : url;
}

}  // namespace

std::vector<std::filesystem::path> pathsOfFileUrl(std::string_view url) {
  std::vector<std::filesystem::path> paths;
  if (url.starts_with('/')) {
    addPath(paths, url);
  } else if (hasScheme(url, "file")) {
    const auto raw = pathOfFileUrl(url);
    const auto decoded = percentDecoded(raw);
    addPath(paths, decoded);
    if (raw != decoded) addPath(paths, raw);
  }
  return paths;
}

std::string baseNameOfUrl(std::string_view url) {
  auto path = withoutScheme(withoutQuery(url));
  path = path.substr(0, path.find_last_not_of('/') + 1);
  return repairedUtf8(percentDecoded(path.substr(path.rfind('/') + 1)));
}

}  // namespace Corvella
