// tcp_floor: the network's floor. A single-threaded epoll server that answers every HTTP request with one
// fixed SOAP answer, whatever it asks: what a round trip costs with no UPnP stack at all. It keeps a
// connection alive unless the request says "Connection: close".
//   tcp_floor --address ADDRESS --port PORT
// Prints "ready: http://ADDRESS:PORT/control" once it listens.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

namespace {

constexpr char kBody[] =
    "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>"
    "<u:GetTransportInfoResponse xmlns:u=\"urn:schemas-upnp-org:service:AVTransport:1\">"
    "<CurrentTransportState>STOPPED</CurrentTransportState><CurrentTransportStatus>OK</"
    "CurrentTransportStatus>"
    "<CurrentSpeed>1</CurrentSpeed></u:GetTransportInfoResponse></s:Body></s:Envelope>";

std::string Reply(bool closes) {
  return std::string("HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=\"utf-8\"\r\n") +
         (closes ? "Connection: close\r\n" : "") + "Content-Length: " + std::to_string(sizeof(kBody) - 1) +
         "\r\n\r\n" + kBody;
}

// The length of the first whole request in `buffer` (head and Content-Length body), 0 while incomplete.
std::size_t WholeRequest(const std::string& buffer, bool* closes) {
  const std::size_t headEnd = buffer.find("\r\n\r\n");
  if (headEnd == std::string::npos) return 0;
  std::size_t length = 0;
  *closes = false;
  for (std::size_t line = buffer.find("\r\n") + 2; line < headEnd;) {
    const std::size_t end = buffer.find("\r\n", line);
    const std::string header = buffer.substr(line, end - line);
    if (strncasecmp(header.c_str(), "content-length:", 15) == 0)
      length = std::strtoul(header.c_str() + 15, nullptr, 10);
    if (strncasecmp(header.c_str(), "connection:", 11) == 0 &&
        strcasestr(header.c_str() + 11, "close") != nullptr)
      *closes = true;
    line = end + 2;
  }
  return buffer.size() >= headEnd + 4 + length ? headEnd + 4 + length : 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string address = "127.0.0.1";
  int port = 0;
  for (int at = 1; at + 1 < argc; at += 2) {
    if (std::strcmp(argv[at], "--address") == 0) address = argv[at + 1];
    if (std::strcmp(argv[at], "--port") == 0) port = std::atoi(argv[at + 1]);
  }
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  const int yes = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  sockaddr_in local{};
  local.sin_family = AF_INET;
  local.sin_port = htons(static_cast<uint16_t>(port));
  if (inet_pton(AF_INET, address.c_str(), &local.sin_addr) != 1 ||
      bind(listener, reinterpret_cast<sockaddr*>(&local), sizeof(local)) != 0 || listen(listener, 128) != 0) {
    std::perror("tcp_floor: listen");
    return 1;
  }
  const int poller = epoll_create1(EPOLL_CLOEXEC);
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = listener;
  epoll_ctl(poller, EPOLL_CTL_ADD, listener, &event);
  std::printf("ready: http://%s:%d/control\n", address.c_str(), port);
  std::fflush(stdout);

  const std::string keepAliveReply = Reply(false), closingReply = Reply(true);
  std::unordered_map<int, std::string> buffers;
  epoll_event ready[64];
  char chunk[16384];
  for (;;) {
    const int count = epoll_wait(poller, ready, 64, -1);
    for (int i = 0; i < count; ++i) {
      const int fd = ready[i].data.fd;
      if (fd == listener) {
        int client;
        while ((client = accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)) >= 0) {
          setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
          event.events = EPOLLIN;
          event.data.fd = client;
          epoll_ctl(poller, EPOLL_CTL_ADD, client, &event);
          buffers[client].clear();
        }
        continue;
      }
      std::string& buffer = buffers[fd];
      bool finished = false;
      for (;;) {
        const ssize_t got = read(fd, chunk, sizeof(chunk));
        if (got > 0) {
          buffer.append(chunk, static_cast<std::size_t>(got));
          continue;
        }
        finished = got == 0;
        break;
      }
      bool closes = false;
      std::size_t length;
      while (!finished && (length = WholeRequest(buffer, &closes)) > 0) {
        buffer.erase(0, length);
        // Answers are small: one write goes out whole on a connection whose client reads them.
        const std::string& reply = closes ? closingReply : keepAliveReply;
        if (write(fd, reply.data(), reply.size()) != static_cast<ssize_t>(reply.size()) || closes)
          finished = true;
      }
      if (finished) {
        epoll_ctl(poller, EPOLL_CTL_DEL, fd, nullptr);
        close(fd);
        buffers.erase(fd);
      }
    }
  }
}
