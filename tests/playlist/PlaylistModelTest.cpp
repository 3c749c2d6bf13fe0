// Long random sequences of playlist operations, each step checked against a plain model of the list and
// against the invariants every state must keep. The sequences are drawn from fixed seeds, and the shuffle's
// time is the step number, so every run is the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "PlaylistTestPeer.h"
#include "PlaylistTestSupport.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/ResultCode.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;

class PlaylistModel {
 public:
  // insertWeight: the percentage of steps that insert (up to 54); deleteAll: whether DeleteAll is drawn.
  PlaylistModel(uint32_t seed, int insertWeight, bool deleteAll)
      : random_(seed), insertWeight_(insertWeight), deleteAll_(deleteAll) {}

  std::size_t LargestSize() const { return largestSize_; }
  int RefusedInserts() const { return refusedInserts_; }
  int ShuffledSteps() const { return shuffledSteps_; }

  void Run(int steps) {
    for (step_ = 0; step_ < steps && !testing::Test::HasFatalFailure(); ++step_) {
      source_.SetTime(static_cast<std::time_t>(1700000000 + step_));
      Step();
      CheckInvariants();
    }
  }

 private:
  int Pick(int below) { return static_cast<int>(random_() % static_cast<uint32_t>(below)); }

  // A record the manager answered must be one of its own live elements.
  void CheckRecord(const PLAYLIST_PlaylistData* record) {
    if (record == nullptr) return;
    const std::vector<const PLAYLIST_PlaylistData*> records = Peer::Records(playlist_);
    ASSERT_NE(std::find(records.begin(), records.end(), record), records.end()) << "step " << step_;
    ASSERT_NE(record->getUri(), nullptr);
    ASSERT_NE(record->getMetaData(), nullptr);
    ASSERT_EQ(std::string(record->getUri()), "uri" + std::to_string(record->getId()));
  }

  uint64_t SomeId() {
    const int choice = Pick(10);
    if (!ids_.empty() && choice < 7)
      return ids_[static_cast<std::size_t>(Pick(static_cast<int>(ids_.size())))];
    if (choice < 9) return lastId_ + 1 + static_cast<uint64_t>(Pick(3));  // never given (yet)
    return deleted_.empty() ? 0 : *deleted_.begin();                      // given and gone
  }

  void Insert() {
    const uint64_t afterId = Pick(5) == 0 ? 0 : SomeId();
    const std::string n = std::to_string(lastId_ + 1);
    uint64_t newId = 0;
    const int32_t result = playlist_.Insert(("uri" + n).c_str(), "meta", afterId, &newId);
    if (ids_.size() > 1000) {
      ASSERT_EQ(result, SINK_UPNP_ERR_GENERIC);
      ASSERT_EQ(newId, 0u);
      ++refusedInserts_;
      return;
    }
    ++lastId_;
    ASSERT_EQ(newId, lastId_);
    auto after = std::find(ids_.begin(), ids_.end(), afterId);
    if (afterId == 0) {
      ASSERT_EQ(result, SINK_UPNP_OK);
      ids_.insert(ids_.begin(), newId);
    } else if (after != ids_.end()) {
      ASSERT_EQ(result, SINK_UPNP_OK);
      ids_.insert(after + 1, newId);
    } else {
      ASSERT_EQ(result, SINK_UPNP_ERR_GENERIC);
    }
  }

  void DeleteId() {
    const int32_t id = Pick(10) == 0 ? -1 - Pick(5) : static_cast<int32_t>(SomeId());
    int wasCurrent = 7;
    const uint32_t before = Peer::CurrentIndex(playlist_);
    const int32_t result = playlist_.DeleteId(id, &wasCurrent);
    if (id < 0) {
      ASSERT_EQ(result, SINK_UPNP_ERR_NULL_ARGUMENT);
      ASSERT_EQ(wasCurrent, 0);
      return;
    }
    auto found = std::find(ids_.begin(), ids_.end(), static_cast<uint64_t>(id));
    if (found == ids_.end()) {
      ASSERT_EQ(result, SINK_UPNP_ERR_GENERIC);
      ASSERT_EQ(wasCurrent, 0);
      return;
    }
    ASSERT_EQ(result, SINK_UPNP_OK);
    ASSERT_EQ(wasCurrent, static_cast<uint32_t>(found - ids_.begin()) == before ? 1 : 0);
    deleted_.insert(*found);
    ids_.erase(found);
  }

  void Seek() {
    const int kind = Pick(4);
    if (kind == 0) {
      const int index = Pick(static_cast<int>(ids_.size()) + 2) - 1;
      const PLAYLIST_PlaylistData* record = playlist_.SeekIndexTrackData(index);
      CheckRecord(record);
      const bool exists = index >= 0 && static_cast<std::size_t>(index) < ids_.size();
      ASSERT_EQ(record != nullptr, exists);
      if (exists) {
        ASSERT_EQ(record->getId(), ids_[static_cast<std::size_t>(index)]);
        ASSERT_EQ(Peer::CurrentIndex(playlist_), static_cast<uint32_t>(index));
      }
    } else {
      const uint64_t id = SomeId();
      const bool exists = std::find(ids_.begin(), ids_.end(), id) != ids_.end();
      const PLAYLIST_PlaylistData* record = kind == 1 ? playlist_.SeekIdTrackData(static_cast<int32_t>(id))
                                            : kind == 2
                                                ? playlist_.GetSpecificIdTrackData(static_cast<int32_t>(id))
                                                : playlist_.GetCurrentTrackData();
      CheckRecord(record);
      if (kind != 3) {
        ASSERT_EQ(record != nullptr, exists);
        if (exists) {
          ASSERT_EQ(record->getId(), id);
        }
      }
    }
  }

  void Step() {
    const int choice = Pick(100);
    if (choice < insertWeight_) return Insert();
    if (choice < 55) return DeleteId();
    if (choice < 56) {
      if (!deleteAll_) return;
      ASSERT_EQ(playlist_.DeleteAll(), SINK_UPNP_OK);
      for (uint64_t id : ids_) deleted_.insert(id);
      ids_.clear();
      return;
    }
    if (choice < 72) return Seek();
    if (playlist_.GetShuffle() == 1) ++shuffledSteps_;
    if (choice < 82) return CheckRecord(playlist_.Next());
    if (choice < 90) return CheckRecord(playlist_.Prev());
    if (choice < 94) {
      const int value = Pick(4) - 1;
      ASSERT_EQ(playlist_.SetShuffle(value),
                value == 0 || value == 1 ? SINK_UPNP_OK : SINK_UPNP_ERR_NULL_ARGUMENT);
      return;
    }
    if (choice < 97) {
      const int value = Pick(4) - 1;
      ASSERT_EQ(playlist_.SetRepeat(value),
                value == 0 || value == 1 ? SINK_UPNP_OK : SINK_UPNP_ERR_NULL_ARGUMENT);
      return;
    }
    testing::internal::CaptureStdout();
    const int next = playlist_.CheckNext();
    ASSERT_EQ(testing::internal::GetCapturedStdout(), "") << "step " << step_;
    ASSERT_TRUE(next == 0 || next == 1);
  }

  void CheckInvariants() {
    if (testing::Test::HasFatalFailure()) return;
    const std::vector<uint64_t> ids = Peer::Ids(playlist_);
    ASSERT_EQ(ids, ids_) << "step " << step_;
    ASSERT_EQ(std::set<uint64_t>(ids.begin(), ids.end()).size(), ids.size()) << "ids are unique";
    ASSERT_EQ(Peer::LastId(playlist_), lastId_) << "ids only grow";
    for (uint64_t id : ids) ASSERT_TRUE(id >= 1 && id <= lastId_);
    ASSERT_EQ(Peer::Order(playlist_).size(), ids.size()) << "one order entry per track, step " << step_;
    ASSERT_EQ(playlist_.GetTrackCount(), ids.size());
    ASSERT_LE(ids.size(), 1001u);
    largestSize_ = std::max(largestSize_, ids.size());
    // The position always names a track (or is 0 in an empty playlist).
    ASSERT_LT(Peer::CurrentIndex(playlist_), std::max<std::size_t>(ids.size(), 1)) << "step " << step_;
    std::vector<char> storage(9 * ids.size() + 1);
    char* buffer = storage.data();
    ASSERT_EQ(playlist_.GetIdArray(&buffer), SINK_UPNP_OK);
    const std::string text(buffer);
    ASSERT_EQ(text.size(), (ids.size() * 4 + 2) / 3 * 4);
    std::vector<uint32_t> expected;
    for (uint64_t id : ids) expected.push_back(static_cast<uint32_t>(id));
    ASSERT_EQ(DecodeIdArray(text), expected) << "step " << step_;
  }

  ScopedShuffleSource source_{1700000000, /*realGenerator=*/true};
  PLAYLIST_PlaylistManager playlist_;
  std::mt19937 random_;
  int insertWeight_;
  bool deleteAll_;
  std::size_t largestSize_ = 0;
  int refusedInserts_ = 0;
  int shuffledSteps_ = 0;
  int step_ = 0;
  std::vector<uint64_t> ids_;
  std::set<uint64_t> deleted_;
  uint64_t lastId_ = 0;
};

TEST(PlaylistModel, RandomSequencesKeepEveryInvariant) {
  for (uint32_t seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    PlaylistModel model(seed, 35, /*deleteAll=*/true);
    model.Run(3000);
    if (HasFatalFailure()) return;
    EXPECT_GT(model.ShuffledSteps(), 100);  // the sequences do walk shuffled orders
    EXPECT_GT(model.LargestSize(), 10u);
  }
}

TEST(PlaylistModel, RandomSequencesNearTheTrackLimitKeepEveryInvariant) {
  PlaylistModel model(99, 54, /*deleteAll=*/false);
  model.Run(3000);
  EXPECT_EQ(model.LargestSize(), 1001u);
  EXPECT_GT(model.RefusedInserts(), 0);
}

}  // namespace
