// PLAYER_IcyTitles: the title an ICY stream currently announces, shared by every connection to it.
//
// The title moves on through the list (wrapping round) when a connection has sent the configured number of
// audio bytes, or is set by the test. A version number that grows with every change of the text tells a
// connection whether it has announced the current title yet (setting the same text again is no change).
// Thread-safe: connection threads and the test thread use it at once.
#ifndef TESTS_PLAYER_SUPPORT_ICY_TITLES_H_
#define TESTS_PLAYER_SUPPORT_ICY_TITLES_H_

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

class PLAYER_IcyTitles {
 public:
  // Starts at the first of `titles` (an empty list: the empty title).
  explicit PLAYER_IcyTitles(std::vector<std::string> titles);

  // The version and the title now.
  std::pair<std::uint64_t, std::string> Current() const;

  // Moves on to the next title of the list.
  void Advance();

  // Announces `title` from now on, until the next Advance or Set.
  void Set(const std::string& title);

 private:
  mutable std::mutex mutex_;
  const std::vector<std::string> titles_;
  std::size_t next_ = 1;
  std::uint64_t version_ = 1;
  std::string current_;
};

#endif  // TESTS_PLAYER_SUPPORT_ICY_TITLES_H_
