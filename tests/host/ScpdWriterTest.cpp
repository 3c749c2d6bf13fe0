// The SCPD writer's output, byte for byte, for small services made up for the purpose.
#include <gtest/gtest.h>

#include <string>

#include "host/ScpdWriter.h"
#include "host/ServiceCatalogue.h"

namespace {

HOST_ServiceDescription SampleService() {
  return {"Sample",
          "urn:example-org:service:Sample:1",
          "urn:example-org:serviceId:Sample",
          HOST_Responder::Host,
          {{"GetLevel", {{"Which", false, "A_ARG_TYPE_Which"}, {"Level", true, "Level"}}}, {"Reset", {}}},
          {{"Level", "ui2", true, {}, "0", "100", "1"},
           {"A_ARG_TYPE_Which", "string", false, {"Left", "Right & <Both>"}},
           {"Gain", "i2", false, {}, "-10", "10"}}};
}

const char kSampleScpd[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<scpd xmlns=\"urn:schemas-upnp-org:service-1-0\">\n"
    "  <specVersion>\n"
    "    <major>1</major>\n"
    "    <minor>0</minor>\n"
    "  </specVersion>\n"
    "  <actionList>\n"
    "    <action>\n"
    "      <name>GetLevel</name>\n"
    "      <argumentList>\n"
    "        <argument>\n"
    "          <name>Which</name>\n"
    "          <direction>in</direction>\n"
    "          <relatedStateVariable>A_ARG_TYPE_Which</relatedStateVariable>\n"
    "        </argument>\n"
    "        <argument>\n"
    "          <name>Level</name>\n"
    "          <direction>out</direction>\n"
    "          <relatedStateVariable>Level</relatedStateVariable>\n"
    "        </argument>\n"
    "      </argumentList>\n"
    "    </action>\n"
    "    <action>\n"
    "      <name>Reset</name>\n"
    "    </action>\n"
    "  </actionList>\n"
    "  <serviceStateTable>\n"
    "    <stateVariable sendEvents=\"yes\">\n"
    "      <name>Level</name>\n"
    "      <dataType>ui2</dataType>\n"
    "      <allowedValueRange>\n"
    "        <minimum>0</minimum>\n"
    "        <maximum>100</maximum>\n"
    "        <step>1</step>\n"
    "      </allowedValueRange>\n"
    "    </stateVariable>\n"
    "    <stateVariable sendEvents=\"no\">\n"
    "      <name>A_ARG_TYPE_Which</name>\n"
    "      <dataType>string</dataType>\n"
    "      <allowedValueList>\n"
    "        <allowedValue>Left</allowedValue>\n"
    "        <allowedValue>Right &amp; &lt;Both&gt;</allowedValue>\n"
    "      </allowedValueList>\n"
    "    </stateVariable>\n"
    "    <stateVariable sendEvents=\"no\">\n"
    "      <name>Gain</name>\n"
    "      <dataType>i2</dataType>\n"
    "      <allowedValueRange>\n"
    "        <minimum>-10</minimum>\n"
    "        <maximum>10</maximum>\n"
    "      </allowedValueRange>\n"
    "    </stateVariable>\n"
    "  </serviceStateTable>\n"
    "</scpd>\n";

TEST(HostScpdWriter, WritesActionsArgumentsAndVariablesInTableOrder) {
  EXPECT_EQ(HOST_WriteScpd(SampleService()), kSampleScpd);
}

TEST(HostScpdWriter, WritesTheSameBytesEveryTime) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    EXPECT_EQ(HOST_WriteScpd(service), HOST_WriteScpd(service)) << service.name;
  }
}

TEST(HostScpdWriter, LeavesOutTheActionListOfAServiceWithoutActions) {
  HOST_ServiceDescription service = SampleService();
  service.actions.clear();
  const std::string scpd = HOST_WriteScpd(service);
  EXPECT_EQ(scpd.find("actionList"), std::string::npos) << scpd;
  EXPECT_NE(scpd.find("<serviceStateTable>"), std::string::npos) << scpd;
}

}  // namespace
