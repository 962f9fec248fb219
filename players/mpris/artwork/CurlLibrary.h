#pragma once

#include <curl/curl.h>

namespace Corvella {

/// The functions of libcurl that a fetch needs.
///
/// The library is not linked but loaded by the first fetch: those behind it, for TLS, Kerberos,
/// LDAP and more, would take longer to load than the whole program, and most tracks bring their
/// artwork along.
struct CurlLibrary {
  CURL* (*easyInit)() = nullptr;
  CURLcode (*easySetopt)(CURL* handle, CURLoption option, ...) = nullptr;
  CURLcode (*easyPerform)(CURL* handle) = nullptr;
  void (*easyCleanup)(CURL* handle) = nullptr;
};

/// The library, loaded and initialised by the first call and kept from then on; null when it is not
/// there. Any thread.
const CurlLibrary* curlLibrary();

}  // namespace Corvella
