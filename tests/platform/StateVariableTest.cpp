#include "ScopedAllocationFailure.h"
#include "marlo/StateVariable.h"

#include <gtest/gtest.h>

#include <string>

#include "ScopedFault.h"
#include "marlo/Result.h"

namespace {

std::string Text(const char* text) { return text == nullptr ? "<null>" : text; }

}  // namespace

TEST(StateVariable, NameAndValueAreNullBeforeSetValue) {
  marlo::StateVariable variable;
  EXPECT_EQ(variable.GetName(), nullptr);
  EXPECT_EQ(variable.GetValue(), nullptr);
}

TEST(StateVariable, SetValueRecordsNameAndValue) {
  marlo::StateVariable variable;
  EXPECT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
  EXPECT_EQ(Text(variable.GetName()), "TransportState");
  EXPECT_EQ(Text(variable.GetValue()), "PLAYING");
}

TEST(StateVariable, SetValueAcceptsAnEmptyValue) {
  marlo::StateVariable variable;
  EXPECT_EQ(variable.SetValue("AVTransportURI", ""), 0);
  EXPECT_EQ(Text(variable.GetName()), "AVTransportURI");
  EXPECT_EQ(Text(variable.GetValue()), "");
}

TEST(StateVariable, SetValueReplacesTheEarlierNameAndValue) {
  marlo::StateVariable variable;
  ASSERT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
  EXPECT_EQ(variable.SetValue("Volume", "42"), 0);
  EXPECT_EQ(Text(variable.GetName()), "Volume");
  EXPECT_EQ(Text(variable.GetValue()), "42");
}

TEST(StateVariable, SetValueRejectsANullNameAndKeepsTheOldValue) {
  marlo::StateVariable variable;
  ASSERT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
  EXPECT_EQ(variable.SetValue(nullptr, "STOPPED"), -1998);
  EXPECT_EQ(Text(variable.GetName()), "TransportState");
  EXPECT_EQ(Text(variable.GetValue()), "PLAYING");
}

TEST(StateVariable, SetValueRejectsANullValueAndKeepsTheOldValue) {
  marlo::StateVariable variable;
  ASSERT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
  EXPECT_EQ(variable.SetValue("Volume", nullptr), -1998);
  EXPECT_EQ(Text(variable.GetName()), "TransportState");
  EXPECT_EQ(Text(variable.GetValue()), "PLAYING");
}

TEST(StateVariable, RejectedSetValueOnAFreshVariableLeavesItUnset) {
  marlo::StateVariable variable;
  EXPECT_EQ(variable.SetValue("Volume", nullptr), -1998);
  EXPECT_EQ(variable.GetName(), nullptr);
  EXPECT_EQ(variable.GetValue(), nullptr);
}

TEST(StateVariable, SetValueFaultAnswersTheInjectedCodeAndKeepsTheOldValue) {
  marlo::StateVariable variable;
  ASSERT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kStateVariableSetValue, 1, -1234);
    EXPECT_EQ(variable.SetValue("TransportState", "STOPPED"), -1234);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Text(variable.GetName()), "TransportState");
  EXPECT_EQ(Text(variable.GetValue()), "PLAYING");
}

TEST(StateVariable, SetValueFaultOnAFreshVariableLeavesItUnset) {
  marlo::StateVariable variable;
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kStateVariableSetValue, 1, -1997);
    EXPECT_EQ(variable.SetValue("TransportState", "PLAYING"), -1997);
  }
  EXPECT_EQ(variable.GetName(), nullptr);
  EXPECT_EQ(variable.GetValue(), nullptr);
}

TEST(StateVariable, SetValueAnswersNoMemoryAtEveryAllocationAndKeepsTheOldValue) {
  const char* const name = "CurrentTrackMetaDataOfTheRenderer";
  const char* const value = "a value long enough to need an allocation of its own";
  for (unsigned long nth = 1;; ++nth) {
    marlo::StateVariable variable;
    ASSERT_EQ(variable.SetValue("TransportState", "PLAYING"), 0);
    int32_t result = 0;
    unsigned long fired = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = variable.SetValue(name, value);
      fired = failure.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(Text(variable.GetName()), name);
      EXPECT_EQ(Text(variable.GetValue()), value);
      EXPECT_GT(nth, 2u);
      break;
    }
    EXPECT_EQ(result, -1997) << "allocation " << nth;
    EXPECT_EQ(Text(variable.GetName()), "TransportState") << "allocation " << nth;
    EXPECT_EQ(Text(variable.GetValue()), "PLAYING") << "allocation " << nth;
  }
}
