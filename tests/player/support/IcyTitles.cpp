#include "IcyTitles.h"

PLAYER_IcyTitles::PLAYER_IcyTitles(std::vector<std::string> titles)
    : titles_(std::move(titles)), current_(titles_.empty() ? std::string() : titles_.front()) {}

std::pair<std::uint64_t, std::string> PLAYER_IcyTitles::Current() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return {version_, current_};
}

void PLAYER_IcyTitles::Advance() {
  std::lock_guard<std::mutex> guard(mutex_);
  if (titles_.empty()) return;
  const std::string& title = titles_[next_ % titles_.size()];
  next_ = (next_ + 1) % titles_.size();
  if (title != current_) {
    current_ = title;
    ++version_;
  }
}

void PLAYER_IcyTitles::Set(const std::string& title) {
  std::lock_guard<std::mutex> guard(mutex_);
  if (title == current_) return;
  current_ = title;
  ++version_;
}
