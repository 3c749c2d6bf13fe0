// The metadata block an ICY stream interleaves with its audio: one length byte L, then L * 16 bytes of
// "StreamTitle='...';" padded with zero bytes. A block of the single byte 0 says nothing changed.
#ifndef TESTS_PLAYER_SUPPORT_ICY_METADATA_H_
#define TESTS_PLAYER_SUPPORT_ICY_METADATA_H_

#include <string>

// The block that announces `title`. A title too long for the 255 * 16 bytes a block can hold is cut.
std::string PLAYER_IcyMetadataBlock(const std::string& title);

// The block that announces no change.
inline std::string PLAYER_IcyUnchangedBlock() { return std::string(1, '\0'); }

#endif  // TESTS_PLAYER_SUPPORT_ICY_METADATA_H_
