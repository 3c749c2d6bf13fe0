// The product sheet with the configured room and name, read back as the OpenHome object reads it.
#include <gtest/gtest.h>

#include <string>

#include "TempDirectory.h"
#include "host/ProductSheet.h"
#include "marlo/DeviceDescription.h"

namespace {

constexpr char kSheet[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<root xmlns=\"urn:schemas-upnp-org:device-1-0\">\n"
    "  <!-- a comment kept -->\n"
    "  <device>\n"
    "    <ManufacturerName>Maker &amp; Sons</ManufacturerName>\n"
    "    <ProductRoom>Living Room</ProductRoom>\n"
    "    <ProductName>Open Renderer</ProductName>\n"
    "    <ProductInfo>Plays music</ProductInfo>\n"
    "  </device>\n"
    "</root>\n";

// The value the OpenHome object would read for `name` from `sheet`, through the same loader.
class SheetReader {
 public:
  explicit SheetReader(const std::string& sheet) : path_(temp_.WriteFile("openhome.xml", sheet)) {
    loaded_ = description_.LoadDescription(path_.c_str());
  }
  int32_t loaded() const { return loaded_; }
  std::string Value(const char* name) const {
    return description_.GetElementValue(description_.GetNode(description_.GetRootDevice(), name, 0));
  }

 private:
  TempDirectory temp_;
  std::string path_;
  marlo::DeviceDescription description_;
  int32_t loaded_;
};

}  // namespace

TEST(HostProductSheet, RoomAndNameReplaceTheSheetsAndEverythingElseStays) {
  std::string problem;
  const std::string text = HOST_ProductSheet(kSheet, {"Kitchen", "Shelf"}, &problem);
  EXPECT_EQ(problem, "");
  const SheetReader sheet(text);
  ASSERT_EQ(sheet.loaded(), 0);
  EXPECT_EQ(sheet.Value("ProductRoom"), "Kitchen");
  EXPECT_EQ(sheet.Value("ProductName"), "Shelf");
  EXPECT_EQ(sheet.Value("ManufacturerName"), "Maker & Sons");
  EXPECT_EQ(sheet.Value("ProductInfo"), "Plays music");
  EXPECT_NE(text.find("<!-- a comment kept -->"), std::string::npos);
}

TEST(HostProductSheet, EmptyNameKeepsTheSheetsName) {
  std::string problem;
  const SheetReader sheet(HOST_ProductSheet(kSheet, {"Kitchen", ""}, &problem));
  EXPECT_EQ(sheet.Value("ProductRoom"), "Kitchen");
  EXPECT_EQ(sheet.Value("ProductName"), "Open Renderer");
}

TEST(HostProductSheet, ElementsTheSheetLacksAreAdded) {
  std::string problem;
  const std::string text = HOST_ProductSheet(
      "<root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device><ModelName>M</ModelName></device></root>",
      {"Hall", "Radio"}, &problem);
  EXPECT_EQ(problem, "");
  const SheetReader sheet(text);
  EXPECT_EQ(sheet.Value("ProductRoom"), "Hall");
  EXPECT_EQ(sheet.Value("ProductName"), "Radio");
  EXPECT_EQ(sheet.Value("ModelName"), "M");
}

TEST(HostProductSheet, MarkupInANameIsTextNotMarkup) {
  std::string problem;
  const std::string room = "Tom & Jerry's <room> \"1\"";
  const SheetReader sheet(HOST_ProductSheet(kSheet, {room, "caf\xc3\xa9 ]]> &amp;"}, &problem));
  ASSERT_EQ(sheet.loaded(), 0);
  EXPECT_EQ(sheet.Value("ProductRoom"), room);
  EXPECT_EQ(sheet.Value("ProductName"), "caf\xc3\xa9 ]]> &amp;");
}

TEST(HostProductSheet, TheFirstElementOfTheNameIsTheOneReplaced) {
  std::string problem;
  const SheetReader sheet(HOST_ProductSheet("<root><device><x><ProductRoom>inner</ProductRoom></x>"
                                            "<ProductRoom>outer</ProductRoom></device></root>",
                                            {"Porch", ""}, &problem));
  EXPECT_EQ(sheet.Value("ProductRoom"), "Porch");
}

TEST(HostProductSheet, BrokenOrMissingSheetGivesOneWithTheNamesAndSaysWhy) {
  for (const char* broken : {"", "<root><device>", "not xml at all"}) {
    std::string problem;
    const SheetReader sheet(HOST_ProductSheet(broken, {"Garage", "Box"}, &problem));
    EXPECT_EQ(problem, "not well-formed XML") << broken;
    ASSERT_EQ(sheet.loaded(), 0) << broken;
    EXPECT_EQ(sheet.Value("ProductRoom"), "Garage") << broken;
    EXPECT_EQ(sheet.Value("ProductName"), "Box") << broken;
  }
}

TEST(HostProductSheet, SheetWithoutARootDeviceGivesOneWithTheNamesAndSaysWhy) {
  std::string problem;
  const SheetReader sheet(HOST_ProductSheet("<root><ProductRoom>x</ProductRoom></root>", {"Loft", ""}, &problem));
  EXPECT_EQ(problem, "no <device> below the root element");
  EXPECT_EQ(sheet.Value("ProductRoom"), "Loft");
}
