// PLAYLIST_PlaylistData: one track of the OpenHome playlist: its URI, its metadata text, the playlist id the
// manager gave it, and two numbering fields kept for the interface.
//
// Ownership. The two strings are private heap copies (allocated with the runtime's DMR_CMN_Malloc, length
// plus the terminator, released with free() by the destructor). The getters hand out the record's own
// buffers; they stay valid while the record lives.
//
// Write-once strings. setUri and setMetaData succeed once per record: there is no operation that replaces
// or clears the uri or the metadata of a record.
//
// Shallow copy, on purpose. Copying a record copies its fields as they stand, the two string pointers
// included. PLAYLIST_PlaylistManager relies on it: it fills a staging record on the heap, copies it into
// its list and from then on the element in the list owns the strings; the staging record gives them up
// before it goes. Whoever copies a record must keep that rule: every string buffer is freed exactly once,
// by the one record that lives on (in the playlist, the list element).
//
// Creation goes through new (std::nothrow) only, so that "no memory" is a null pointer the caller can
// handle and the runtime's fault injection (kMemoryAllocation) can produce.
//
// Thread safety: none; a record belongs to one playlist, whose calls never overlap.
#ifndef PLAYLIST_PLAYLIST_DATA_H_
#define PLAYLIST_PLAYLIST_DATA_H_

#include <cstddef>
#include <cstdint>
#include <new>

#include "sink_upnp/Export.h"

class PLAYLIST_PlaylistManager;

class SINK_UPNP_EXPORT PLAYLIST_PlaylistData {
 public:
  // Every field zero or null.
  PLAYLIST_PlaylistData() noexcept;
  // Frees both strings (free() of a null pointer when a string was never set).
  virtual ~PLAYLIST_PlaylistData();

  // Shallow: the copy shares the source's string buffers (see the class comment).
  PLAYLIST_PlaylistData(const PLAYLIST_PlaylistData&) = default;
  PLAYLIST_PlaylistData& operator=(const PLAYLIST_PlaylistData&) = default;

  // Null when there is no memory (or fault injection says so). Plain `new` is not offered.
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // Copies `uri` with its terminator ("" is accepted: a one-byte buffer). Returns 0; -999 when uri is
  // null; -1 when a uri is already set (the old one is kept); -989 when there is no memory (the field
  // stays null and the call may be repeated).
  int32_t setUri(const char* uri);
  // The same rules as setUri, for the metadata text.
  int32_t setMetaData(const char* metadata);
  // Returns 0; -999 for 0 (never a valid id), the field unchanged.
  int32_t setId(uint64_t id);
  // Returns 0; -999 for 0, the field unchanged. Nothing in the playlist uses the track numbers.
  int32_t setTrackNumber(uint32_t trackNumber);
  int32_t setShuffleTrackNumber(uint32_t shuffleTrackNumber);

  // The record's own buffers, or null when not set.
  char* getUri() const { return uri_; }
  char* getMetaData() const { return metadata_; }
  uint64_t getId() const { return id_; }
  uint32_t getTrackNumber() const { return trackNumber_; }
  uint32_t getShuffleTrackNumber() const { return shuffleTrackNumber_; }

 private:
  friend class PLAYLIST_PlaylistManager;

  // The staging record's side of the hand-over: once its copy lives in the list, it forgets the buffers
  // that the copy now owns, so that only the copy frees them.
  void GiveUpStrings() noexcept {
    metadata_ = nullptr;
    uri_ = nullptr;
  }

  // In this order, the record's fixed layout.
  char* metadata_;
  uint32_t trackNumber_;
  uint64_t id_;
  char* uri_;
  uint32_t shuffleTrackNumber_;
};

#endif  // PLAYLIST_PLAYLIST_DATA_H_
