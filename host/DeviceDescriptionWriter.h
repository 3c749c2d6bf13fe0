// HOST_WriteDeviceDescription: the renderer's device description, the document a control point fetches
// first: one root device urn:schemas-upnp-org:device:MediaRenderer:1 with the DLNA and Windows markers
// that make it a digital media renderer, its icons, and the nine services of the catalogue with their URLs.
#ifndef HOST_DEVICE_DESCRIPTION_WRITER_H_
#define HOST_DEVICE_DESCRIPTION_WRITER_H_

#include <string>
#include <vector>

#include "host/PublishedServices.h"

// What names this renderer. Every text may hold anything a configuration does (escaped on the way out).
struct HOST_DeviceIdentity {
  std::string friendlyName;
  std::string udn;  // "uuid:..."
  std::string manufacturer;
  std::string manufacturerUrl;
  std::string modelName;
  std::string modelNumber;
  std::string modelDescription;
  std::string modelUrl;
  std::string serialNumber;
  std::string presentationUrl;
};

// One icon of the device, a file of the document root.
struct HOST_Icon {
  const char* mimetype;
  int width;
  int height;
  int depth;
  const char* url;  // an absolute path on the daemon's HTTP server, and the file's path below the root
};

// The icons the description lists, smallest first.
const std::vector<HOST_Icon>& HOST_DeviceIcons();

// The device description (UPnP 1.0), listing the services of the catalogue that `published` names, in
// the catalogue's order; the DLNA and Windows markers only when AVTransport is among them. friendlyName, manufacturer, modelName and UDN are always written; each other
// element of the identity is left out when its text is empty. Deterministic; "" when libxml2 had no
// memory.
std::string HOST_WriteDeviceDescription(const HOST_DeviceIdentity& identity,
                                        HOST_PublishedServices published = HOST_PublishedServices::Both);

#endif  // HOST_DEVICE_DESCRIPTION_WRITER_H_
