// HOST_StatusPage: the renderer's status page, served by the daemon's own HTTP server on every network
// context (the device description's presentationURL points at it).
//
//   /status/             the page: index.html, status.js and status.css from <docroot>/status/, with
//                        their content types and a Content-Security-Policy that allows nothing but the
//                        daemon's own scripts and styles (album art may come from any web address)
//   /status              redirects to /status/, so that the page's relative links resolve
//   /status.json         the state now (HOST_WriteStatusJson), built on the main loop at each request
//
// The page polls /status.json about once a second and updates itself in place.
//
// It also keeps the subscribed control points (HOST_SubscriptionTable) from the SUBSCRIBE and
// UNSUBSCRIBE requests each server answered.
//
// Main loop only. Attach a context once; a context that goes away is forgotten by itself; the page
// detaches from every remaining context when it is destroyed.
#ifndef HOST_STATUS_PAGE_H_
#define HOST_STATUS_PAGE_H_

#include <string>
#include <vector>

#include "StatusConfiguration.h"
#include "StatusReader.h"
#include "SubscriptionTable.h"

typedef struct _GUPnPContext GUPnPContext;
typedef struct _SoupServer SoupServer;
typedef struct _SoupServerMessage SoupServerMessage;
typedef struct _GObject GObject;
typedef struct _GHashTable GHashTable;
class HOST_Renderer;

// The path the device description's presentationURL names.
constexpr char HOST_kStatusPagePath[] = "/status/";

class HOST_StatusPage {
 public:
  // `renderer` must outlive the page. `documentRoot` holds the page's files in its folder "status".
  HOST_StatusPage(HOST_Renderer* renderer, HOST_StatusRows configuration, std::string documentRoot);
  ~HOST_StatusPage();
  HOST_StatusPage(const HOST_StatusPage&) = delete;
  HOST_StatusPage& operator=(const HOST_StatusPage&) = delete;

  // Serves the page on the context's HTTP server and watches its subscriptions.
  void Attach(GUPnPContext* context);

  // The JSON answer now.
  std::string Json();

 private:
  static void ServeJson(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query,
                        void* self);
  static void ServeFile(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query,
                        void* self);
  static void OnRequestFinished(SoupServer*, SoupServerMessage* message, void* self);
  static void OnContextGone(void* self, GObject* context);
  void NoteSubscription(SoupServerMessage* message);

  HOST_Renderer* renderer_;
  HOST_StatusRows configuration_;
  std::string documentRoot_;
  HOST_StatusReader reader_;
  HOST_SubscriptionTable subscriptions_;
  std::vector<GUPnPContext*> contexts_;  // weak: each removes itself when finalized
};

#endif  // HOST_STATUS_PAGE_H_
