// corva::MediaMetaData: the metadata of one media item, read from DIDL-Lite.
//
// SetConformMetaData takes the DIDL-Lite text that travels with a URI (CurrentURIMetaData, an OpenHome
// track's Metadata) and keeps the fields of its first item (or, without an item, its first container):
// title, creator, artist, album, genre, class, album art, and every <res> with its attributes.
// It tolerates what real media servers send: undeclared namespace prefixes, stray whitespace, entities,
// a missing DIDL-Lite wrapper around the item, unknown elements.
//
// Every getter answers "" for a field the metadata does not have; none answers null.
#ifndef CORVA_MEDIA_META_DATA_H_
#define CORVA_MEDIA_META_DATA_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "dmr_cmn/Visibility.h"

namespace corva {

class MediaMetaData {
 public:
  MediaMetaData();
  ~MediaMetaData();

  MediaMetaData(const MediaMetaData&) = delete;
  MediaMetaData& operator=(const MediaMetaData&) = delete;

  // Replaces the content with the metadata of `didl`. Returns 0 (also for empty or blank text, which
  // leaves every field empty); -1 for null text or text that holds no DIDL-Lite item or container (every
  // field is then empty); DMR_CMN_ERR_NO_MEMORY (-989).
  int32_t SetConformMetaData(const char* didl);

  // The text last given to SetConformMetaData ("" before).
  const char* GetMetaDataText() const;

  const char* GetTitle() const;       // dc:title
  const char* GetCreator() const;     // dc:creator
  const char* GetArtist() const;      // the first upnp:artist, else dc:creator
  const char* GetAlbum() const;       // upnp:album
  const char* GetGenre() const;       // upnp:genre
  const char* GetClass() const;       // upnp:class, e.g. "object.item.audioItem.musicTrack"
  const char* GetAlbumArtURI() const; // the first upnp:albumArtURI

  // The item's resources (<res>), in document order.
  std::size_t GetResourceCount() const;
  const char* GetResourceURI(std::size_t index) const;           // the element's text
  const char* GetResourceProtocolInfo(std::size_t index) const;  // protocolInfo
  const char* GetResourceDuration(std::size_t index) const;      // duration, e.g. "0:03:25.000"
  const char* GetResourceSize(std::size_t index) const;          // size in bytes
  const char* GetResourceBitrate(std::size_t index) const;       // bitrate in bytes per second
  const char* GetResourceSampleFrequency(std::size_t index) const;
  const char* GetResourceNrAudioChannels(std::size_t index) const;
  const char* GetResourceBitsPerSample(std::size_t index) const;

  // The same fields of the first resource ("" without one).
  const char* GetURI() const;
  const char* GetProtocolInfo() const;
  const char* GetDuration() const;
  const char* GetSize() const;
  const char* GetBitrate() const;
  const char* GetSampleFrequency() const;
  const char* GetNrAudioChannels() const;

 private:
  struct Resource {
    std::string uri;
    std::string protocolInfo;
    std::string duration;
    std::string size;
    std::string bitrate;
    std::string sampleFrequency;
    std::string nrAudioChannels;
    std::string bitsPerSample;
  };

  // The fields of one item. SetConformMetaData builds them aside and swaps them in, so that running out
  // of memory halfway leaves the earlier content whole.
  struct Fields {
    std::string title;
    std::string creator;
    std::string artist;
    std::string album;
    std::string genre;
    std::string itemClass;
    std::string albumArtURI;
    std::vector<Resource> resources;
  };

  // Fills *fields from the first item (else the first container) of `text`; false, with *fields
  // untouched, when the text holds neither. May throw std::bad_alloc.
  DMR_CMN_HIDDEN static bool Parse(const std::string& text, Fields* fields);

  DMR_CMN_HIDDEN const Resource* ResourceAt(std::size_t index) const;

  std::string text_;
  Fields fields_;
};

}  // namespace corva

#endif  // CORVA_MEDIA_META_DATA_H_
