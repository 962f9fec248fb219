#pragma once

#include <atomic>
#include <list>
#include <map>
#include <string>
#include <thread>

#include "platform/base/FileDescriptor.h"

namespace Corvella {

/// A web server on this machine that serves each path in a way of its own: "/endless" never ends,
/// "/silent" never answers, "/slow" sends a byte now and then, "/loop" leads to itself and
/// "/to-file" to a file. It has a thread of its own, and takes no more than a few connections and
/// megabytes at a time.
class WebServer {
 public:
  /// `files` are served under their names. Throws std::system_error.
  explicit WebServer(std::map<std::string, std::string> files);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  /// "http://127.0.0.1:PORT"
  const std::string& address() const { return address_; }
  /// How many requests have come.
  int requests() const { return requests_; }

 private:
  struct Client {
    FileDescriptor socket;
    std::string request{};
    std::string answer{};     ///< What is still to be sent.
    std::size_t repeats = 0;  ///< So many bytes more follow the answer.
    bool isSlow = false;
    bool closes = false;  ///< After the answer.
  };

  void serve();
  void take();
  bool read(Client& client);
  void begin(Client& client);
  static bool write(Client& client);

  const std::map<std::string, std::string> files_;
  const FileDescriptor listener_;
  std::string address_;
  std::list<Client> clients_;
  std::atomic<int> requests_ = 0;
  std::atomic<bool> ending_ = false;
  std::thread thread_;
};

}  // namespace Corvella
