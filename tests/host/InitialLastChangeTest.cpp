// The first AVTransport LastChange: AVTransport's own transport state in the whole document.
#include <gtest/gtest.h>

#include <string>

#include "InitialLastChange.h"

namespace {
constexpr char kAvtNamespace[] = "urn:schemas-upnp-org:metadata-1-0/AVT/";
}

TEST(HostInitialLastChange, TransportStateTakesTheGivenValueInItsFirstPlace) {
  const std::string document = std::string("<Event xmlns=\"") + kAvtNamespace +
                               "\"><InstanceID val=\"0\"><TransportState val=\"Stopped\"/>"
                               "<NumberOfTracks val=\"2\"/></InstanceID></Event>";
  const std::string result = HOST_WithTransportState(document, "STOPPED");
  EXPECT_EQ(result, std::string("<Event xmlns=\"") + kAvtNamespace +
                        "\"><InstanceID val=\"0\"><TransportState val=\"STOPPED\"/>"
                        "<NumberOfTracks val=\"2\"/></InstanceID></Event>");
}

TEST(HostInitialLastChange, DocumentWithoutTransportStateGetsItAtTheEnd) {
  const std::string document =
      std::string("<Event xmlns=\"") + kAvtNamespace + "\"><InstanceID val=\"0\"><NumberOfTracks val=\"2\"/></InstanceID></Event>";
  const std::string result = HOST_WithTransportState(document, "PLAYING");
  EXPECT_NE(result.find("<NumberOfTracks val=\"2\"/><TransportState val=\"PLAYING\"/>"), std::string::npos) << result;
}

TEST(HostInitialLastChange, UnreadableDocumentIsKeptAsItIs) {
  for (const std::string document : {"", "<Event", "<NotAnEvent/>"})
    EXPECT_EQ(HOST_WithTransportState(document, "PLAYING"), document);
}
