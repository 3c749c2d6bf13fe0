#include "ScopedAllocationFailure.h"
#include "marlo/ProtocolInfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "ScopedFault.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kMpeg = "http-get:*:audio/mpeg:*";
constexpr const char* kFlac =
    "http-get:*:audio/flac:DLNA.ORG_PN=FLAC;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";

struct ArrayDeleter {
  void operator()(char* text) const { delete[] text; }
};
using Text = std::unique_ptr<char, ArrayDeleter>;

// The entry printed by Get, "<Get failed: code>" when it fails.
std::string Printed(const marlo::ProtocolInfo& entry) {
  char* raw = nullptr;
  const int32_t result = entry.Get(&raw);
  if (result != 0) return "<Get failed: " + std::to_string(result) + ">";
  const Text text(raw);
  return text.get();
}

// Checks that Set rejects `text` as malformed and that the entry keeps kMpeg.
void ExpectRejectedKeepingOldValue(const char* text) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  EXPECT_EQ(entry.Set(text), -1998);
  EXPECT_EQ(Printed(entry), kMpeg);
  EXPECT_STREQ(entry.GetProtocol(), "http-get");
  EXPECT_STREQ(entry.GetNetwork(), "*");
  EXPECT_STREQ(entry.GetContentFormat(), "audio/mpeg");
  EXPECT_STREQ(entry.GetAdditionalInfo(), "*");
}

}  // namespace

TEST(ProtocolInfo, FieldsAreNullBeforeSet) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.GetProtocol(), nullptr);
  EXPECT_EQ(entry.GetNetwork(), nullptr);
  EXPECT_EQ(entry.GetContentFormat(), nullptr);
  EXPECT_EQ(entry.GetAdditionalInfo(), nullptr);
}

TEST(ProtocolInfo, NextIsNullAfterConstruction) {
  std::unique_ptr<marlo::ProtocolInfo> entry(new (std::nothrow) marlo::ProtocolInfo);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->next, nullptr);
}

TEST(ProtocolInfo, SetParsesAPlainHttpEntry) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set(kMpeg), 0);
  EXPECT_STREQ(entry.GetProtocol(), "http-get");
  EXPECT_STREQ(entry.GetNetwork(), "*");
  EXPECT_STREQ(entry.GetContentFormat(), "audio/mpeg");
  EXPECT_STREQ(entry.GetAdditionalInfo(), "*");
}

TEST(ProtocolInfo, SetKeepsADlnaFourthFieldWhole) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set(kFlac), 0);
  EXPECT_STREQ(entry.GetProtocol(), "http-get");
  EXPECT_STREQ(entry.GetNetwork(), "*");
  EXPECT_STREQ(entry.GetContentFormat(), "audio/flac");
  EXPECT_STREQ(entry.GetAdditionalInfo(),
               "DLNA.ORG_PN=FLAC;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000");
}

TEST(ProtocolInfo, SetKeepsColonsOfTheFourthField) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set("http-get:*:audio/mpeg:urn:x-test:info:"), 0);
  EXPECT_STREQ(entry.GetContentFormat(), "audio/mpeg");
  EXPECT_STREQ(entry.GetAdditionalInfo(), "urn:x-test:info:");
}

TEST(ProtocolInfo, SetParsesAnRtspEntry) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set("rtsp-rtp-udp:*:MP3:*"), 0);
  EXPECT_STREQ(entry.GetProtocol(), "rtsp-rtp-udp");
  EXPECT_STREQ(entry.GetNetwork(), "*");
  EXPECT_STREQ(entry.GetContentFormat(), "MP3");
  EXPECT_STREQ(entry.GetAdditionalInfo(), "*");
}

TEST(ProtocolInfo, SetTrimsBlanksAroundTheWholeText) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set(" \t http-get:*:audio/mpeg:* \t\r\n"), 0);
  EXPECT_STREQ(entry.GetProtocol(), "http-get");
  EXPECT_STREQ(entry.GetAdditionalInfo(), "*");
  EXPECT_EQ(Printed(entry), kMpeg);
}

TEST(ProtocolInfo, SetKeepsSpacesInsideTheText) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set("http-get:*:audio/mpeg:a b"), 0);
  EXPECT_STREQ(entry.GetAdditionalInfo(), "a b");
}

TEST(ProtocolInfo, SetReplacesTheEarlierValue) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  EXPECT_EQ(entry.Set(kFlac), 0);
  EXPECT_STREQ(entry.GetContentFormat(), "audio/flac");
  EXPECT_EQ(Printed(entry), kFlac);
}

TEST(ProtocolInfo, SetRejectsNullAndKeepsTheOldValue) { ExpectRejectedKeepingOldValue(nullptr); }

TEST(ProtocolInfo, SetRejectsAnEmptyTextAndKeepsTheOldValue) { ExpectRejectedKeepingOldValue(""); }

TEST(ProtocolInfo, SetRejectsOnlyBlanksAndKeepsTheOldValue) { ExpectRejectedKeepingOldValue("  \t \r\n "); }

TEST(ProtocolInfo, SetRejectsThreeFieldsAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg");
}

TEST(ProtocolInfo, SetRejectsFiveFieldsWithAnEmptyOneAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*::audio/mpeg:*");
}

TEST(ProtocolInfo, SetRejectsAnEmptyProtocolAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue(":*:audio/mpeg:*");
}

TEST(ProtocolInfo, SetRejectsAnEmptyNetworkAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get::audio/mpeg:*");
}

TEST(ProtocolInfo, SetRejectsAnEmptyContentFormatAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*::*");
}

TEST(ProtocolInfo, SetRejectsAnEmptyAdditionalInfoAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg:");
}

TEST(ProtocolInfo, SetRejectsAnEmptyAdditionalInfoBeforeTrailingBlanksAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg:   ");
}

TEST(ProtocolInfo, SetRejectsACommaInTheProtocolAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get,rtsp:*:audio/mpeg:*");
}

TEST(ProtocolInfo, SetRejectsACommaInTheAdditionalInfoAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg:*,http-get:*:audio/flac:*");
}

TEST(ProtocolInfo, SetRejectsAControlCharacterAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/\x01mpeg:*");
}

TEST(ProtocolInfo, SetRejectsATabInsideTheTextAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\tx");
}

TEST(ProtocolInfo, SetRejectsADeleteCharacterAndKeepsTheOldValue) {
  ExpectRejectedKeepingOldValue("http-get:*:audio/mpeg:\x7f");
}

TEST(ProtocolInfo, FailedSetOnAFreshEntryLeavesItUnset) {
  marlo::ProtocolInfo entry;
  EXPECT_EQ(entry.Set("http-get:*:audio/mpeg"), -1998);
  EXPECT_EQ(entry.GetProtocol(), nullptr);
  EXPECT_EQ(Printed(entry), "<Get failed: -1999>");
}

TEST(ProtocolInfo, GetPrintsExactlyTheTextIntoANewArray) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kFlac), 0);
  char* raw = nullptr;
  EXPECT_EQ(entry.Get(&raw), 0);
  ASSERT_NE(raw, nullptr);
  const Text text(raw);  // released with delete[], as the caller must
  EXPECT_EQ(std::strlen(text.get()), std::strlen(kFlac));
  EXPECT_STREQ(text.get(), kFlac);
}

TEST(ProtocolInfo, GetGivesANewArrayOnEachCall) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  char* first = nullptr;
  char* second = nullptr;
  ASSERT_EQ(entry.Get(&first), 0);
  ASSERT_EQ(entry.Get(&second), 0);
  const Text firstText(first);
  const Text secondText(second);
  EXPECT_NE(first, second);
  EXPECT_STREQ(first, kMpeg);
  EXPECT_STREQ(second, kMpeg);
}

TEST(ProtocolInfo, GetBeforeSetFailsAndLeavesOutUntouched) {
  marlo::ProtocolInfo entry;
  char sentinel = 'x';
  char* out = &sentinel;
  EXPECT_EQ(entry.Get(&out), -1999);
  EXPECT_EQ(out, &sentinel);
}

TEST(ProtocolInfo, GetRejectsANullOut) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  EXPECT_EQ(entry.Get(nullptr), -1998);
}

TEST(ProtocolInfo, ChainOfThreeIsLinkedThroughNextAndDeletedOneByOne) {
  const char* const texts[] = {kMpeg, kFlac, "rtsp-rtp-udp:*:MP3:*"};
  marlo::ProtocolInfo* head = nullptr;
  marlo::ProtocolInfo** tail = &head;
  for (const char* text : texts) {
    marlo::ProtocolInfo* entry = new (std::nothrow) marlo::ProtocolInfo;
    ASSERT_NE(entry, nullptr);
    ASSERT_EQ(entry->Set(text), 0);
    *tail = entry;
    tail = &entry->next;
  }

  int count = 0;
  for (const marlo::ProtocolInfo* entry = head; entry != nullptr; entry = entry->next) {
    EXPECT_EQ(Printed(*entry), texts[count]);
    ++count;
  }
  EXPECT_EQ(count, 3);

  // Deleting an entry leaves the rest of the chain alone: each is deleted by whoever keeps the chain.
  while (head != nullptr) {
    marlo::ProtocolInfo* rest = head->next;
    delete head;
    head = rest;
    if (head != nullptr) {
      EXPECT_NE(head->GetProtocol(), nullptr);
    }
  }
}

TEST(ProtocolInfo, SetAndGetNeitherReadNorWriteNext) {
  marlo::ProtocolInfo entry;
  marlo::ProtocolInfo other;
  entry.next = &other;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  ASSERT_EQ(entry.Set("malformed"), -1998);
  EXPECT_EQ(Printed(entry), kMpeg);
  EXPECT_EQ(entry.next, &other);
  EXPECT_EQ(other.GetProtocol(), nullptr);
}

namespace {

class TrackedProtocolInfo : public marlo::ProtocolInfo {
 public:
  explicit TrackedProtocolInfo(bool* destroyed) : destroyed_(destroyed) {}
  ~TrackedProtocolInfo() override { *destroyed_ = true; }

 private:
  bool* destroyed_;
};

}  // namespace

TEST(ProtocolInfo, DeletingThroughABasePointerRunsTheDerivedDestructor) {
  bool destroyed = false;
  marlo::ProtocolInfo* entry = new (std::nothrow) TrackedProtocolInfo(&destroyed);
  ASSERT_NE(entry, nullptr);
  ASSERT_EQ(entry->Set(kMpeg), 0);
  delete entry;
  EXPECT_TRUE(destroyed);
}

TEST(ProtocolInfo, CreationFaultAnswersNull) {
  const ScopedFault fault(DMR_CMN_FaultPoint::kProtocolInfoCreation, 1, -1997);
  marlo::ProtocolInfo* entry = new (std::nothrow) marlo::ProtocolInfo;
  EXPECT_EQ(entry, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
  delete entry;
}

TEST(ProtocolInfo, CreationFaultOnTheSecondCreationLetsTheFirstThrough) {
  const ScopedFault fault(DMR_CMN_FaultPoint::kProtocolInfoCreation, 2, -1997);
  std::unique_ptr<marlo::ProtocolInfo> first(new (std::nothrow) marlo::ProtocolInfo);
  std::unique_ptr<marlo::ProtocolInfo> second(new (std::nothrow) marlo::ProtocolInfo);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
}

TEST(ProtocolInfo, SetFaultAnswersTheInjectedCodeAndKeepsTheOldValue) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kProtocolInfoSet, 1, -1234);
    EXPECT_EQ(entry.Set(kFlac), -1234);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Printed(entry), kMpeg);
}

TEST(ProtocolInfo, SetFaultOnAFreshEntryLeavesItUnset) {
  marlo::ProtocolInfo entry;
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kProtocolInfoSet, 1, -1997);
    EXPECT_EQ(entry.Set(kMpeg), -1997);
  }
  EXPECT_EQ(entry.GetProtocol(), nullptr);
}

TEST(ProtocolInfo, GetFaultAnswersTheInjectedCodeAndLeavesOutUntouched) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  char sentinel = 'x';
  char* out = &sentinel;
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kProtocolInfoGet, 1, -1997);
    EXPECT_EQ(entry.Get(&out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(out, &sentinel);
  EXPECT_EQ(Printed(entry), kMpeg);
}

TEST(ProtocolInfo, SetAnswersNoMemoryAndKeepsTheOldValue) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  int32_t result = 0;
  {
    const ScopedAllocationFailure failure(1, true);
    result = entry.Set(kFlac);
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(Printed(entry), kMpeg);
}

TEST(ProtocolInfo, GetAnswersNoMemoryAndLeavesOutUntouched) {
  marlo::ProtocolInfo entry;
  ASSERT_EQ(entry.Set(kMpeg), 0);
  char sentinel = 'x';
  char* out = &sentinel;
  int32_t result = 0;
  {
    const ScopedAllocationFailure failure(1, true);
    result = entry.Get(&out);
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(out, &sentinel);
}
