#include <gtest/gtest.h>

#include <string>

#include "marlo/DeviceDescription.h"
#include "marlo/Result.h"

namespace {

using Node = marlo::DeviceDescription::Node;

std::string SamplePath(const char* name) { return std::string(DMR_TEST_DATA_DIR) + "/description/" + name; }

// The text of the index-th `name` below the root device.
std::string RootValue(const marlo::DeviceDescription& description, const char* name, int index = 0) {
  return description.GetElementValue(description.GetNode(description.GetRootDevice(), name, index));
}

class DeviceDescriptionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(description_.LoadDescription(SamplePath("device.xml").c_str()), marlo::kOk);
    root_ = description_.GetRootDevice();
    ASSERT_NE(root_, nullptr);
  }

  marlo::DeviceDescription description_;
  const Node* root_ = nullptr;
};

TEST(DeviceDescription, NothingLoadedHasNoRootDeviceAndLookupsGiveEmptyText) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.GetRootDevice(), nullptr);
  EXPECT_EQ(description.GetNode(description.GetRootDevice(), "friendlyName", 0), nullptr);
  EXPECT_STREQ(RootValue(description, "friendlyName").c_str(), "");
}

TEST_F(DeviceDescriptionTest, RootDeviceIsTheFirstDeviceBelowRoot) {
  EXPECT_STREQ(description_.GetElementValue(description_.GetNode(root_, "deviceType", 0)),
               "urn:schemas-upnp-org:device:MediaRenderer:1");
}

TEST_F(DeviceDescriptionTest, GetNodeFindsEachElementOfTheRootDevice) {
  EXPECT_EQ(RootValue(description_, "friendlyName"), "Kitchen Speaker");
  EXPECT_EQ(RootValue(description_, "manufacturer"), "Open Renderer Project");
  EXPECT_EQ(RootValue(description_, "manufacturerURL"), "https://open-renderer.example.org/");
  EXPECT_EQ(RootValue(description_, "modelName"), "Open Renderer");
  EXPECT_EQ(RootValue(description_, "modelNumber"), "2.1");
  EXPECT_EQ(RootValue(description_, "UDN"), "uuid:5a1c7e2e-3f4b-4c1d-9e8f-00a0b1c2d3e4");
  EXPECT_EQ(RootValue(description_, "presentationURL"), "/index.html");
}

TEST_F(DeviceDescriptionTest, GetNodeMatchesNamesCaseSensitively) {
  EXPECT_EQ(description_.GetNode(root_, "udn", 0), nullptr);
  EXPECT_EQ(description_.GetNode(root_, "FriendlyName", 0), nullptr);
}

TEST_F(DeviceDescriptionTest, GetNodeSearchesNestedElements) {
  EXPECT_EQ(RootValue(description_, "url", 0), "/icons/renderer-48.png");
  EXPECT_EQ(RootValue(description_, "url", 1), "/icons/renderer-120.png");
  EXPECT_EQ(RootValue(description_, "serviceType", 1), "urn:schemas-upnp-org:service:RenderingControl:1");
}

TEST_F(DeviceDescriptionTest, GetNodeIndexFollowsDocumentOrderIntoEmbeddedDevices) {
  EXPECT_EQ(RootValue(description_, "friendlyName", 0), "Kitchen Speaker");
  EXPECT_EQ(RootValue(description_, "friendlyName", 1), "Kitchen Speaker Library");
  EXPECT_EQ(RootValue(description_, "UDN", 1), "uuid:5a1c7e2e-3f4b-4c1d-9e8f-00a0b1c2d3e5");
}

TEST_F(DeviceDescriptionTest, GetNodeIndexPastTheLastMatchAnswersNull) {
  EXPECT_NE(description_.GetNode(root_, "friendlyName", 1), nullptr);
  EXPECT_EQ(description_.GetNode(root_, "friendlyName", 2), nullptr);
  EXPECT_EQ(description_.GetNode(root_, "friendlyName", -1), nullptr);
}

TEST_F(DeviceDescriptionTest, EmbeddedDeviceIsFoundByNameBelowTheRootDevice) {
  const Node* embedded = description_.GetNode(root_, "device", 0);
  ASSERT_NE(embedded, nullptr);
  EXPECT_NE(embedded, root_);
  EXPECT_STREQ(description_.GetElementValue(description_.GetNode(embedded, "deviceType", 0)),
               "urn:schemas-upnp-org:device:MediaServer:1");
  EXPECT_EQ(description_.GetNode(root_, "device", 1), nullptr);
}

TEST_F(DeviceDescriptionTest, GetNodeDoesNotCountTheParentItself) {
  const Node* embedded = description_.GetNode(root_, "device", 0);
  ASSERT_NE(embedded, nullptr);
  EXPECT_EQ(description_.GetNode(embedded, "device", 0), nullptr);
}

TEST_F(DeviceDescriptionTest, GetNodeStaysBelowTheParent) {
  const Node* embedded = description_.GetNode(root_, "device", 0);
  ASSERT_NE(embedded, nullptr);
  EXPECT_EQ(description_.GetNode(embedded, "serviceType", 0), nullptr);
  EXPECT_EQ(description_.GetNode(embedded, "presentationURL", 0), nullptr);
  const Node* icons = description_.GetNode(root_, "iconList", 0);
  ASSERT_NE(icons, nullptr);
  EXPECT_EQ(description_.GetNode(icons, "url", 2), nullptr);
  EXPECT_EQ(description_.GetNode(icons, "friendlyName", 0), nullptr);
}

TEST_F(DeviceDescriptionTest, NullParentAnswersNull) {
  EXPECT_EQ(description_.GetNode(nullptr, "friendlyName", 0), nullptr);
}

TEST_F(DeviceDescriptionTest, NullNameAnswersNull) { EXPECT_EQ(description_.GetNode(root_, nullptr, 0), nullptr); }

TEST_F(DeviceDescriptionTest, MissingElementAnswersNullAndItsValueIsEmpty) {
  const Node* missing = description_.GetNode(root_, "serialNumberX", 0);
  EXPECT_EQ(missing, nullptr);
  const char* value = description_.GetElementValue(missing);
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(value, "");
}

TEST_F(DeviceDescriptionTest, ValueKeepsSurroundingBlanks) {
  EXPECT_EQ(RootValue(description_, "serialNumber"), "  0042  ");
}

TEST_F(DeviceDescriptionTest, ValueOfAnEmptyElementIsEmpty) {
  const Node* empty = description_.GetNode(root_, "modelURL", 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(description_.GetElementValue(empty), "");
}

TEST_F(DeviceDescriptionTest, ValueIsTheObjectsBufferUntilTheNextCall) {
  const char* first = description_.GetElementValue(description_.GetNode(root_, "modelName", 0));
  EXPECT_STREQ(first, "Open Renderer");
  const char* second = description_.GetElementValue(description_.GetNode(root_, "modelNumber", 0));
  EXPECT_STREQ(second, "2.1");
  EXPECT_STREQ(first, "2.1");
}

TEST(DeviceDescription, DescriptionWithoutDeviceHasNoRootDevice) {
  marlo::DeviceDescription description;
  ASSERT_EQ(description.LoadDescription(SamplePath("no_device.xml").c_str()), marlo::kOk);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST(DeviceDescription, NullPathAnswersInvalidArgument) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.LoadDescription(nullptr), marlo::kErrorInvalidArgument);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST(DeviceDescription, MissingFileAnswersFailure) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.LoadDescription(SamplePath("no_such_file.xml").c_str()), marlo::kErrorFailure);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST(DeviceDescription, DirectoryAnswersFailure) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.LoadDescription(DMR_TEST_DATA_DIR "/description"), marlo::kErrorFailure);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST(DeviceDescription, MalformedFileAnswersInvalidArgument) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.LoadDescription(SamplePath("malformed.xml").c_str()), marlo::kErrorInvalidArgument);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST(DeviceDescription, EmptyFileAnswersInvalidArgument) {
  marlo::DeviceDescription description;
  EXPECT_EQ(description.LoadDescription(SamplePath("empty.xml").c_str()), marlo::kErrorInvalidArgument);
  EXPECT_EQ(description.GetRootDevice(), nullptr);
}

TEST_F(DeviceDescriptionTest, ReloadReplacesTheDocument) {
  ASSERT_EQ(description_.LoadDescription(SamplePath("openhome.xml").c_str()), marlo::kOk);
  EXPECT_EQ(RootValue(description_, "friendlyName"), "Living Room:Open Renderer");
  EXPECT_EQ(RootValue(description_, "friendlyName", 1), "");
  EXPECT_EQ(RootValue(description_, "serialNumber"), "");
}

TEST_F(DeviceDescriptionTest, FailedReloadKeepsTheEarlierDocument) {
  EXPECT_EQ(description_.LoadDescription(SamplePath("malformed.xml").c_str()), marlo::kErrorInvalidArgument);
  EXPECT_EQ(description_.LoadDescription(SamplePath("no_such_file.xml").c_str()), marlo::kErrorFailure);
  EXPECT_EQ(description_.LoadDescription(nullptr), marlo::kErrorInvalidArgument);
  EXPECT_EQ(RootValue(description_, "friendlyName"), "Kitchen Speaker");
}

TEST(DeviceDescription, EntitiesInValuesAreDecoded) {
  marlo::DeviceDescription description;
  ASSERT_EQ(description.LoadDescription(SamplePath("openhome.xml").c_str()), marlo::kOk);
  EXPECT_EQ(RootValue(description, "ProductInfo"), "Plays music from your network & the internet");
}

TEST(DeviceDescription, OpenHomeProductDescriptionGivesEachProductValue) {
  struct Row {
    const char* name;
    const char* value;
  };
  const Row kRows[] = {
      {"ManufacturerName", "Open Renderer Project"},
      {"ManufacturerInfo", "Free software for networked audio"},
      {"ManufacturerUrl", "https://open-renderer.example.org/"},
      {"ManufacturerImageUri", "/images/manufacturer.png"},
      {"ModelName", "Open Renderer"},
      {"ModelInfo", "UPnP AV and OpenHome media renderer"},
      {"ModelUrl", "https://open-renderer.example.org/renderer"},
      {"ModelImageUri", "/images/model.png"},
      {"ProductRoom", "Living Room"},
      {"ProductName", "Open Renderer"},
      {"ProductInfo", "Plays music from your network & the internet"},
      {"ProductUrl", "https://open-renderer.example.org/product"},
      {"ProductImageUri", "/images/product.png"},
  };
  marlo::DeviceDescription description;
  ASSERT_EQ(description.LoadDescription(SamplePath("openhome.xml").c_str()), marlo::kOk);
  ASSERT_NE(description.GetRootDevice(), nullptr);
  for (const Row& row : kRows) {
    EXPECT_EQ(RootValue(description, row.name), row.value) << row.name;
  }
}

}  // namespace
