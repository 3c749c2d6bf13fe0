// The renderer's device description, parsed as a control point parses it.
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <string>
#include <vector>

#include "host/DeviceDescriptionWriter.h"
#include "host/ServiceCatalogue.h"

namespace {

HOST_DeviceIdentity FullIdentity() {
  HOST_DeviceIdentity identity;
  identity.friendlyName = "Kitchen";
  identity.udn = "uuid:0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";
  identity.manufacturer = "Open Renderer project";
  identity.manufacturerUrl = "http://manufacturer.example.org/";
  identity.modelName = "Open Renderer";
  identity.modelNumber = "1.0";
  identity.modelDescription = "UPnP AV and OpenHome media renderer";
  identity.modelUrl = "http://model.example.org/";
  identity.serialNumber = "0001";
  identity.presentationUrl = "http://presentation.example.org/";
  return identity;
}

// A strictly parsed description with the prefixes d (device), dlna, pnpx and df for XPath queries.
class ParsedDescription {
 public:
  explicit ParsedDescription(const std::string& xml)
      : document_(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "description.xml", nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {
    if (document_ == nullptr) return;
    context_ = xmlXPathNewContext(document_);
    Register("d", "urn:schemas-upnp-org:device-1-0");
    Register("dlna", "urn:schemas-dlna-org:device-1-0");
    Register("pnpx", "http://schemas.microsoft.com/windows/pnpx/2005/11");
    Register("df", "http://schemas.microsoft.com/windows/2008/09/devicefoundation");
  }
  ~ParsedDescription() {
    if (context_ != nullptr) xmlXPathFreeContext(context_);
    if (document_ != nullptr) xmlFreeDoc(document_);
  }
  ParsedDescription(const ParsedDescription&) = delete;
  ParsedDescription& operator=(const ParsedDescription&) = delete;

  bool WellFormed() const { return document_ != nullptr; }

  // The text of every node `path` selects, in document order.
  std::vector<std::string> All(const std::string& path) const {
    std::vector<std::string> texts;
    xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), context_);
    if (result == nullptr) return texts;
    if (result->nodesetval != nullptr) {
      for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        xmlChar* content = xmlNodeGetContent(result->nodesetval->nodeTab[i]);
        texts.emplace_back(content != nullptr ? reinterpret_cast<const char*>(content) : "");
        xmlFree(content);
      }
    }
    xmlXPathFreeObject(result);
    return texts;
  }

  // The text of the one node `path` selects; "<none>" or "<2 nodes>" otherwise.
  std::string One(const std::string& path) const {
    const std::vector<std::string> texts = All(path);
    if (texts.size() == 1) return texts.front();
    return texts.empty() ? "<none>" : "<" + std::to_string(texts.size()) + " nodes>";
  }

 private:
  void Register(const char* prefix, const char* uri) {
    xmlXPathRegisterNs(context_, reinterpret_cast<const xmlChar*>(prefix),
                       reinterpret_cast<const xmlChar*>(uri));
  }

  xmlDoc* document_;
  xmlXPathContext* context_ = nullptr;
};

constexpr char kDevice[] = "/d:root/d:device/";

TEST(HostDeviceDescription, IsAUpnp10MediaRendererWithTheIdentityItIsGiven) {
  const ParsedDescription description(HOST_WriteDeviceDescription(FullIdentity()));
  ASSERT_TRUE(description.WellFormed());
  EXPECT_EQ(description.One("/d:root/d:specVersion/d:major"), "1");
  EXPECT_EQ(description.One("/d:root/d:specVersion/d:minor"), "0");
  const std::string device = kDevice;
  EXPECT_EQ(description.One(device + "d:deviceType"), "urn:schemas-upnp-org:device:MediaRenderer:1");
  EXPECT_EQ(description.One(device + "d:friendlyName"), "Kitchen");
  EXPECT_EQ(description.One(device + "d:UDN"), "uuid:0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
  EXPECT_EQ(description.One(device + "d:manufacturer"), "Open Renderer project");
  EXPECT_EQ(description.One(device + "d:manufacturerURL"), "http://manufacturer.example.org/");
  EXPECT_EQ(description.One(device + "d:modelName"), "Open Renderer");
  EXPECT_EQ(description.One(device + "d:modelNumber"), "1.0");
  EXPECT_EQ(description.One(device + "d:modelDescription"), "UPnP AV and OpenHome media renderer");
  EXPECT_EQ(description.One(device + "d:modelURL"), "http://model.example.org/");
  EXPECT_EQ(description.One(device + "d:serialNumber"), "0001");
  EXPECT_EQ(description.One(device + "d:presentationURL"), "http://presentation.example.org/");
  EXPECT_EQ(description.All("/d:root/d:device").size(), 1u);
  EXPECT_EQ(description.All("//d:deviceList").size(), 0u) << "one device, no embedded ones";
}

TEST(HostDeviceDescription, CarriesTheDlnaAndWindowsRendererMarkers) {
  const ParsedDescription description(HOST_WriteDeviceDescription(FullIdentity()));
  ASSERT_TRUE(description.WellFormed());
  const std::string device = kDevice;
  EXPECT_EQ(description.One(device + "dlna:X_DLNADOC"), "DMR-1.50");
  EXPECT_EQ(description.One(device + "pnpx:X_compatibleId"), "MS_DigitalMediaDeviceClass_DMR_V001");
  EXPECT_EQ(description.One(device + "df:X_deviceCategory"), "Multimedia.DMR");
}

TEST(HostDeviceDescription, ListsTheIcons) {
  const ParsedDescription description(HOST_WriteDeviceDescription(FullIdentity()));
  ASSERT_TRUE(description.WellFormed());
  const std::string icons = std::string(kDevice) + "d:iconList/d:icon";
  const std::vector<HOST_Icon>& expected = HOST_DeviceIcons();
  ASSERT_EQ(expected.size(), 2u);
  ASSERT_EQ(description.All(icons).size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const std::string icon = icons + "[" + std::to_string(i + 1) + "]/d:";
    EXPECT_EQ(description.One(icon + "mimetype"), "image/png");
    EXPECT_EQ(description.One(icon + "width"), std::to_string(expected[i].width));
    EXPECT_EQ(description.One(icon + "height"), std::to_string(expected[i].height));
    EXPECT_EQ(description.One(icon + "depth"), "24");
    EXPECT_EQ(description.One(icon + "url"), expected[i].url);
  }
  EXPECT_EQ(description.One(icons + "[1]/d:url"), "/icons/icon-48.png");
  EXPECT_EQ(description.One(icons + "[2]/d:url"), "/icons/icon-120.png");
}

TEST(HostDeviceDescription, ListsTheNineServicesWithTheCataloguesUrls) {
  const ParsedDescription description(HOST_WriteDeviceDescription(FullIdentity()));
  ASSERT_TRUE(description.WellFormed());
  const std::string services = std::string(kDevice) + "d:serviceList/d:service";
  const std::vector<HOST_ServiceDescription>& catalogue = HOST_ServiceCatalogue();
  ASSERT_EQ(catalogue.size(), 9u);
  ASSERT_EQ(description.All(services).size(), catalogue.size());
  for (std::size_t i = 0; i < catalogue.size(); ++i) {
    SCOPED_TRACE(catalogue[i].name);
    const std::string service = services + "[" + std::to_string(i + 1) + "]/d:";
    EXPECT_EQ(description.One(service + "serviceType"), catalogue[i].serviceType);
    EXPECT_EQ(description.One(service + "serviceId"), catalogue[i].serviceId);
    EXPECT_EQ(description.One(service + "SCPDURL"), std::string("/scpd/") + catalogue[i].name + ".xml");
    EXPECT_EQ(description.One(service + "controlURL"), std::string("/control/") + catalogue[i].name);
    EXPECT_EQ(description.One(service + "eventSubURL"), std::string("/event/") + catalogue[i].name);
  }
}

TEST(HostDeviceDescription, LeavesOutEmptyOptionalElementsButNeverTheRequiredOnes) {
  HOST_DeviceIdentity identity;  // all empty
  const ParsedDescription description(HOST_WriteDeviceDescription(identity));
  ASSERT_TRUE(description.WellFormed());
  const std::string device = kDevice;
  for (const char* required : {"friendlyName", "manufacturer", "modelName", "UDN"}) {
    EXPECT_EQ(description.One(device + "d:" + required), "") << required;
  }
  for (const char* optional : {"manufacturerURL", "modelDescription", "modelNumber", "modelURL",
                               "serialNumber", "presentationURL"}) {
    EXPECT_EQ(description.All(device + "d:" + optional).size(), 0u) << optional;
  }
}

TEST(HostDeviceDescription, EscapesAFriendlyNameFullOfMarkup) {
  HOST_DeviceIdentity identity = FullIdentity();
  identity.friendlyName = "Tom & \"Jerry's\" <Room> ]]> &amp;";
  identity.manufacturer = "A<B>&C";
  const std::string xml = HOST_WriteDeviceDescription(identity);
  const ParsedDescription description(xml);
  ASSERT_TRUE(description.WellFormed()) << xml;
  const std::string device = kDevice;
  EXPECT_EQ(description.One(device + "d:friendlyName"), identity.friendlyName);
  EXPECT_EQ(description.One(device + "d:manufacturer"), identity.manufacturer);
}

TEST(HostDeviceDescription, StaysWellFormedWithControlCharactersAndBrokenUtf8InAName) {
  HOST_DeviceIdentity identity = FullIdentity();
  identity.friendlyName = std::string("Bell\x07 \xC3 end", 11);
  const ParsedDescription description(HOST_WriteDeviceDescription(identity));
  ASSERT_TRUE(description.WellFormed());
  EXPECT_EQ(description.One(std::string(kDevice) + "d:friendlyName"), "Bell\xEF\xBF\xBD \xEF\xBF\xBD end");
}

TEST(HostDeviceDescription, WritesTheSameBytesEveryTime) {
  EXPECT_EQ(HOST_WriteDeviceDescription(FullIdentity()), HOST_WriteDeviceDescription(FullIdentity()));
}

}  // namespace

namespace {

// The service types listed by a description, in order.
std::vector<std::string> ListedTypes(const ParsedDescription& description) {
  return description.All(std::string(kDevice) + "d:serviceList/d:service/d:serviceType");
}

}  // namespace

TEST(HostDeviceDescription, AvOnlyListsAVTransportConnectionManagerAndRenderingControlWithTheMarkers) {
  const ParsedDescription description(
      HOST_WriteDeviceDescription(FullIdentity(), HOST_PublishedServices::AudioVideo));
  ASSERT_TRUE(description.WellFormed());
  EXPECT_EQ(ListedTypes(description), (std::vector<std::string>{"urn:schemas-upnp-org:service:AVTransport:1",
                                                                "urn:schemas-upnp-org:service:ConnectionManager:1",
                                                                "urn:schemas-upnp-org:service:RenderingControl:1"}));
  EXPECT_EQ(description.One(std::string(kDevice) + "dlna:X_DLNADOC"), "DMR-1.50");
}

TEST(HostDeviceDescription, OpenHomeOnlyListsTheSixOpenHomeServicesWithoutRendererMarkers) {
  const ParsedDescription description(HOST_WriteDeviceDescription(FullIdentity(), HOST_PublishedServices::OpenHome));
  ASSERT_TRUE(description.WellFormed());
  EXPECT_EQ(ListedTypes(description), (std::vector<std::string>{"urn:av-openhome-org:service:Product:1",
                                                                "urn:av-openhome-org:service:Playlist:1",
                                                                "urn:av-openhome-org:service:Time:1",
                                                                "urn:av-openhome-org:service:Info:1",
                                                                "urn:av-openhome-org:service:Volume:1",
                                                                "urn:av-openhome-org:service:Sender:1"}));
  EXPECT_TRUE(description.All(std::string(kDevice) + "dlna:X_DLNADOC").empty());
  EXPECT_TRUE(description.All(std::string(kDevice) + "pnpx:X_compatibleId").empty());
  EXPECT_TRUE(description.All(std::string(kDevice) + "df:X_deviceCategory").empty());
}

TEST(HostPublishedServices, BothPublishesEveryServiceAndNullIsNever) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue())
    EXPECT_TRUE(HOST_IsPublished(HOST_PublishedServices::Both, service.serviceType)) << service.name;
  EXPECT_FALSE(HOST_IsPublished(HOST_PublishedServices::Both, nullptr));
  EXPECT_FALSE(HOST_IsPublished(HOST_PublishedServices::OpenHome, nullptr));
}
