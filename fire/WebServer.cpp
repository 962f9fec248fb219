#include "fire/WebServer.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace Corvella {

namespace {

constexpr std::size_t kMostClients = 64;
constexpr std::size_t kEndless = std::size_t{256} << 20U;

std::string head(const std::string& status, const std::string& more = {}) {
  return "HTTP/1.1 " + status + "\r\nConnection: close\r\n" + more + "\r\n";
}

}  // namespace

WebServer::WebServer(std::map<std::string, std::string> files)
    : files_(std::move(files)),
      listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "a web server") {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  socklen_t size = sizeof address;
  const bool listens = ::bind(listener_.number(), any, size) == 0 &&
                       ::listen(listener_.number(), 16) == 0 &&
                       ::getsockname(listener_.number(), any, &size) == 0;
  if (!listens) throw std::system_error(errno, std::generic_category(), "a web server");
  address_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  thread_ = std::thread([this] { serve(); });
}

WebServer::~WebServer() {
  ending_ = true;
  thread_.join();
}

void WebServer::serve() {
  constexpr int kMilliseconds = 20;
  while (!ending_) {
    std::vector<pollfd> files{{listener_.number(), POLLIN, 0}};
    for (const auto& client : clients_) {
      const bool writes = !client.isSlow && (!client.answer.empty() || client.repeats > 0);
      files.push_back(
          {client.socket.number(), static_cast<short>(writes ? POLLIN | POLLOUT : POLLIN), 0});
    }
    ::poll(files.data(), files.size(), kMilliseconds);
    auto file = files.begin() + 1;
    for (auto client = clients_.begin(); client != clients_.end(); ++file) {
      bool stays = (file->revents & (POLLIN | POLLHUP | POLLERR)) == 0 || read(*client);
      stays = stays && ((file->revents & POLLOUT) == 0 && !client->isSlow ? true : write(*client));
      client = stays ? std::next(client) : clients_.erase(client);
    }
    if ((files.front().revents & POLLIN) != 0) take();
  }
}

void WebServer::take() {
  const int socket = ::accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (socket < 0) return;
  clients_.push_back({.socket = FileDescriptor(socket, "a client")});
  if (clients_.size() > kMostClients) clients_.pop_front();
}

/// False when the client has gone.
bool WebServer::read(Client& client) {
  std::string bytes(4'096, '\0');
  const auto count = ::recv(client.socket.number(), bytes.data(), bytes.size(), 0);
  if (count <= 0) return false;
  const bool isNew = client.request.find("\r\n\r\n") == std::string::npos;
  client.request.append(bytes, 0, static_cast<std::size_t>(count));
  if (isNew && client.request.find("\r\n\r\n") != std::string::npos) begin(client);
  return client.request.size() < bytes.size();
}

void WebServer::begin(Client& client) {
  ++requests_;
  const auto start = client.request.find('/');
  const auto path = client.request.substr(start, client.request.find(' ', start) - start);
  const auto file = files_.find(path);
  client.closes = true;
  if (file != files_.end()) {
    client.answer = head("200 OK") + file->second;
  } else if (path == "/endless") {
    client.answer = head("200 OK", "Content-Type: image/png\r\n") + "\x89PNG\r\n\x1a\n";
    client.repeats = kEndless;
  } else if (path == "/slow") {
    client.answer = head("200 OK", "Content-Length: 100000\r\n") + std::string(1'000, 'x');
    client.isSlow = true;
  } else if (path == "/loop") {
    client.answer = head("302 Found", "Location: /loop\r\n");
  } else if (path == "/to-file") {
    client.answer = head("302 Found", "Location: file:///dev/zero\r\n");
  } else if (path == "/garbage") {
    client.answer = std::string("\x16\x03\x01\0HTTP/9.9 -1\r\n\r\n", 20);
  } else {
    client.closes = false;
  }
}

/// False when all has been sent.
bool WebServer::write(Client& client) {
  constexpr std::size_t kBlock = 1U << 16U;
  if (client.answer.empty() && client.repeats > 0) {
    const auto count = std::min(kBlock, client.repeats);
    client.answer.assign(count, '\0');
    client.repeats -= count;
  }
  const auto count =
      client.isSlow ? std::min<std::size_t>(1, client.answer.size()) : client.answer.size();
  const auto sent = ::send(client.socket.number(), client.answer.data(), count, MSG_NOSIGNAL);
  if (sent < 0) return errno == EAGAIN;
  client.answer.erase(0, static_cast<std::size_t>(sent));
  return !client.closes || !client.answer.empty() || client.repeats > 0;
}

}  // namespace Corvella
