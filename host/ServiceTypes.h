// The service types of the renderer's nine services: the catalogue describes them under these names, and
// the parts of the daemon that address one service in particular use the same constants.
#ifndef HOST_SERVICE_TYPES_H_
#define HOST_SERVICE_TYPES_H_

constexpr char HOST_kAVTransportType[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char HOST_kConnectionManagerType[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char HOST_kRenderingControlType[] = "urn:schemas-upnp-org:service:RenderingControl:1";
constexpr char HOST_kProductType[] = "urn:av-openhome-org:service:Product:1";
constexpr char HOST_kPlaylistType[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char HOST_kTimeType[] = "urn:av-openhome-org:service:Time:1";
constexpr char HOST_kInfoType[] = "urn:av-openhome-org:service:Info:1";
constexpr char HOST_kVolumeType[] = "urn:av-openhome-org:service:Volume:1";
constexpr char HOST_kSenderType[] = "urn:av-openhome-org:service:Sender:1";

#endif  // HOST_SERVICE_TYPES_H_
