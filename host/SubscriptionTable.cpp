#include "SubscriptionTable.h"

#include <algorithm>
#include <cctype>

namespace {

// A subscription whose answer carried no readable TIMEOUT is kept for GUPnP's default of 30 minutes.
constexpr int64_t kDefaultSeconds = 1800;

int64_t Expiry(const std::string& timeoutHeader, int64_t now) {
  int64_t seconds = 0;
  if (!HOST_ParseSubscriptionTimeout(timeoutHeader, &seconds)) seconds = kDefaultSeconds;
  return seconds < 0 ? -1 : now + seconds;
}

bool Expired(int64_t expiry, int64_t now) { return expiry >= 0 && expiry <= now; }

}  // namespace

bool HOST_ParseSubscriptionTimeout(const std::string& header, int64_t* seconds) {
  constexpr char kPrefix[] = "second-";
  constexpr std::size_t kPrefixLength = sizeof(kPrefix) - 1;
  if (header.size() <= kPrefixLength) return false;
  for (std::size_t i = 0; i < kPrefixLength; ++i)
    if (std::tolower(static_cast<unsigned char>(header[i])) != kPrefix[i]) return false;
  const std::string value = header.substr(kPrefixLength);
  if (value == "infinite") {
    *seconds = -1;
    return true;
  }
  if (value.size() > 9 ||
      !std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; }))
    return false;
  *seconds = std::stoll(value);
  return true;
}

std::string HOST_FirstCallbackUrl(const std::string& header) {
  const std::size_t open = header.find('<');
  const std::size_t close = open == std::string::npos ? std::string::npos : header.find('>', open);
  if (close == std::string::npos) return header;
  return header.substr(open + 1, close - open - 1);
}

void HOST_SubscriptionTable::Subscribed(const std::string& sid, const std::string& service,
                                        const std::string& callbackHeader, const std::string& from,
                                        const std::string& timeoutHeader, int64_t now) {
  DropExpired(now);
  if (entries_.size() >= kCapacity && entries_.find(sid) == entries_.end()) {
    // The one that expires first; one that never expires goes last.
    auto first = std::min_element(entries_.begin(), entries_.end(), [](const auto& a, const auto& b) {
      const uint64_t left = static_cast<uint64_t>(a.second.expiry);  // -1 becomes the largest
      const uint64_t right = static_cast<uint64_t>(b.second.expiry);
      return left < right;
    });
    entries_.erase(first);
  }
  entries_[sid] = {service, HOST_FirstCallbackUrl(callbackHeader), from, Expiry(timeoutHeader, now)};
}

void HOST_SubscriptionTable::Renewed(const std::string& sid, const std::string& timeoutHeader, int64_t now) {
  auto entry = entries_.find(sid);
  if (entry != entries_.end()) entry->second.expiry = Expiry(timeoutHeader, now);
}

void HOST_SubscriptionTable::Unsubscribed(const std::string& sid) { entries_.erase(sid); }

void HOST_SubscriptionTable::DropExpired(int64_t now) {
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    if (Expired(entry->second.expiry, now)) {
      entry = entries_.erase(entry);
    } else {
      ++entry;
    }
  }
}

std::vector<HOST_StatusSubscription> HOST_SubscriptionTable::Current(int64_t now) {
  DropExpired(now);
  std::vector<HOST_StatusSubscription> current;
  current.reserve(entries_.size());
  for (const auto& [sid, entry] : entries_)
    current.push_back(
        {entry.service, entry.callback, entry.from, entry.expiry < 0 ? -1 : entry.expiry - now});
  std::stable_sort(current.begin(), current.end(), [](const auto& a, const auto& b) {
    return a.service != b.service ? a.service < b.service : a.callback < b.callback;
  });
  return current;
}
