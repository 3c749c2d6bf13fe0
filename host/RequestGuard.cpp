#include "RequestGuard.h"

#include <arpa/inet.h>
#include <strings.h>

#include <cstring>
#include <iterator>

namespace {

// A literal address in binary, of either family.
struct Address {
  int family = 0;
  unsigned char bytes[16] = {};
};

// Reads a literal IPv4 (dotted decimal only: inet_pton refuses "0x7f.1" and "2130706433", which some
// resolvers would take) or IPv6 address; an IPv6 zone ("%eth0", "%25eth0" in a URL) is dropped.
bool ParseAddress(std::string text, Address* address) {
  const std::size_t zone = text.find('%');
  if (zone != std::string::npos && text.find(':') != std::string::npos) text.resize(zone);
  if (inet_pton(AF_INET, text.c_str(), address->bytes) == 1) {
    address->family = AF_INET;
    return true;
  }
  if (inet_pton(AF_INET6, text.c_str(), address->bytes) == 1) {
    address->family = AF_INET6;
    return true;
  }
  return false;
}

bool SameAddress(const Address& a, const Address& b) {
  return a.family == b.family && std::memcmp(a.bytes, b.bytes, a.family == AF_INET ? 4 : 16) == 0;
}

// Splits "host", "host:port", "[v6]" or "[v6]:port" into the host and the port (0 when absent). False for
// anything else: an empty host, a bare IPv6 address, a port that is not 1 to 65535 in decimal.
bool SplitAuthority(const std::string& authority, std::string* host, unsigned* port) {
  std::string rest;
  if (!authority.empty() && authority[0] == '[') {
    const std::size_t close = authority.find(']');
    if (close == std::string::npos) return false;
    *host = authority.substr(1, close - 1);
    rest = authority.substr(close + 1);
  } else {
    const std::size_t colon = authority.find(':');
    if (colon != std::string::npos && authority.find(':', colon + 1) != std::string::npos) return false;
    *host = authority.substr(0, colon);
    rest = colon == std::string::npos ? std::string() : authority.substr(colon);
  }
  if (host->empty()) return false;
  *port = 0;
  if (rest.empty()) return true;
  if (rest[0] != ':' || rest.size() < 2 || rest.size() > 6) return false;
  unsigned value = 0;
  for (std::size_t i = 1; i < rest.size(); ++i) {
    if (rest[i] < '0' || rest[i] > '9') return false;
    value = value * 10 + static_cast<unsigned>(rest[i] - '0');
  }
  if (value == 0 || value > 65535) return false;
  *port = value;
  return true;
}

// The literal address and port (0 when absent) of an authority; IPv6 only in brackets, IPv4 only without.
bool ParseAuthority(const std::string& authority, Address* address, unsigned* port) {
  std::string host;
  if (!SplitAuthority(authority, &host, port) || !ParseAddress(host, address)) return false;
  const bool bracketed = authority[0] == '[';
  return bracketed == (address->family == AF_INET6);
}

// The address of one callback URL; false, with *reason, when it is not http://<literal address>[:port]/...
bool CallbackAddress(const std::string& url, Address* address, std::string* reason) {
  constexpr char kScheme[] = "http://";
  constexpr std::size_t kSchemeLength = sizeof kScheme - 1;
  if (url.size() < kSchemeLength || strncasecmp(url.c_str(), kScheme, kSchemeLength) != 0) {
    *reason = "callback is not an http URL: " + url;
    return false;
  }
  const std::size_t end = url.find_first_of("/?#", kSchemeLength);
  const std::string authority = url.substr(kSchemeLength, end == std::string::npos ? std::string::npos
                                                                                   : end - kSchemeLength);
  unsigned port = 0;
  // No user information ("http://a@b/"): whatever a receiver makes of it, it is not a plain address.
  if (authority.find('@') != std::string::npos || !ParseAuthority(authority, address, &port)) {
    *reason = "callback host is not a literal address: " + url;
    return false;
  }
  return true;
}

}  // namespace

bool HOST_BodyLengthAllowed(std::uint64_t length) { return length <= HOST_kMaxRequestBodyBytes; }

bool HOST_HostHeaderNamesServer(const char* hostHeader, const std::string& serverAddress, unsigned serverPort) {
  if (hostHeader == nullptr) return true;
  unsigned port = 0;
  Address named;
  Address server;
  if (!ParseAuthority(hostHeader, &named, &port) || !ParseAddress(serverAddress, &server)) {
    return false;
  }
  return SameAddress(named, server) && (port == 0 || port == serverPort);
}

bool HOST_SameSubnet(const std::string& a, const std::string& b, unsigned prefixLength) {
  Address first;
  Address second;
  if (!ParseAddress(a, &first) || !ParseAddress(b, &second) || first.family != second.family) return false;
  const unsigned bits = first.family == AF_INET ? 32 : 128;
  if (prefixLength > bits) return false;
  const unsigned whole = prefixLength / 8;
  if (std::memcmp(first.bytes, second.bytes, whole) != 0) return false;
  const unsigned remaining = prefixLength % 8;
  if (remaining == 0) return true;
  const unsigned char mask = static_cast<unsigned char>(0xFF << (8 - remaining));
  return (first.bytes[whole] & mask) == (second.bytes[whole] & mask);
}

bool HOST_CallbackAllowed(const char* callbackHeader, const std::string& serverAddress, unsigned prefixLength,
                          std::string* reason) {
  std::string ignored;
  std::string* why = reason != nullptr ? reason : &ignored;
  if (callbackHeader == nullptr) {
    *why = "no CALLBACK header";
    return false;
  }
  const char* cursor = callbackHeader;
  int urls = 0;
  for (;;) {
    while (*cursor == ' ' || *cursor == '\t') ++cursor;
    if (*cursor == '\0') break;
    const char* close = std::strchr(cursor, '>');
    if (*cursor != '<' || close == nullptr) {
      *why = std::string("CALLBACK is not a list of <URL>: ") + callbackHeader;
      return false;
    }
    const std::string url(cursor + 1, close);
    Address address;
    if (!CallbackAddress(url, &address, why)) return false;
    char text[INET6_ADDRSTRLEN] = {};
    inet_ntop(address.family, address.bytes, text, sizeof text);
    if (!HOST_SameSubnet(text, serverAddress, prefixLength)) {
      *why = "callback " + url + " is off the network " + serverAddress + "/" + std::to_string(prefixLength);
      return false;
    }
    ++urls;
    cursor = close + 1;
  }
  if (urls == 0) {
    *why = "CALLBACK holds no URL";
    return false;
  }
  return true;
}

bool HOST_SoapActionNamesService(const char* soapActionHeader, const char* serviceType) {
  if (soapActionHeader == nullptr || serviceType == nullptr) return false;
  std::string value(soapActionHeader);
  const std::size_t hash = value.find('#');
  if (hash != std::string::npos) value.resize(hash);
  if (!value.empty() && value.front() == '"') value.erase(0, 1);
  if (!value.empty() && value.back() == '"') value.pop_back();
  return value == serviceType;
}

unsigned HOST_TimeoutSeconds(const char* timeoutHeader, unsigned fallback) {
  constexpr char kPrefix[] = "Second-";
  constexpr std::size_t kPrefixLength = sizeof kPrefix - 1;
  if (timeoutHeader == nullptr || strncasecmp(timeoutHeader, kPrefix, kPrefixLength) != 0) return fallback;
  const char* digits = timeoutHeader + kPrefixLength;
  if (*digits == '\0') return fallback;
  unsigned long value = 0;
  for (const char* c = digits; *c != '\0'; ++c) {
    if (*c < '0' || *c > '9' || value > 1000000000UL) return fallback;
    value = value * 10 + static_cast<unsigned long>(*c - '0');
  }
  return value == 0 || value > 1000000000UL ? fallback : static_cast<unsigned>(value);
}

void HOST_SubscriptionLedger::Prune(std::uint64_t now) {
  for (auto entry = bySid_.begin(); entry != bySid_.end();) {
    entry = entry->second.expiresAt <= now ? bySid_.erase(entry) : std::next(entry);
  }
}

std::size_t HOST_SubscriptionLedger::Count(const std::string& path, std::uint64_t now) {
  Prune(now);
  std::size_t count = 0;
  for (const auto& entry : bySid_) count += entry.second.path == path ? 1 : 0;
  return count;
}

bool HOST_SubscriptionLedger::MayAdd(const std::string& path, std::uint64_t now) {
  return Count(path, now) < HOST_kMaxSubscriptionsPerService;
}

void HOST_SubscriptionLedger::Added(const std::string& path, const std::string& sid, std::uint64_t expiresAt) {
  bySid_[sid] = Entry{path, expiresAt};
}

void HOST_SubscriptionLedger::Renewed(const std::string& sid, std::uint64_t expiresAt) {
  const auto entry = bySid_.find(sid);
  if (entry != bySid_.end()) entry->second.expiresAt = expiresAt;
}

void HOST_SubscriptionLedger::Removed(const std::string& sid) { bySid_.erase(sid); }
