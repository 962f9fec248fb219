#include "players/mpris/artwork/CurlLibrary.h"

#include <optional>

#include <dlfcn.h>

namespace Corvella {

namespace {

/// Whether the library has the function.
template <typename Function>
bool find(void* library, const char* name, Function*& function) {
  // POSIX allows this conversion for what dlsym returns.
  function = reinterpret_cast<Function*>(::dlsym(library, name));
  return function != nullptr;
}

std::optional<CurlLibrary> load() {
  // The library is never unloaded, because other threads may still fetch while the program ends.
  auto* const library = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
  CurlLibrary curl;
  CURLcode (*globalInit)(long flags) = nullptr;
  const bool complete = library != nullptr && find(library, "curl_global_init", globalInit) &&
                        find(library, "curl_easy_init", curl.easyInit) &&
                        find(library, "curl_easy_setopt", curl.easySetopt) &&
                        find(library, "curl_easy_perform", curl.easyPerform) &&
                        find(library, "curl_easy_cleanup", curl.easyCleanup);
  if (!complete || globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::nullopt;
  return curl;
}

}  // namespace

const CurlLibrary* curlLibrary() {
  static const std::optional<CurlLibrary> library = load();
  return library ? &*library : nullptr;
}

}  // namespace Corvella
