// What the standard service object answers for its evented variables, and the values its store accepts,
// held against the AVTransport and ConnectionManager SCPDs the build wrote.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ScpdDocument.h"
#include "ServedActions.h"
#include "StandardDriftFixture.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/StateVariableCatalogue.h"
#include "sink_upnp/StateVariableChecks.h"

namespace {

using StandardServedValues = StandardDriftFixture;

// A subscription makes the host ask for every evented variable's value: the object must answer each.
TEST_F(StandardServedValues, EveryEventedVariableCanBeAskedOfTheObject) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::StandardServices)) {
    const std::vector<std::string> evented = served.scpd.EventedNames();
    EXPECT_FALSE(evented.empty()) << served.service->name;
    for (const std::string& name : evented) {
      marlo::StateVariable value;
      EXPECT_EQ(service_.GetStateVariable(served.service->serviceType, name.c_str(), &value), 0)
          << served.service->name << " " << name;
    }
  }
}

// The store's index of the AVTransport or ConnectionManager variable called `name`; -1 for none.
int StoreIndexOf(const std::string& name) {
  for (int index = SINK_UPNP_AVT_TRANSPORT_STATE; index <= SINK_UPNP_CMS_CURRENT_CONNECTION_IDS; ++index) {
    if (name == SINK_UPNP_stateVariableNameTable[index]) return index;
  }
  return -1;
}

// A control point that keeps to the SCPD's allowed values and types never has a value refused by the
// store's checks, and every value the store refuses lies outside what the SCPD allows.
TEST_F(StandardServedValues, AllowedValuesAndTypesAreTheOnesTheStoreChecks) {
  const ScpdDocument scpd = LoadBuiltScpd("AVTransport");
  std::size_t checked = 0;
  for (const ScpdVariable& variable : scpd.variables) {
    const int index = StoreIndexOf(variable.name);
    if (index < 0) continue;
    SCOPED_TRACE(variable.name);
    ++checked;
    const SINK_UPNP_Check check = SINK_UPNP_stateVariableCatalogue[index].check;
    const auto name = static_cast<SINK_UPNP_StateVariableName_t>(index);
    for (const std::string& value : variable.allowedValues) {
      EXPECT_EQ(SINK_UPNP_CheckStateVariable(name, value.c_str()), 0) << value;
    }
    switch (check) {
      case SINK_UPNP_Check::kAny:
        EXPECT_TRUE(variable.allowedValues.empty());
        break;
      case SINK_UPNP_Check::kUnsigned32:
        EXPECT_EQ(variable.dataType, "ui4");
        break;
      case SINK_UPNP_Check::kSigned32:
        EXPECT_EQ(variable.dataType, "i4");
        break;
      default:  // one of the store's lists
        EXPECT_FALSE(variable.allowedValues.empty());
        EXPECT_NE(SINK_UPNP_CheckStateVariable(name, "not allowed"), 0);
        break;
    }
  }
  EXPECT_EQ(checked, 26u) << "the AVTransport variables of the store";
}

}  // namespace
