// HOST_StatusReader: reads the live part of the status page (transport, track, playlist, volume) out of
// the service objects and the daemon's own services, through the actions a control point would send:
// AVTransport GetTransportInfo and GetPositionInfo, OpenHome Playlist IdArray, Id, ReadList, Repeat and
// Shuffle, OpenHome Volume Volume and Mute. None of them changes anything, and each answers from the
// state its owner keeps, so the page never reads another thread's data.
//
// The titles of the playlist's tracks are kept by id between reads: an id names one track for as long
// as the playlist lives (ids are never given twice), so that a page polling once a second costs one
// ReadList per new track, not one per track and second.
//
// Main loop only, and only while the service objects run (between their Start and Stop).
#ifndef HOST_STATUS_READER_H_
#define HOST_STATUS_READER_H_

#include <cstdint>
#include <map>
#include <string>

#include "StatusReport.h"

namespace marlo {
class SinkContentTransferSubsystem;
}
class HOST_HostServices;

class HOST_StatusReader {
 public:
  // Every pointer must outlive the reader.
  HOST_StatusReader(marlo::SinkContentTransferSubsystem* standardServices,
                    marlo::SinkContentTransferSubsystem* openHomeServices, HOST_HostServices* hostServices);

  // Fills the transport, track, playlist and volume of *report; what could not be read is named in
  // report->problems and left empty.
  void Read(HOST_StatusReport* report);

 private:
  struct Titles {
    std::string title;
    std::string artist;
  };

  void ReadTransport(HOST_StatusReport* report);
  void ReadPlaylist(HOST_StatusReport* report);
  void ReadVolume(HOST_StatusReport* report);
  bool TitlesOf(uint32_t id, Titles* titles, std::string* error);

  marlo::SinkContentTransferSubsystem* standardServices_;
  marlo::SinkContentTransferSubsystem* openHomeServices_;
  HOST_HostServices* hostServices_;
  std::map<uint32_t, Titles> titles_;  // of the tracks shown last time, by id
};

#endif  // HOST_STATUS_READER_H_
