#include "players/mpris/track/FileUrl.h"

#include "platform/base/Utf8.h"
#include "players/mpris/track/UrlText.h"

namespace Corvella {

namespace {

constexpr std::string_view kHostMark = "//";

/// The part behind the scheme and the host. Empty unless it is an absolute path on this machine.
std::string_view pathOfFileUrl(std::string_view url) {
  url.remove_prefix(std::string_view("file:").size());
  if (url.starts_with(kHostMark)) {
    url.remove_prefix(kHostMark.size());
    const auto host = url.substr(0, url.find('/'));
    // Host names are compared without regard to case, just as `hasScheme` compares schemes.
    if (!host.empty() && !hasScheme(std::string(host) + ':', "localhost")) return {};
    url.remove_prefix(host.size());
  }
  return url.starts_with('/') ? url : std::string_view();
}

void addPath(std::vector<std::filesystem::path>& paths, std::string_view path) {
  // The system reads a path only up to a NUL, so it would open another file.
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
