#include <gtest/gtest.h>

#include "IcyMetadata.h"

TEST(IcyMetadataBlock, LengthByteCountsSixteenByteUnitsAndTheRestIsZeroPadding) {
  // "StreamTitle='Song A';" is 21 bytes: two units of 16, 11 bytes of padding.
  const std::string block = PLAYER_IcyMetadataBlock("Song A");
  ASSERT_EQ(block.size(), 1u + 32u);
  EXPECT_EQ(block[0], '\x02');
  EXPECT_EQ(block.substr(1, 21), "StreamTitle='Song A';");
  EXPECT_EQ(block.substr(22), std::string(11, '\0'));
}

TEST(IcyMetadataBlock, TextOfWholeUnitsHasNoPadding) {
  // "StreamTitle='';" is 15 bytes, with a one-letter title 16.
  const std::string block = PLAYER_IcyMetadataBlock("A");
  EXPECT_EQ(block, std::string("\x01StreamTitle='A';"));
}

TEST(IcyMetadataBlock, OverlongTitleIsCutToTheLargestBlock) {
  const std::string block = PLAYER_IcyMetadataBlock(std::string(5000, 'x'));
  ASSERT_EQ(block.size(), 1u + 255u * 16u);
  EXPECT_EQ(static_cast<unsigned char>(block[0]), 255u);
  EXPECT_EQ(block.substr(block.size() - 2), "';");
}

TEST(IcyMetadataBlock, UnchangedBlockIsOneZeroByte) {
  EXPECT_EQ(PLAYER_IcyUnchangedBlock(), std::string(1, '\0'));
}
