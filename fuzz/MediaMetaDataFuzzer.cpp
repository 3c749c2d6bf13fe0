// Checks corva::MediaMetaData::SetConformMetaData with arbitrary text (twice, so that the second replaces
// the first): it answers 0 or -1, keeps the text it was given, every getter answers a text (never null,
// also for a resource index past the end), and nothing crashes or leaks.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "FuzzCheck.h"
#include "corva/MediaMetaData.h"

namespace {

void CheckText(const char* text) { FUZZ_CHECK(text != nullptr && std::strlen(text) < (1u << 24)); }

void Load(corva::MediaMetaData& metaData, const std::string& text) {
  const int32_t result = metaData.SetConformMetaData(text.c_str());
  FUZZ_CHECK(result == 0 || result == -1);
  FUZZ_CHECK(text == metaData.GetMetaDataText());
  for (const char* field : {metaData.GetTitle(), metaData.GetCreator(), metaData.GetArtist(), metaData.GetAlbum(),
                            metaData.GetGenre(), metaData.GetClass(), metaData.GetAlbumArtURI(), metaData.GetURI(),
                            metaData.GetProtocolInfo(), metaData.GetDuration(), metaData.GetSize(),
                            metaData.GetBitrate(), metaData.GetSampleFrequency(), metaData.GetNrAudioChannels()}) {
    CheckText(field);
  }
  const std::size_t count = metaData.GetResourceCount();
  if (result != 0) FUZZ_CHECK(count == 0 && metaData.GetTitle()[0] == '\0');
  for (std::size_t i = 0; i <= count; ++i) {
    for (const char* field : {metaData.GetResourceURI(i), metaData.GetResourceProtocolInfo(i),
                              metaData.GetResourceDuration(i), metaData.GetResourceSize(i),
                              metaData.GetResourceBitrate(i), metaData.GetResourceSampleFrequency(i),
                              metaData.GetResourceNrAudioChannels(i), metaData.GetResourceBitsPerSample(i)}) {
      CheckText(field);
    }
  }
  if (count > 0) FUZZ_CHECK(std::strcmp(metaData.GetURI(), metaData.GetResourceURI(0)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  // The input is two texts, split at its first NUL (a C string ends there anyway).
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t split = input.find('\0');
  corva::MediaMetaData metaData;
  Load(metaData, input.substr(0, split));
  if (split != std::string::npos) Load(metaData, input.substr(split + 1).c_str());
  return 0;
}
