// The shipped files of the document root as the build copies them: the product sheet openhome.xml, read
// by the OpenHome store, and the icons the device description lists.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "host/DeviceDescriptionWriter.h"
#include "marlo/Device.h"
#include "marlo/DeviceDescription.h"
#include "marlo/Properties.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/OpenHomeUPnPService.h"

namespace {

const std::string kDocRoot = HOST_BUILD_DOCROOT;
constexpr char kProductService[] = "urn:av-openhome-org:service:Product:1";
constexpr char kImagePath[] = "/icons/icon-120.png";

struct ProductValue {
  const char* name;
  const char* value;  // as written in openhome.xml
};

// The product sheet's values; the three image URIs are paths on the daemon's server.
const ProductValue kProductSheet[] = {
    {"ManufacturerName", "Open Renderer project"},
    {"ManufacturerInfo", "Free software for networked audio"},
    {"ManufacturerUrl", ""},
    {"ManufacturerImageUri", kImagePath},
    {"ModelName", "Open Renderer"},
    {"ModelInfo", "UPnP AV and OpenHome media renderer"},
    {"ModelUrl", ""},
    {"ModelImageUri", kImagePath},
    {"ProductRoom", ""},  // the daemon fills in the configured room
    {"ProductName", "Open Renderer"},
    {"ProductInfo", "Plays music from the network"},
    {"ProductUrl", ""},
    {"ProductImageUri", kImagePath},
};

bool IsImage(const char* name) { return std::string(name).find("ImageUri") != std::string::npos; }

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

uint32_t BigEndian32(const std::string& bytes, std::size_t at) {
  return (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at])) << 24) |
         (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + 1])) << 16) |
         (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + 2])) << 8) |
         static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + 3]));
}

TEST(HostDocumentRoot, ProductSheetLoadsAndItsRootDeviceCarriesEveryProductValue) {
  marlo::DeviceDescription description;
  ASSERT_EQ(description.LoadDescription((kDocRoot + "/openhome.xml").c_str()), 0);
  const marlo::DeviceDescription::Node* device = description.GetRootDevice();
  ASSERT_NE(device, nullptr);
  EXPECT_STREQ(description.GetElementValue(description.GetNode(device, "deviceType", 0)),
               "urn:schemas-upnp-org:device:MediaRenderer:1");
  for (const ProductValue& expected : kProductSheet) {
    const marlo::DeviceDescription::Node* node = description.GetNode(device, expected.name, 0);
    ASSERT_NE(node, nullptr) << expected.name;
    EXPECT_STREQ(description.GetElementValue(node), expected.value) << expected.name;
    EXPECT_EQ(description.GetNode(device, expected.name, 1), nullptr) << expected.name << " twice";
  }
}

TEST(HostDocumentRoot, OpenHomeServiceStartedOnItReportsTheProductSheet) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
  ASSERT_EQ(properties.SetProperty("device.docroot", kDocRoot.c_str()), 0);
  SINK_UPNP_OpenHomeUPnPService service;
  RecordingEventHandler playlistHandler;
  ::testing::NiceMock<MockTransferService> transfer;
  ASSERT_EQ(service.Initialize(&properties), 0);
  ASSERT_EQ(service.RegisterPlaylistServiceEventListener(&playlistHandler), 0);
  ASSERT_EQ(service.RegisterTransferService(&transfer), 0);
  ASSERT_EQ(service.Start(), 0);

  const std::string server = std::string("http://") + marlo::Device::GetServerIPAddress();
  for (const ProductValue& expected : kProductSheet) {
    marlo::StateVariable variable;
    ASSERT_EQ(service.GetStateVariable(kProductService, expected.name, &variable), 0) << expected.name;
    const std::string value = IsImage(expected.name) ? server + expected.value : expected.value;
    EXPECT_STREQ(variable.GetName(), expected.name);
    EXPECT_EQ(std::string(variable.GetValue()), value) << expected.name;
  }

  EXPECT_EQ(service.Stop(), 0);
  EXPECT_EQ(service.UnregisterPlaylistServiceEventListener(), 0);
  EXPECT_EQ(service.Finalize(), 0);
}

TEST(HostDocumentRoot, TheProductImageIsOneOfTheIcons) {
  bool listed = false;
  for (const HOST_Icon& icon : HOST_DeviceIcons()) listed = listed || std::string(icon.url) == kImagePath;
  EXPECT_TRUE(listed) << kImagePath;
}

TEST(HostDocumentRoot, EveryIconIsAnRgbPngOfTheSizeTheDescriptionGives) {
  for (const HOST_Icon& icon : HOST_DeviceIcons()) {
    SCOPED_TRACE(icon.url);
    const std::string png = ReadFile(kDocRoot + icon.url);
    ASSERT_GE(png.size(), 33u);
    EXPECT_EQ(png.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    EXPECT_EQ(png.substr(12, 4), "IHDR");
    EXPECT_EQ(BigEndian32(png, 16), static_cast<uint32_t>(icon.width));
    EXPECT_EQ(BigEndian32(png, 20), static_cast<uint32_t>(icon.height));
    EXPECT_EQ(static_cast<int>(png[24]), 8) << "bits per sample";
    EXPECT_EQ(static_cast<int>(png[25]), 2) << "colour type RGB: 24 bits a pixel";
    EXPECT_EQ(icon.depth, 24);
    EXPECT_EQ(png.substr(png.size() - 8, 4), "IEND");
  }
}

}  // namespace
