#include "ServerConnections.h"

#include <gio/gio.h>
#include <libsoup/soup.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "Log.h"

namespace {

// The series whose server keeps a reference of every accepted socket (measured on 3.2.3).
bool ServerKeepsAcceptedSockets() { return soup_get_major_version() == 3 && soup_get_minor_version() == 2; }

// True when the server closes the connection after answering `message`, by the same rules it applies: an
// HTTP/1.1 request or answer that says "Connection: close", an HTTP/1.0 request that does not ask for
// "Keep-Alive", or an answer whose end is the end of the stream. Anything else may stay open.
bool ServerClosesAfter(SoupServerMessage* message) {
  SoupMessageHeaders* request = soup_server_message_get_request_headers(message);
  SoupMessageHeaders* response = soup_server_message_get_response_headers(message);
  if (soup_message_headers_get_encoding(response) == SOUP_ENCODING_EOF) return true;
  if (soup_server_message_get_http_version(message) == SOUP_HTTP_1_0)
    return !soup_message_headers_header_contains(request, "Connection", "Keep-Alive");
  return soup_message_headers_header_contains(request, "Connection", "close") ||
         soup_message_headers_header_contains(response, "Connection", "close");
}

void AttachToThisLoop(GSource* source) {
  GMainContext* context = g_main_context_ref_thread_default();
  g_source_attach(source, context);
  g_main_context_unref(context);
}

}  // namespace

struct HOST_ServerConnections::Connection {
  HOST_ServerConnections* owner;
  GSocket* socket;                    // not owned: followed with a weak reference
  SoupServerMessage* last = nullptr;  // owned: the last message answered on the connection
  gulong disconnectedHandler = 0;     // of `last`
  GSource* watch = nullptr;           // owned: the idle connection's socket, watched for its client leaving
  GSource* orphanCheck = nullptr;     // owned

  Connection(HOST_ServerConnections* ownerIn, GSocket* socketIn) : owner(ownerIn), socket(socketIn) {}
  ~Connection() {
    StopWatching();
    DropLast();
    if (orphanCheck != nullptr) {
      g_source_destroy(orphanCheck);
      g_source_unref(orphanCheck);
    }
  }

  void StopWatching() {
    if (watch == nullptr) return;
    g_source_destroy(watch);
    g_source_unref(watch);
    watch = nullptr;
  }

  void DropLast() {
    if (last == nullptr) return;
    g_signal_handler_disconnect(last, disconnectedHandler);
    g_object_unref(last);
    last = nullptr;
    disconnectedHandler = 0;
  }

  void Remember(SoupServerMessage* message) {
    if (message == last) return;
    DropLast();
    last = SOUP_SERVER_MESSAGE(g_object_ref(message));
    disconnectedHandler = g_signal_connect(message, "disconnected", G_CALLBACK(OnDisconnected), this);
  }

  void WatchUntilNextRequest() {
    StopWatching();
    if (g_socket_is_closed(socket)) return;
    watch = g_socket_create_source(socket, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), nullptr);
    g_source_set_callback(watch, G_SOURCE_FUNC(OnReadable), this, nullptr);
    AttachToThisLoop(watch);
  }
};

HOST_ServerConnections::HOST_ServerConnections() : releasesOrphanSockets_(ServerKeepsAcceptedSockets()) {}

HOST_ServerConnections::~HOST_ServerConnections() {
  while (!servers_.empty()) Forget(servers_.back());
  while (!connections_.empty()) Erase(connections_.begin()->first);
}

void HOST_ServerConnections::Follow(SoupServer* server) {
  if (std::find(servers_.begin(), servers_.end(), server) != servers_.end()) return;
  servers_.push_back(SOUP_SERVER(g_object_ref(server)));
  g_signal_connect(server, "request-started", G_CALLBACK(OnRequestStarted), this);
  g_signal_connect(server, "request-finished", G_CALLBACK(OnRequestEnded), this);
  g_signal_connect(server, "request-aborted", G_CALLBACK(OnRequestEnded), this);
}

void HOST_ServerConnections::Forget(SoupServer* server) {
  auto found = std::find(servers_.begin(), servers_.end(), server);
  if (found == servers_.end()) return;
  servers_.erase(found);
  g_signal_handlers_disconnect_by_data(server, this);
  g_object_unref(server);
}

HOST_ServerConnections::Connection* HOST_ServerConnections::Find(GSocket* socket, bool create) {
  auto found = connections_.find(socket);
  if (found != connections_.end()) return found->second.get();
  if (!create) return nullptr;
  g_object_weak_ref(G_OBJECT(socket), OnSocketFinalized, this);
  return connections_.emplace(socket, std::make_unique<Connection>(this, socket)).first->second.get();
}

void HOST_ServerConnections::Erase(GSocket* socket) {
  g_object_weak_unref(G_OBJECT(socket), OnSocketFinalized, this);
  connections_.erase(socket);
}

void HOST_ServerConnections::OnSocketFinalized(void* self, GObject* socket) {
  static_cast<HOST_ServerConnections*>(self)->connections_.erase(reinterpret_cast<GSocket*>(socket));
}

void HOST_ServerConnections::OnRequestStarted(SoupServer*, SoupServerMessage* message, void* self) {
  GSocket* socket = soup_server_message_get_socket(message);
  if (socket == nullptr) return;
  static_cast<HOST_ServerConnections*>(self)->Find(socket, true)->StopWatching();
}

void HOST_ServerConnections::OnRequestEnded(SoupServer*, SoupServerMessage* message, void* self) {
  GSocket* socket = soup_server_message_get_socket(message);
  if (socket == nullptr) return;
  Connection* connection = static_cast<HOST_ServerConnections*>(self)->Find(socket, true);
  // A connection the server closes after this reply says so at once ("disconnected"), before the loop
  // could dispatch the watch. One already closed (its client went during the request) says nothing more.
  connection->Remember(message);
  if (g_socket_is_closed(socket)) {
    OnDisconnected(message, connection);
    return;
  }
  // A connection the server is about to close needs no watch: "disconnected" follows this reply. Leaving
  // it unwatched saves a control point that opens a connection per call a socket source made and unmade
  // (and the main loop two wake-ups) on every request.
  if (ServerClosesAfter(message)) return;
  connection->WatchUntilNextRequest();
}

int HOST_ServerConnections::OnReadable(GSocket* socket, unsigned, void* data) {
  auto* connection = static_cast<Connection*>(data);
  char byte;
  const ssize_t peeked = recv(g_socket_get_fd(socket), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
  if (peeked < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) return G_SOURCE_CONTINUE;
  g_source_unref(connection->watch);
  connection->watch = nullptr;
  // Bytes waiting: the next request has begun, and the server reads it.
  if (peeked > 0) return G_SOURCE_REMOVE;

  // The end of the stream (or an error) on an idle connection: the client has gone. Taking the connection
  // from the server makes it release the connection ("disconnected" follows, and may free `connection`).
  HOST_ServerConnections* owner = connection->owner;
  SoupServerMessage* message = SOUP_SERVER_MESSAGE(g_object_ref(connection->last));
  GIOStream* stream = soup_server_message_steal_connection(message);
  g_object_unref(message);
  if (stream != nullptr) {
    g_io_stream_close(stream, nullptr, nullptr);
    g_object_unref(stream);
  }
  ++owner->closedForGoneClients_;
  HOST_Log(HOST_LogLevel::Debug, "closed a connection its client had left idle and closed");
  return G_SOURCE_REMOVE;
}

void HOST_ServerConnections::OnDisconnected(SoupServerMessage*, void* data) {
  auto* connection = static_cast<Connection*>(data);
  connection->StopWatching();
  connection->DropLast();
  if (!connection->owner->releasesOrphanSockets_ || connection->orphanCheck != nullptr) return;
  // The server lets go of the connection after this signal: look at the socket once it has.
  connection->orphanCheck = g_idle_source_new();
  g_source_set_priority(connection->orphanCheck, G_PRIORITY_LOW);
  g_source_set_callback(connection->orphanCheck, OnOrphanCheck, connection, nullptr);
  AttachToThisLoop(connection->orphanCheck);
}

int HOST_ServerConnections::OnOrphanCheck(void* data) {
  auto* connection = static_cast<Connection*>(data);
  g_source_unref(connection->orphanCheck);
  connection->orphanCheck = nullptr;
  GSocket* socket = connection->socket;
  if (connection->last != nullptr || !g_socket_is_closed(socket)) return G_SOURCE_REMOVE;
  // Closed, its connection gone, and still alive: only the server's lost reference holds it.
  connection->owner->Erase(socket);
  g_object_unref(socket);
  return G_SOURCE_REMOVE;
}
