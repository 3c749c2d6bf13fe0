#include <gtest/gtest.h>

#include "ByteRange.h"

namespace {

using Kind = PLAYER_ByteRange::Kind;

void ExpectPart(const std::string& header, std::uint64_t size, std::uint64_t first, std::uint64_t last) {
  const PLAYER_ByteRange range = PLAYER_ResolveByteRange(header, size);
  EXPECT_EQ(range.kind, Kind::kPart) << header;
  EXPECT_EQ(range.first, first) << header;
  EXPECT_EQ(range.last, last) << header;
}

}  // namespace

TEST(ByteRange, ClosedRangeIsExactlyThoseBytes) { ExpectPart("bytes=10-19", 100, 10, 19); }

TEST(ByteRange, OpenRangeRunsToTheEnd) { ExpectPart("bytes=10-", 100, 10, 99); }

TEST(ByteRange, EndPastTheSizeIsCutToTheLastByte) { ExpectPart("bytes=90-500", 100, 90, 99); }

TEST(ByteRange, SuffixRangeIsTheLastBytesOrTheWholeResource) {
  ExpectPart("bytes=-10", 100, 90, 99);
  ExpectPart("bytes=-500", 100, 0, 99);
}

TEST(ByteRange, StartAtOrPastTheEndIsUnsatisfiable) {
  EXPECT_EQ(PLAYER_ResolveByteRange("bytes=100-", 100).kind, Kind::kUnsatisfiable);
  EXPECT_EQ(PLAYER_ResolveByteRange("bytes=200-300", 100).kind, Kind::kUnsatisfiable);
  EXPECT_EQ(PLAYER_ResolveByteRange("bytes=-0", 100).kind, Kind::kUnsatisfiable);
  EXPECT_EQ(PLAYER_ResolveByteRange("bytes=0-", 0).kind, Kind::kUnsatisfiable);
}

TEST(ByteRange, MalformedOrMultipleRangesAreIgnored) {
  for (const char* header : {"bytes=a-b", "items=0-1", "bytes=5-2", "bytes=0-1,3-4", "bytes=-", "bytes=1"}) {
    EXPECT_EQ(PLAYER_ResolveByteRange(header, 100).kind, Kind::kWhole) << header;
  }
}
