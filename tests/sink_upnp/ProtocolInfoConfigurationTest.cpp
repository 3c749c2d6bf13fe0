// The sink protocol list read from configuration: which keys are read and in which order, how the entries
// are joined, and the result of every allocation and host failure on the way (fault injection). Leaks on
// the failure paths are caught by the AddressSanitizer build's leak check.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "FaultInjection.h"
#include "ScopedFault.h"
#include "Split.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "sink_upnp/ProtocolInfoConfiguration.h"
#include "sink_upnp/ResultCode.h"

namespace {

using FP = DMR_CMN_FaultPoint;

std::string Key(int number) { return "sinkctss.protocolInfo_" + std::to_string(number); }

// A distinct, valid entry for each number: the number is its content format's subtype.
std::string EntryText(int number) { return "http-get:*:audio/x-" + std::to_string(number) + ":*"; }

void SetEntries(marlo::Properties* properties, int first, int last) {
  for (int number = first; number <= last; ++number) {
    ASSERT_EQ(properties->SetProperty(Key(number).c_str(), EntryText(number).c_str()), 0);
  }
}

std::vector<std::string> ChainTexts(const marlo::ProtocolInfo* chain) {
  std::vector<std::string> texts;
  for (const marlo::ProtocolInfo* entry = chain; entry != nullptr; entry = entry->next) {
    char* text = nullptr;
    if (entry->Get(&text) != 0) {
      texts.push_back("<unprintable>");
      continue;
    }
    texts.emplace_back(text);
    delete[] text;
  }
  return texts;
}

std::vector<std::string> ExpectedTexts(int count) {
  std::vector<std::string> texts;
  for (int number = 0; number < count; ++number) texts.push_back(EntryText(number));
  return texts;
}

// Owns a chain for the length of a test, so that a failing assertion leaks nothing.
class ProtocolInfoChain : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override {
    DMR_CMN_FaultInjection::Reset();
    SINK_UPNP_CleanProtocolInfo(&chain_);
  }

  // Joins the chain; the text, or "<failed N>" with the result.
  std::string Join() {
    char* joined = nullptr;
    const int32_t result = SINK_UPNP_GetProtocolInfo(chain_, &joined);
    if (result != 0) return "<failed " + std::to_string(result) + ">";
    std::string text(joined);
    std::free(joined);
    return text;
  }

  marlo::Properties properties_;
  marlo::ProtocolInfo* chain_ = nullptr;
};

// ---- Reading the keys ----

TEST_F(ProtocolInfoChain, NullPropertiesAnswersGeneric) {
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, nullptr), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, NoKeyAtAllAnswersOutOfRange) {
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_OUT_OF_RANGE);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, MissingKeyZeroAnswersOutOfRangeEvenWhenKeyOneExists) {
  SetEntries(&properties_, 1, 5);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_OUT_OF_RANGE);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, SingleKeyGivesOneParsedEntry) {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"), 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  ASSERT_NE(chain_, nullptr);
  EXPECT_EQ(chain_->next, nullptr);
  EXPECT_STREQ(chain_->GetProtocol(), "http-get");
  EXPECT_STREQ(chain_->GetNetwork(), "*");
  EXPECT_STREQ(chain_->GetContentFormat(), "audio/mpeg");
  EXPECT_STREQ(chain_->GetAdditionalInfo(), "DLNA.ORG_PN=MP3");
}

TEST_F(ProtocolInfoChain, EntriesKeepConfigurationOrder) {
  SetEntries(&properties_, 0, 4);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(5));
}

TEST_F(ProtocolInfoChain, FirstMissingNumberEndsTheList) {
  SetEntries(&properties_, 0, 2);
  SetEntries(&properties_, 4, 8);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(3));
}

TEST_F(ProtocolInfoChain, KeyTenIsReadWholeNotAsKeyOne) {
  SetEntries(&properties_, 0, 10);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  const std::vector<std::string> texts = ChainTexts(chain_);
  ASSERT_EQ(texts.size(), 11u);
  EXPECT_EQ(texts[10], "http-get:*:audio/x-10:*");
  EXPECT_EQ(texts, ExpectedTexts(11));
}

TEST_F(ProtocolInfoChain, MissingKeyTenEndsTheListAtTenEntries) {
  // A key cut to "sinkctss.protocolInfo_1" would find a value here and read on to 100 entries.
  SetEntries(&properties_, 0, 9);
  SetEntries(&properties_, 11, 20);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(10));
}

TEST_F(ProtocolInfoChain, OnlyKeysZeroToNinetyNineAreRead) {
  SetEntries(&properties_, 0, 149);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(100));
}

TEST_F(ProtocolInfoChain, HundredKeysJoinIntoHundredCommaSeparatedEntries) {
  SetEntries(&properties_, 0, 149);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  const std::string joined = Join();
  const std::vector<std::string> parts = Split(joined);
  EXPECT_EQ(parts, ExpectedTexts(100));
  EXPECT_EQ(joined.find(' '), std::string::npos);
}

TEST_F(ProtocolInfoChain, MalformedEntryAnswersGenericAndCleansTheChain) {
  SetEntries(&properties_, 0, 1);
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_2", "http-get:*:audio/mpeg"), 0);
  SetEntries(&properties_, 3, 3);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, EntryWithCommaIsMalformed) {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*,http-get:*:a/b:*"), 0);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, ChainLeftByFailedAttemptIsFreedNotJoined) {
  SetEntries(&properties_, 0, 4);
  {
    // Another failure of the third parse keeps the first two entries.
    ScopedFault fault(FP::kProtocolInfoSet, 3, -1999);
    ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  }
  ASSERT_EQ(ChainTexts(chain_), ExpectedTexts(2));

  marlo::Properties fresh;
  ASSERT_EQ(fresh.SetProperty("sinkctss.protocolInfo_0", "rtsp-rtp-udp:*:audio/L16:*"), 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &fresh), 0);
  EXPECT_EQ(ChainTexts(chain_), std::vector<std::string>{"rtsp-rtp-udp:*:audio/L16:*"});
  EXPECT_EQ(Join(), "rtsp-rtp-udp:*:audio/L16:*");
}

// ---- Failures while reading ----

TEST_F(ProtocolInfoChain, EntryCreationFailureOnFirstEntryAnswersNoMemory) {
  SetEntries(&properties_, 0, 2);
  ScopedFault fault(FP::kProtocolInfoCreation, 1, 0);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, EntryCreationFailureLaterAnswersNoMemoryAndCleansTheChain) {
  SetEntries(&properties_, 0, 4);
  ScopedFault fault(FP::kProtocolInfoCreation, 3, 0);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, ParseWithoutMemoryAnswersNoMemoryAndCleansTheChain) {
  SetEntries(&properties_, 0, 4);
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1997);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, ParseRefusingTheTextAnswersGenericAndCleansTheChain) {
  SetEntries(&properties_, 0, 4);
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1998);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, OtherParseFailureAnswersGenericAndKeepsEarlierEntries) {
  SetEntries(&properties_, 0, 4);
  ScopedFault fault(FP::kProtocolInfoSet, 4, -1999);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(3));
}

TEST_F(ProtocolInfoChain, OtherParseFailureOnFirstEntryLeavesAnEmptyChain) {
  SetEntries(&properties_, 0, 2);
  ScopedFault fault(FP::kProtocolInfoSet, 1, -1);
  EXPECT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(chain_, nullptr);
}

TEST_F(ProtocolInfoChain, EveryCreationFailureAnswersNoMemoryWithNothingLeft) {
  SetEntries(&properties_, 0, 5);
  for (unsigned long nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kProtocolInfoCreation, nth, 0);
    const int32_t result = SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_);
    if (fault.Fired() == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(6));
      EXPECT_EQ(nth, 7u);
      break;
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(chain_, nullptr);
  }
}

// ---- Joining ----

TEST_F(ProtocolInfoChain, JoinOfOneEntryHasNoComma) {
  SetEntries(&properties_, 0, 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(Join(), "http-get:*:audio/x-0:*");
}

TEST_F(ProtocolInfoChain, JoinSeparatesEntriesWithOneCommaAndNoBlanks) {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "  http-get:*:audio/mpeg:*  "), 0);
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", "http-get:*:audio/flac:*"), 0);
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_2", "http-get:*:audio/wav:*"), 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(Join(), "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*,http-get:*:audio/wav:*");
}

TEST_F(ProtocolInfoChain, JoinTakesOneFreshBufferPerEntry) {
  SetEntries(&properties_, 0, 3);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Join(), "http-get:*:audio/x-0:*,http-get:*:audio/x-1:*,http-get:*:audio/x-2:*,http-get:*:audio/x-3:*");
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kMemoryAllocation), 4u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kProtocolInfoGet), 4u);
}

TEST_F(ProtocolInfoChain, JoinWithNullOutAnswersGeneric) {
  SetEntries(&properties_, 0, 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  EXPECT_EQ(SINK_UPNP_GetProtocolInfo(chain_, nullptr), SINK_UPNP_ERR_GENERIC);
}

TEST_F(ProtocolInfoChain, JoinOfEmptyChainAnswersGenericAndStoresNothing) {
  char sentinel = 'x';
  char* joined = &sentinel;
  EXPECT_EQ(SINK_UPNP_GetProtocolInfo(nullptr, &joined), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(joined, &sentinel);
}

TEST_F(ProtocolInfoChain, EntryWithoutMemoryToPrintAnswersNoMemory) {
  SetEntries(&properties_, 0, 2);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  for (unsigned long nth = 1; nth <= 3; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kProtocolInfoGet, nth, -1997);
    char sentinel = 'x';
    char* joined = &sentinel;
    EXPECT_EQ(SINK_UPNP_GetProtocolInfo(chain_, &joined), DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(joined, &sentinel);
  }
}

TEST_F(ProtocolInfoChain, EntryFailingToPrintAnswersGeneric) {
  SetEntries(&properties_, 0, 2);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  for (unsigned long nth = 1; nth <= 3; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kProtocolInfoGet, nth, -1999);
    char sentinel = 'x';
    char* joined = &sentinel;
    EXPECT_EQ(SINK_UPNP_GetProtocolInfo(chain_, &joined), SINK_UPNP_ERR_GENERIC);
    EXPECT_EQ(joined, &sentinel);
  }
}

TEST_F(ProtocolInfoChain, EntryFailingToPrintWithAnotherCodeAnswersGeneric) {
  SetEntries(&properties_, 0, 2);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  const int32_t codes[] = {-1998, -1, 402};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kProtocolInfoGet, 2, code);
    char sentinel = 'x';
    char* joined = &sentinel;
    EXPECT_EQ(SINK_UPNP_GetProtocolInfo(chain_, &joined), SINK_UPNP_ERR_GENERIC);
    EXPECT_EQ(joined, &sentinel);
  }
}

TEST_F(ProtocolInfoChain, EntryNeverParsedCannotBePrinted) {
  // The host's own failure (nothing was set), not an injected one.
  SetEntries(&properties_, 0, 0);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  chain_->next = new (std::nothrow) marlo::ProtocolInfo;
  ASSERT_NE(chain_->next, nullptr);
  char sentinel = 'x';
  char* joined = &sentinel;
  EXPECT_EQ(SINK_UPNP_GetProtocolInfo(chain_, &joined), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(joined, &sentinel);
}

TEST_F(ProtocolInfoChain, EveryJoinBufferFailureAnswersNoMemoryAndStoresNothing) {
  SetEntries(&properties_, 0, 4);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  for (unsigned long nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kMemoryAllocation, nth, 0);
    char sentinel = 'x';
    char* joined = &sentinel;
    const int32_t result = SINK_UPNP_GetProtocolInfo(chain_, &joined);
    if (fault.Fired() == 0) {
      ASSERT_EQ(result, 0);
      EXPECT_EQ(Split(joined), ExpectedTexts(5));
      std::free(joined);
      EXPECT_EQ(nth, 6u);
      break;
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(joined, &sentinel);
  }
  // The chain is unharmed by the failures.
  EXPECT_EQ(ChainTexts(chain_), ExpectedTexts(5));
}

// ---- Cleaning ----

TEST_F(ProtocolInfoChain, CleanOfEmptyChainIsSafe) {
  SINK_UPNP_CleanProtocolInfo(&chain_);
  EXPECT_EQ(chain_, nullptr);
  SINK_UPNP_CleanProtocolInfo(nullptr);
}

TEST_F(ProtocolInfoChain, CleanEmptiesTheChain) {
  SetEntries(&properties_, 0, 3);
  ASSERT_EQ(SINK_UPNP_PrepareProtocolInfo(&chain_, &properties_), 0);
  SINK_UPNP_CleanProtocolInfo(&chain_);
  EXPECT_EQ(chain_, nullptr);
  SINK_UPNP_CleanProtocolInfo(&chain_);
  EXPECT_EQ(chain_, nullptr);
}

// An entry that records its destruction, to see the order and that the virtual destructor is used.
std::vector<int> destroyed;

class CountedEntry : public marlo::ProtocolInfo {
 public:
  explicit CountedEntry(int id) : id_(id) {}
  ~CountedEntry() override { destroyed.push_back(id_); }

 private:
  int id_;
};

TEST_F(ProtocolInfoChain, CleanDeletesHeadFirstThroughTheVirtualDestructor) {
  destroyed.clear();
  marlo::ProtocolInfo* first = new (std::nothrow) CountedEntry(1);
  marlo::ProtocolInfo* second = new (std::nothrow) CountedEntry(2);
  marlo::ProtocolInfo* third = new (std::nothrow) CountedEntry(3);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  ASSERT_NE(third, nullptr);
  first->next = second;
  second->next = third;
  chain_ = first;
  SINK_UPNP_CleanProtocolInfo(&chain_);
  EXPECT_EQ(chain_, nullptr);
  EXPECT_EQ(destroyed, (std::vector<int>{1, 2, 3}));
}

}  // namespace
