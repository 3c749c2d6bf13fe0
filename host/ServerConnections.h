// HOST_ServerConnections: the connections of the HTTP servers the daemon answers on, followed from the
// servers' request signals, so that none outlives its client. libsoup 3.2 (Debian 12's, under GUPnP 1.6)
// loses two things on its own:
//
//  - a keep-alive connection that the client closes while it is idle between requests: the server reads
//    the end of the stream and then neither closes the connection nor lets go of it, so its descriptor
//    stays open in CLOSE_WAIT for the life of the process (a few dozen control points that reconnect now
//    and then exhaust the descriptors within days). Once a reply is sent on a connection that stays open,
//    we watch its socket until the next request begins; when the client has gone (end of stream, no
//    bytes waiting), we take the connection from the server through its last message
//    (soup_server_message_steal_connection, which makes the server release it) and close it.
//  - the socket object of every accepted connection (about 400 bytes each): the server keeps one
//    reference of it that no owner ever drops. Once the connection is gone and its socket closed, a socket
//    still alive is held by that reference alone, and we drop it. Only for the 3.2 series, where we measured
//    it; a later series that keeps no such reference frees the socket with the connection, before we look.
//
// Main loop only.
#ifndef HOST_SERVER_CONNECTIONS_H_
#define HOST_SERVER_CONNECTIONS_H_

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

typedef struct _SoupServer SoupServer;
typedef struct _SoupServerMessage SoupServerMessage;
typedef struct _GSocket GSocket;
typedef struct _GObject GObject;
typedef struct _GSource GSource;

class HOST_ServerConnections {
 public:
  HOST_ServerConnections();
  // Stops following every server; the connections still open stay with their servers.
  ~HOST_ServerConnections();
  HOST_ServerConnections(const HOST_ServerConnections&) = delete;
  HOST_ServerConnections& operator=(const HOST_ServerConnections&) = delete;

  void Follow(SoupServer* server);
  void Forget(SoupServer* server);

  // The sockets followed that still exist: those of open connections, and of closed ones whose socket
  // was not yet released (0 once every client has gone and the main loop has run).
  std::size_t Sockets() const { return connections_.size(); }
  // How many connections were closed because their client had closed them while idle.
  std::size_t ClosedForGoneClients() const { return closedForGoneClients_; }

 private:
  struct Connection;
  static void OnRequestStarted(SoupServer*, SoupServerMessage* message, void* self);
  static void OnRequestEnded(SoupServer*, SoupServerMessage* message, void* self);
  static void OnDisconnected(SoupServerMessage* message, void* connection);
  static int OnReadable(GSocket* socket, unsigned condition, void* connection);
  static int OnOrphanCheck(void* connection);
  static void OnSocketFinalized(void* self, GObject* socket);

  Connection* Find(GSocket* socket, bool create);
  void Erase(GSocket* socket);

  bool releasesOrphanSockets_;
  std::vector<SoupServer*> servers_;
  std::map<GSocket*, std::unique_ptr<Connection>> connections_;
  std::size_t closedForGoneClients_ = 0;
};

#endif  // HOST_SERVER_CONNECTIONS_H_
