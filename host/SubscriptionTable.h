// HOST_SubscriptionTable: the control points subscribed to the renderer's events, as the status page
// shows them, kept from the SUBSCRIBE and UNSUBSCRIBE requests the HTTP server answered.
//
// A subscription is known by its SID. A first SUBSCRIBE (answered with a new SID) enters it with its
// callback, service and expiry; a renewal (the SID in the request) moves the expiry; an UNSUBSCRIBE
// removes it; the expiry removes it too, for a control point that went away without a word. The table
// holds at most kCapacity subscriptions: a new one beyond that pushes out the one that expires first.
//
// Times are seconds on a monotonic clock, given by the caller, so that tests need no waiting.
// Main loop only (no lock).
#ifndef HOST_SUBSCRIPTION_TABLE_H_
#define HOST_SUBSCRIPTION_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "StatusReport.h"

class HOST_SubscriptionTable {
 public:
  static constexpr std::size_t kCapacity = 256;

  // A first SUBSCRIBE answered with `sid`. `callbackHeader` and `timeoutHeader` as they came
  // ("<http://10.0.0.2:4004/event>", "Second-1800" of the answer).
  void Subscribed(const std::string& sid, const std::string& service, const std::string& callbackHeader,
                  const std::string& from, const std::string& timeoutHeader, int64_t now);
  // A renewal of `sid` answered with `timeoutHeader`; a SID the table does not know is ignored.
  void Renewed(const std::string& sid, const std::string& timeoutHeader, int64_t now);
  void Unsubscribed(const std::string& sid);

  // The subscriptions that have not expired at `now`, by service then callback; the expired ones go.
  std::vector<HOST_StatusSubscription> Current(int64_t now);

  std::size_t Size() const { return entries_.size(); }

 private:
  struct Entry {
    std::string service;
    std::string callback;
    std::string from;
    int64_t expiry;  // -1: never
  };

  void DropExpired(int64_t now);

  std::map<std::string, Entry> entries_;  // by SID
};

// The seconds of a TIMEOUT header: "Second-1800" gives 1800, "Second-infinite" -1 (never). False for
// anything else.
bool HOST_ParseSubscriptionTimeout(const std::string& header, int64_t* seconds);

// The first URL of a CALLBACK header ("<http://a/1><http://b/2>" gives "http://a/1"); the header itself
// when it holds no "<...>".
std::string HOST_FirstCallbackUrl(const std::string& header);

#endif  // HOST_SUBSCRIPTION_TABLE_H_
