// HOST_ServerConnections on a real libsoup server on 127.0.0.1, driven from the test's own main context by
// plain sockets: a client that closes its kept-alive connection while idle leaves no descriptor and no
// socket behind, and connections still in use (idle between requests, or busy with one) are left alone.
#include <arpa/inet.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <libsoup/soup.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>

#include "ServerConnections.h"

namespace {

constexpr int kConnections = 50;

int OpenDescriptors() {
  int count = 0;
  DIR* directory = opendir("/proc/self/fd");
  if (directory == nullptr) return -1;
  while (dirent* entry = readdir(directory)) {
    if (entry->d_name[0] != '.') ++count;
  }
  closedir(directory);
  return count;
}

void SetOk(SoupServerMessage* message) {
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_server_message_set_response(message, "text/plain", SOUP_MEMORY_STATIC, "ok", 2);
}

void AnswerOk(SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer) { SetOk(message); }

class ServerConnectionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    context_ = g_main_context_new();
    g_main_context_push_thread_default(context_);
    server_ = soup_server_new(nullptr, nullptr);
    soup_server_add_handler(server_, nullptr, AnswerOk, nullptr, nullptr);
    // "/held": the request stays unanswered (its connection busy) until the test calls AnswerHeld().
    soup_server_add_handler(server_, "/held", HoldRequest, this, nullptr);
    GError* error = nullptr;
    ASSERT_TRUE(soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, &error))
        << (error != nullptr ? error->message : "");
    GSList* uris = soup_server_get_uris(server_);
    ASSERT_NE(uris, nullptr);
    port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    connections_.Follow(server_);
    baseline_ = OpenDescriptors();
  }

  void TearDown() override {
    if (held_ != nullptr) AnswerHeld();
    connections_.Forget(server_);
    soup_server_disconnect(server_);
    g_object_unref(server_);
    RunFor(50);
    g_main_context_pop_thread_default(context_);
    g_main_context_unref(context_);
  }

  // A client socket connected to the server (the kernel completes it from the listen queue).
  int Connect() {
    const int client = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << strerror(errno);
    return client;
  }

  // Sends one GET and runs the server's loop until the whole reply ("ok") has arrived.
  bool Request(int client, bool close) { return Send(client, "/", close) && AwaitReply(client); }

  bool Send(int client, const char* path, bool close) {
    return SendText(client, std::string("GET ") + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" +
                                (close ? "Connection: close\r\n" : "") + "\r\n");
  }

  static bool SendText(int client, const std::string& request) {
    return send(client, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size());
  }

  // Runs the server's loop until the whole reply ("ok") has arrived on `client`.
  bool AwaitReply(int client) {
    std::string reply;
    return RunUntil([&] {
      pollfd readable{client, POLLIN, 0};
      char buffer[512];
      while (poll(&readable, 1, 0) == 1) {
        const ssize_t got = recv(client, buffer, sizeof buffer, MSG_DONTWAIT);
        if (got <= 0) break;
        reply.append(buffer, static_cast<std::size_t>(got));
      }
      return reply.find("\r\n\r\nok") != std::string::npos;
    });
  }

  // kConnections clients one after another, each sending `request`, reading the whole answer and closing.
  ::testing::AssertionResult ClientsEachRequestOnceAndClose(const std::string& request) {
    for (int i = 0; i < kConnections; ++i) {
      const int client = Connect();
      const bool answered = SendText(client, request) && AwaitReply(client);
      close(client);
      if (!answered) return ::testing::AssertionFailure() << "no answer on connection " << i;
    }
    return ::testing::AssertionSuccess();
  }

  // Runs the loop until no socket is followed and no descriptor is open beyond the baseline and the
  // `clientEnds` the test still holds.
  ::testing::AssertionResult NothingLeftSoon(int clientEnds = 0) {
    if (RunUntil([&] { return connections_.Sockets() == 0 && OpenDescriptors() == baseline_ + clientEnds; }))
      return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << connections_.Sockets() << " sockets followed, "
                                         << OpenDescriptors() - baseline_ << " descriptors more";
  }

  bool RunUntil(const std::function<bool()>& done, int milliseconds = 5000) {
    const gint64 deadline = g_get_monotonic_time() + milliseconds * 1000;
    while (!done()) {
      if (g_get_monotonic_time() > deadline) return false;
      if (!g_main_context_iteration(context_, FALSE)) g_usleep(1000);
    }
    return true;
  }

  void RunFor(int milliseconds) {
    RunUntil([] { return false; }, milliseconds);
  }

  static void HoldRequest(SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
    soup_server_message_pause(message);
    static_cast<ServerConnectionsTest*>(self)->held_ = message;
  }

  void AnswerHeld() {
    SetOk(held_);
    soup_server_message_unpause(held_);
    held_ = nullptr;
  }

  GMainContext* context_ = nullptr;
  SoupServer* server_ = nullptr;
  unsigned port_ = 0;
  int baseline_ = 0;
  SoupServerMessage* held_ = nullptr;  // not owned: the server keeps it until it is answered
  HOST_ServerConnections connections_;
};

TEST_F(ServerConnectionsTest, KeptAliveConnectionsTheirClientsCloseWhileIdleLeaveNoDescriptorOrSocket) {
  ASSERT_TRUE(ClientsEachRequestOnceAndClose("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"));
  EXPECT_TRUE(NothingLeftSoon());
  EXPECT_EQ(connections_.ClosedForGoneClients(), static_cast<std::size_t>(kConnections));
}

TEST_F(ServerConnectionsTest, ConnectionsClosedAfterTheirReplyLeaveNoDescriptorOrSocket) {
  ASSERT_TRUE(
      ClientsEachRequestOnceAndClose("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n"));
  EXPECT_TRUE(NothingLeftSoon());
  EXPECT_EQ(connections_.ClosedForGoneClients(), 0u);
}

TEST_F(ServerConnectionsTest, Http10ConnectionsWithoutKeepAliveLeaveNoDescriptorOrSocket) {
  ASSERT_TRUE(ClientsEachRequestOnceAndClose("GET / HTTP/1.0\r\n\r\n"));
  EXPECT_TRUE(NothingLeftSoon());
  EXPECT_EQ(connections_.ClosedForGoneClients(), 0u);
}

// Whether the server keeps an HTTP/1.0 connection that asks for Keep-Alive or closes it, none is left behind.
TEST_F(ServerConnectionsTest, Http10KeepAliveConnectionsTheirClientsCloseLeaveNoDescriptorOrSocket) {
  ASSERT_TRUE(ClientsEachRequestOnceAndClose("GET / HTTP/1.0\r\nConnection: Keep-Alive\r\n\r\n"));
  EXPECT_TRUE(NothingLeftSoon());
}

TEST_F(ServerConnectionsTest, IdleConnectionItsClientKeepsStaysOpenForTheNextRequest) {
  const int client = Connect();
  ASSERT_TRUE(Request(client, false));
  RunFor(200);
  EXPECT_EQ(connections_.Sockets(), 1u);
  EXPECT_EQ(OpenDescriptors(), baseline_ + 2);  // the client's end and the server's
  ASSERT_TRUE(Request(client, false));
  EXPECT_EQ(connections_.ClosedForGoneClients(), 0u);
  close(client);
  EXPECT_TRUE(NothingLeftSoon());
}

TEST_F(ServerConnectionsTest, BusyConnectionItsClientHalfClosesAfterTheRequestStillGetsItsAnswer) {
  const int client = Connect();
  ASSERT_TRUE(Request(client, false));  // the connection is followed from here on
  ASSERT_TRUE(Send(client, "/held", false));
  ASSERT_TRUE(RunUntil([&] { return held_ != nullptr; }));
  ASSERT_EQ(shutdown(client, SHUT_WR), 0) << strerror(errno);
  RunFor(100);  // the closed side is seen while the request is unanswered
  EXPECT_EQ(connections_.ClosedForGoneClients(), 0u);
  AnswerHeld();
  EXPECT_TRUE(AwaitReply(client));
  // Answered, the connection is idle with its client's end of stream waiting: it is closed at once.
  EXPECT_TRUE(NothingLeftSoon(1));
  EXPECT_EQ(connections_.ClosedForGoneClients(), 1u);
  close(client);
}

TEST_F(ServerConnectionsTest, IdleConnectionItsClientSendsALastRequestAndHalfClosesGetsTheAnswer) {
  const int client = Connect();
  ASSERT_TRUE(Request(client, false));
  RunFor(50);
  // The request and the end of stream arrive together on an idle, watched connection.
  ASSERT_TRUE(Send(client, "/", false));
  ASSERT_EQ(shutdown(client, SHUT_WR), 0) << strerror(errno);
  EXPECT_TRUE(AwaitReply(client));
  EXPECT_TRUE(NothingLeftSoon(1));
  EXPECT_EQ(connections_.ClosedForGoneClients(), 1u);
  close(client);
}

}  // namespace
