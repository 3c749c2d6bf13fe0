// TrackMetaData: the DIDL-Lite of one music track, grown with <res> entries to about `approximateSize`
// bytes, as the benchmarks hand it to the runtime and the stores. Its title and its URLs carry an
// escaped ampersand, so that the XML escaping has something to do.
#ifndef BENCH_TRACK_META_DATA_H_
#define BENCH_TRACK_META_DATA_H_

#include <cstddef>
#include <string>

inline std::string TrackMetaData(std::size_t approximateSize) {
  std::string didl =
      "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
      "<item id=\"1\" parentID=\"0\" restricted=\"1\"><dc:title>Track &amp; Title</dc:title>"
      "<upnp:artist>Artist</upnp:artist><upnp:album>Album</upnp:album>"
      "<upnp:class>object.item.audioItem.musicTrack</upnp:class>";
  while (didl.size() < approximateSize) {
    didl += "<res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:04:31.000\" size=\"31000000\" "
            "sampleFrequency=\"44100\">http://127.0.0.1:8200/music/track.flac?id=1&amp;fmt=flac</res>";
  }
  return didl + "</item></DIDL-Lite>";
}

#endif  // BENCH_TRACK_META_DATA_H_
