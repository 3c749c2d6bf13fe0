// The one byte range of a "Range: bytes=..." request header, resolved against a resource's size, as the
// test HTTP server answers it.
#ifndef TESTS_PLAYER_SUPPORT_BYTE_RANGE_H_
#define TESTS_PLAYER_SUPPORT_BYTE_RANGE_H_

#include <cstdint>
#include <string>

struct PLAYER_ByteRange {
  enum class Kind {
    kWhole,          // no usable range: answer 200 with the whole resource
    kPart,           // answer 206 with bytes first..last (inclusive)
    kUnsatisfiable,  // answer 416 with "Content-Range: bytes */size"
  };
  Kind kind = Kind::kWhole;
  std::uint64_t first = 0;
  std::uint64_t last = 0;
};

// Resolves `header` (the Range header's value) for a resource of `size` bytes: "bytes=a-b" (b past the end
// is cut to the end), "bytes=a-" and "bytes=-n" (the last n bytes). A range that starts at or past the end
// is unsatisfiable, and so is every range of an empty resource. A header that does not parse, or asks for
// several ranges, is ignored (kWhole), which HTTP allows a server to do.
PLAYER_ByteRange PLAYER_ResolveByteRange(const std::string& header, std::uint64_t size);

#endif  // TESTS_PLAYER_SUPPORT_BYTE_RANGE_H_
