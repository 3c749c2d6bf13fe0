#include "host/DeviceDescriptionWriter.h"

#include <string>

#include "host/ServiceCatalogue.h"
#include "host/XmlWriter.h"

namespace {

constexpr char kDeviceNamespace[] = "urn:schemas-upnp-org:device-1-0";
constexpr char kDeviceType[] = "urn:schemas-upnp-org:device:MediaRenderer:1";

// The markers by which DLNA control points and Windows know a digital media renderer.
constexpr char kDlnaNamespace[] = "urn:schemas-dlna-org:device-1-0";
constexpr char kDlnaDocument[] = "DMR-1.50";
constexpr char kPnpxNamespace[] = "http://schemas.microsoft.com/windows/pnpx/2005/11";
constexpr char kPnpxCompatibleId[] = "MS_DigitalMediaDeviceClass_DMR_V001";
constexpr char kDeviceFoundationNamespace[] = "http://schemas.microsoft.com/windows/2008/09/devicefoundation";
constexpr char kDeviceCategory[] = "Multimedia.DMR";

void ElementUnlessEmpty(HOST_XmlWriter& writer, const char* name, const std::string& text) {
  if (!text.empty()) writer.Element(name, text);
}

void WriteIcons(HOST_XmlWriter& writer) {
  writer.Start("iconList");
  for (const HOST_Icon& icon : HOST_DeviceIcons()) {
    writer.Start("icon");
    writer.Element("mimetype", icon.mimetype);
    writer.Element("width", std::to_string(icon.width));
    writer.Element("height", std::to_string(icon.height));
    writer.Element("depth", std::to_string(icon.depth));
    writer.Element("url", icon.url);
    writer.End();
  }
  writer.End();
}

void WriteServices(HOST_XmlWriter& writer, HOST_PublishedServices published) {
  writer.Start("serviceList");
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    if (!HOST_IsPublished(published, service.serviceType)) continue;
    writer.Start("service");
    writer.Element("serviceType", service.serviceType);
    writer.Element("serviceId", service.serviceId);
    writer.Element("SCPDURL", HOST_ScpdUrl(service));
    writer.Element("controlURL", HOST_ControlUrl(service));
    writer.Element("eventSubURL", HOST_EventUrl(service));
    writer.End();
  }
  writer.End();
}

}  // namespace

const std::vector<HOST_Icon>& HOST_DeviceIcons() {
  static const std::vector<HOST_Icon> icons = {
      {"image/png", 48, 48, 24, "/icons/icon-48.png"},
      {"image/png", 120, 120, 24, "/icons/icon-120.png"},
  };
  return icons;
}

std::string HOST_WriteDeviceDescription(const HOST_DeviceIdentity& identity, HOST_PublishedServices published) {
  HOST_XmlWriter writer;
  writer.Start("root", kDeviceNamespace);
  writer.Start("specVersion");
  writer.Element("major", "1");
  writer.Element("minor", "0");
  writer.End();
  writer.Start("device");
  writer.Element("deviceType", kDeviceType);
  writer.Element("friendlyName", identity.friendlyName);
  writer.Element("manufacturer", identity.manufacturer);
  ElementUnlessEmpty(writer, "manufacturerURL", identity.manufacturerUrl);
  ElementUnlessEmpty(writer, "modelDescription", identity.modelDescription);
  writer.Element("modelName", identity.modelName);
  ElementUnlessEmpty(writer, "modelNumber", identity.modelNumber);
  ElementUnlessEmpty(writer, "modelURL", identity.modelUrl);
  ElementUnlessEmpty(writer, "serialNumber", identity.serialNumber);
  writer.Element("UDN", identity.udn);
  // Without AVTransport the device is no digital media renderer: Windows and DLNA control points that
  // believed the markers would offer to play to it and then fail.
  if (published != HOST_PublishedServices::OpenHome) {
    writer.PrefixedElement("dlna", "X_DLNADOC", kDlnaNamespace, kDlnaDocument);
    writer.PrefixedElement("pnpx", "X_compatibleId", kPnpxNamespace, kPnpxCompatibleId);
    writer.PrefixedElement("df", "X_deviceCategory", kDeviceFoundationNamespace, kDeviceCategory);
  }
  WriteIcons(writer);
  WriteServices(writer, published);
  ElementUnlessEmpty(writer, "presentationURL", identity.presentationUrl);
  writer.End();
  writer.End();
  return writer.Finish();
}
