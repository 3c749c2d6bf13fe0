// The bound on a ReadList answer, through the daemon's router without a network: answers up to the bound
// exactly are the service object's own, one byte more is refused before the answer is built.
#include <gtest/gtest.h>

#include <string>

#include "ReadListBound.h"
#include "RendererFixture.h"
#include "ServiceTypes.h"
#include "UPnPErrors.h"

namespace {

class ReadListBound : public RendererFixture {
 protected:
  void SetUp() override { StartRenderer(); }

  std::string Insert(const std::string& metadata) {
    const HOST_ActionOutcome outcome = Perform(HOST_kPlaylistType, "Insert",
                                               {{"AfterId", "0"}, {"Uri", "http://127.0.0.1:9/x.wav"}, {"Metadata", metadata}});
    EXPECT_EQ(outcome.errorCode, 0) << outcome.errorDescription;
    return outcome.out.size() == 1 ? outcome.out[0].second : "";
  }

  HOST_ActionOutcome ReadList(const std::string& idList) {
    return Perform(HOST_kPlaylistType, "ReadList", {{"IdList", idList}});
  }

  // The length of the TrackList answered for `idList`; fails the test when there is none.
  std::size_t Length(const std::string& idList) {
    const HOST_ActionOutcome outcome = ReadList(idList);
    EXPECT_EQ(outcome.errorCode, 0) << outcome.errorDescription;
    return outcome.out.size() == 1 ? outcome.out[0].second.size() : 0;
  }

  static std::string Repeated(const std::string& id, std::size_t count, const std::string& last) {
    std::string list;
    for (std::size_t i = 0; i < count; ++i) list += id + " ";
    return list + last;
  }
};

TEST_F(ReadListBound, AnAnswerOfExactlyTheBoundIsAnsweredAndOneByteMoreIsRefused) {
  const std::size_t frame = Length("");
  const std::string large = Insert(std::string(100000, 'a'));
  const std::size_t largeEntry = Length(large) - frame;
  const std::size_t copies = (HOST_kMaxReadListReplyBytes - frame) / largeEntry - 1;
  // A last track whose entry fills what is left to the byte.
  const std::string probe = Insert("");
  const std::size_t emptyEntry = Length(probe) - frame;
  const std::size_t rest = HOST_kMaxReadListReplyBytes - frame - copies * largeEntry;
  ASSERT_GT(rest, emptyEntry);
  const std::string filling = Insert(std::string(rest - emptyEntry, 'b'));
  ASSERT_EQ(filling.size(), probe.size()) << "the ids must have as many digits for the sum to hold";
  const std::string overfilling = Insert(std::string(rest - emptyEntry + 1, 'b'));
  ASSERT_EQ(overfilling.size(), probe.size());

  const HOST_ActionOutcome fits = ReadList(Repeated(large, copies, filling));
  ASSERT_EQ(fits.errorCode, 0) << fits.errorDescription;
  ASSERT_EQ(fits.out.size(), 1u);
  EXPECT_EQ(fits.out[0].second.size(), HOST_kMaxReadListReplyBytes);

  const HOST_ActionOutcome over = ReadList(Repeated(large, copies, overfilling));
  EXPECT_EQ(over.errorCode, HOST_kActionFailed);
  EXPECT_EQ(over.errorDescription, HOST_kActionFailedText);
  EXPECT_TRUE(over.out.empty());
}

TEST_F(ReadListBound, IdsAreCountedAsThePlaylistReadsThemAndUnknownIdsCostNothing) {
  const std::size_t frame = Length("");
  const std::string large = Insert(std::string(100000, 'a'));
  const std::size_t largeEntry = Length(large) - frame;
  const std::size_t copies = (HOST_kMaxReadListReplyBytes - frame) / largeEntry;
  // "<id>x" reads as <id>, as the playlist reads it; ids that name no track add nothing to the answer.
  std::string unknown;
  for (int id = 1000; id < 101000; ++id) unknown += " " + std::to_string(id);
  const HOST_ActionOutcome fits = ReadList(Repeated(large + "x", copies - 1, large) + unknown);
  ASSERT_EQ(fits.errorCode, 0) << fits.errorDescription;
  EXPECT_EQ(fits.out[0].second.size(), frame + copies * largeEntry);
  const HOST_ActionOutcome over = ReadList(Repeated(large + "x", copies, large) + unknown);
  EXPECT_EQ(over.errorCode, HOST_kActionFailed);
}

}  // namespace
