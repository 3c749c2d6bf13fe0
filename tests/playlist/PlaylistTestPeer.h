// PLAYLIST_PlaylistManagerTestPeer: lets tests see the manager's private state (the order list, the
// position, the last id given) and put it into states the public operations reach only slowly or never.
// Tests only; the product never names this class.
#ifndef TESTS_PLAYLIST_PLAYLIST_TEST_PEER_H_
#define TESTS_PLAYLIST_PLAYLIST_TEST_PEER_H_

#include <cstdint>
#include <vector>

#include "playlist/PlaylistManager.h"

class PLAYLIST_PlaylistManagerTestPeer {
 public:
  static uint32_t CurrentIndex(const PLAYLIST_PlaylistManager& manager) { return manager.currentIndex_; }
  static void SetCurrentIndex(PLAYLIST_PlaylistManager* manager, uint32_t index) {
    manager->currentIndex_ = index;
  }
  static uint64_t LastId(const PLAYLIST_PlaylistManager& manager) { return manager.lastId_; }
  static void SetLastId(PLAYLIST_PlaylistManager* manager, uint64_t id) { manager->lastId_ = id; }

  static std::vector<uint32_t> Order(const PLAYLIST_PlaylistManager& manager) {
    return std::vector<uint32_t>(manager.order_.begin(), manager.order_.end());
  }
  // Overwrites the order entries' values in place (as many as both have).
  static void SetOrder(PLAYLIST_PlaylistManager* manager, const std::vector<uint32_t>& values) {
    auto value = values.begin();
    for (auto entry = manager->order_.begin(); entry != manager->order_.end() && value != values.end();
         ++entry, ++value) {
      *entry = *value;
    }
  }

  static std::vector<uint64_t> Ids(const PLAYLIST_PlaylistManager& manager) {
    std::vector<uint64_t> ids;
    for (const PLAYLIST_PlaylistData& track : manager.tracks_) ids.push_back(track.getId());
    return ids;
  }
  static std::vector<const PLAYLIST_PlaylistData*> Records(const PLAYLIST_PlaylistManager& manager) {
    std::vector<const PLAYLIST_PlaylistData*> records;
    for (const PLAYLIST_PlaylistData& track : manager.tracks_) records.push_back(&track);
    return records;
  }
};

#endif  // TESTS_PLAYLIST_PLAYLIST_TEST_PEER_H_
