#include "players/mpris/artwork/HttpFetcher.h"

#include <exception>
#include <memory>
#include <span>

#include "players/mpris/artwork/CurlLibrary.h"

namespace Corvella {

namespace {

using Handle = std::unique_ptr<CURL, decltype(CurlLibrary::easyCleanup)>;

struct Body {
  std::size_t limit;
  std::vector<std::byte> bytes;
};

/// libcurl's write function: taking less than it was given ends the fetch.
std::size_t takeBytes(char* data, std::size_t /*one*/, std::size_t count, void* target) {
  auto& body = *static_cast<Body*>(target);
  if (count > body.limit - body.bytes.size()) return 0;
  try {
    const auto given = std::as_bytes(std::span(data, count));
    body.bytes.insert(body.bytes.end(), given.begin(), given.end());
  } catch (const std::exception&) {
    return 0;
  }
  return count;
}

/// Whether libcurl knows all the options that keep a fetch harmless.
bool setLimits(const CurlLibrary& curl, CURL* handle, const HttpLimits& limits) {
  const auto set = [&](CURLoption option, auto value) {
    return curl.easySetopt(handle, option, value) == CURLE_OK;
  };
  const auto time = static_cast<long>(limits.time.count());
  return set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_PROTOCOLS_STR, "http,https") &&
         set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https") && set(CURLOPT_FOLLOWLOCATION, 1L) &&
         set(CURLOPT_MAXREDIRS, limits.redirects) && set(CURLOPT_TIMEOUT_MS, time) &&
         set(CURLOPT_CONNECTTIMEOUT_MS, time) &&
         // Without this, a name server that does not answer holds the fetch up beyond its time.
         set(CURLOPT_QUICK_EXIT, 1L) &&
         set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits.bytes)) &&
         set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L) && set(CURLOPT_PROXYAUTH, CURLAUTH_NONE);
}

bool setRequest(const CurlLibrary& curl, CURL* handle, const std::string& url, Body& body) {
  const auto set = [&](CURLoption option, auto value) {
    return curl.easySetopt(handle, option, value) == CURLE_OK;
  };
  return set(CURLOPT_URL, url.c_str()) && set(CURLOPT_USERAGENT, "Corvella") &&
         set(CURLOPT_ACCEPT_ENCODING, "") && set(CURLOPT_FAILONERROR, 1L) &&
         set(CURLOPT_WRITEFUNCTION, &takeBytes) && set(CURLOPT_WRITEDATA, &body);
}

}  // namespace

std::optional<std::vector<std::byte>> HttpFetcher::fetch(const std::string& url) const {
  const auto* const curl = curlLibrary();
  if (curl == nullptr || url.find('\0') != std::string::npos) return std::nullopt;
  const Handle handle(curl->easyInit(), curl->easyCleanup);
  Body body{.limit = limits_.bytes, .bytes = {}};
  if (!handle || !setLimits(*curl, handle.get(), limits_) ||
      !setRequest(*curl, handle.get(), url, body)) {
    return std::nullopt;
  }
  if (curl->easyPerform(handle.get()) != CURLE_OK) return std::nullopt;
  return std::move(body.bytes);
}

}  // namespace Corvella
