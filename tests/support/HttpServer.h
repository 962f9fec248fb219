#pragma once

#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Process.h"

namespace Corvella {

/// A web server on this machine for tests: it answers each path with bytes that the test chose, so
/// that they may be wrong in any way. Its operations may be called from any thread.
class HttpServer {
 public:
  enum class Then {
    Close,        ///< Ends the connection after the answer.
    RepeatBody,   ///< Sends kilobytes for as long as the client takes them.
    KeepSilence,  ///< Says nothing more until the client hangs up.
  };

  struct Answer {
    std::string bytes;
    Then then = Then::Close;
  };

  /// Starts to serve. Throws std::system_error when there is no port to be had.
  HttpServer();
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  /// Other paths are answered with 404.
  void answer(const std::string& path, Answer answer);

  /// "http://127.0.0.1:PORT" with `path`, which starts with '/', behind.
  std::string url(const std::string& path) const;

  /// The heads of all requests so far.
  std::vector<std::string> requests() const;

 private:
  void serve();
  void converse(int connection);
  Answer answerTo(const std::string& request);

  FileDescriptor listener_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace Corvella
