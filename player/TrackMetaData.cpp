#include "TrackMetaData.h"

#include <cstdint>

#include "TimeText.h"
#include "corva/MediaMetaData.h"

std::string PLAYER_EscapeXml(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&apos;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string PLAYER_MetaDataWithTitle(const std::string& original, const std::string& uri,
                                     const std::string& title) {
  corva::MediaMetaData parsed;
  const bool known = !original.empty() && parsed.SetConformMetaData(original.c_str()) == 0;
  auto field = [&](const char* value) { return known ? std::string(value) : std::string(); };

  const std::string itemClass = field(parsed.GetClass());
  std::string document =
      "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
      "<item id=\"0\" parentID=\"-1\" restricted=\"1\">";
  document += "<dc:title>" + PLAYER_EscapeXml(title) + "</dc:title>";
  const std::string artist = field(parsed.GetArtist());
  if (!artist.empty()) document += "<upnp:artist>" + PLAYER_EscapeXml(artist) + "</upnp:artist>";
  const std::string album = field(parsed.GetAlbum());
  if (!album.empty()) document += "<upnp:album>" + PLAYER_EscapeXml(album) + "</upnp:album>";
  const std::string art = field(parsed.GetAlbumArtURI());
  if (!art.empty()) document += "<upnp:albumArtURI>" + PLAYER_EscapeXml(art) + "</upnp:albumArtURI>";
  document += "<upnp:class>" +
              PLAYER_EscapeXml(itemClass.empty() ? "object.item.audioItem.audioBroadcast" : itemClass) +
              "</upnp:class>";
  const std::string resource = field(parsed.GetURI());
  const std::string protocolInfo = field(parsed.GetProtocolInfo());
  document += "<res protocolInfo=\"" +
              PLAYER_EscapeXml(protocolInfo.empty() ? "http-get:*:*:*" : protocolInfo) + "\">" +
              PLAYER_EscapeXml(resource.empty() ? uri : resource) + "</res>";
  document += "</item></DIDL-Lite>";
  return document;
}

int64_t PLAYER_MetaDataDuration(const std::string& metadata) {
  if (metadata.empty()) return -1;
  corva::MediaMetaData parsed;
  if (parsed.SetConformMetaData(metadata.c_str()) != 0) return -1;
  return PLAYER_ParseTime(parsed.GetDuration());
}
