#include <gtest/gtest.h>

#include <string>

#include "ScopedFault.h"
#include "ScopedAllocationFailure.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kAVTransport = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr const char* kRenderingControl = "urn:schemas-upnp-org:service:RenderingControl:1";
// Longer than a string keeps inside itself, so that copying it must allocate.
constexpr const char* kLongText = "a text long enough to need an allocation of its own";

std::string Text(const char* text) { return text == nullptr ? "<null>" : text; }

}  // namespace

// ActionRequest ---------------------------------------------------------------------------------------------

TEST(ActionRequest, NewRequestCarriesNothing) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.GetServiceType(), nullptr);
  EXPECT_EQ(request.GetActionName(), nullptr);
  EXPECT_EQ(request.GetArgumentCount(), 0u);
  EXPECT_EQ(request.GetArgumentName(0), nullptr);
  EXPECT_EQ(request.GetArgumentValueAt(0), nullptr);
  EXPECT_EQ(request.GetArgumentValue("InstanceID"), nullptr);
}

TEST(ActionRequest, SetServiceTypeAndActionNameAreReadBack) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.SetServiceType(kAVTransport), 0);
  EXPECT_EQ(request.SetActionName("Play"), 0);
  EXPECT_EQ(Text(request.GetServiceType()), kAVTransport);
  EXPECT_EQ(Text(request.GetActionName()), "Play");
}

TEST(ActionRequest, LaterSetServiceTypeAndActionNameReplaceTheEarlier) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kAVTransport), 0);
  ASSERT_EQ(request.SetActionName("Play"), 0);
  EXPECT_EQ(request.SetServiceType(kRenderingControl), 0);
  EXPECT_EQ(request.SetActionName("SetVolume"), 0);
  EXPECT_EQ(Text(request.GetServiceType()), kRenderingControl);
  EXPECT_EQ(Text(request.GetActionName()), "SetVolume");
}

TEST(ActionRequest, EmptyActionNameIsSetAndReadBackEmpty) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.SetActionName(""), 0);
  EXPECT_EQ(Text(request.GetActionName()), "");
}

TEST(ActionRequest, SetServiceTypeRejectsNullAndKeepsTheOldValue) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kAVTransport), 0);
  EXPECT_EQ(request.SetServiceType(nullptr), -1998);
  EXPECT_EQ(Text(request.GetServiceType()), kAVTransport);
}

TEST(ActionRequest, SetServiceTypeRejectsNullOnAFreshRequestLeavingItUnset) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.SetServiceType(nullptr), -1998);
  EXPECT_EQ(request.GetServiceType(), nullptr);
}

TEST(ActionRequest, SetActionNameRejectsNullAndKeepsTheOldValue) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Play"), 0);
  EXPECT_EQ(request.SetActionName(nullptr), -1998);
  EXPECT_EQ(Text(request.GetActionName()), "Play");
}

TEST(ActionRequest, AddArgumentKeepsArrivalOrder) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.AddArgument("InstanceID", "0"), 0);
  EXPECT_EQ(request.AddArgument("Channel", "Master"), 0);
  EXPECT_EQ(request.AddArgument("DesiredVolume", "42"), 0);
  ASSERT_EQ(request.GetArgumentCount(), 3u);
  EXPECT_EQ(Text(request.GetArgumentName(0)), "InstanceID");
  EXPECT_EQ(Text(request.GetArgumentValueAt(0)), "0");
  EXPECT_EQ(Text(request.GetArgumentName(1)), "Channel");
  EXPECT_EQ(Text(request.GetArgumentValueAt(1)), "Master");
  EXPECT_EQ(Text(request.GetArgumentName(2)), "DesiredVolume");
  EXPECT_EQ(Text(request.GetArgumentValueAt(2)), "42");
}

TEST(ActionRequest, ArgumentAtIsNullPastTheEnd) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  EXPECT_EQ(request.GetArgumentName(1), nullptr);
  EXPECT_EQ(request.GetArgumentValueAt(1), nullptr);
}

TEST(ActionRequest, AddArgumentRejectsANullNameAndAppendsNothing) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.AddArgument(nullptr, "0"), -1998);
  EXPECT_EQ(request.GetArgumentCount(), 0u);
}

TEST(ActionRequest, AddArgumentRejectsANullValueAndAppendsNothing) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.AddArgument("InstanceID", nullptr), -1998);
  EXPECT_EQ(request.GetArgumentCount(), 0u);
}

TEST(ActionRequest, GetArgumentValueFindsTheArgumentByName) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  ASSERT_EQ(request.AddArgument("Speed", "1"), 0);
  EXPECT_EQ(Text(request.GetArgumentValue("Speed")), "1");
  EXPECT_EQ(Text(request.GetArgumentValue("InstanceID")), "0");
}

TEST(ActionRequest, GetArgumentValueIsNullForAMissingArgument) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  EXPECT_EQ(request.GetArgumentValue("Speed"), nullptr);
}

TEST(ActionRequest, GetArgumentValueIsEmptyForAnArgumentWithAnEmptyValue) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("CurrentURIMetaData", ""), 0);
  const char* value = request.GetArgumentValue("CurrentURIMetaData");
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(value, "");
}

TEST(ActionRequest, GetArgumentValueOfARepeatedNameIsTheFirstValue) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "7"), 0);
  EXPECT_EQ(Text(request.GetArgumentValue("InstanceID")), "0");
  EXPECT_EQ(request.GetArgumentCount(), 2u);
  EXPECT_EQ(Text(request.GetArgumentValueAt(1)), "7");
}

TEST(ActionRequest, GetArgumentValueIsCaseSensitive) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  EXPECT_EQ(request.GetArgumentValue("instanceid"), nullptr);
  EXPECT_EQ(request.GetArgumentValue("InstanceId"), nullptr);
}

TEST(ActionRequest, GetArgumentValueOfANullNameIsNull) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  EXPECT_EQ(request.GetArgumentValue(nullptr), nullptr);
}

TEST(ActionRequest, SetServiceTypeAnswersNoMemoryAndKeepsTheOldValue) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kAVTransport), 0);
  int32_t result = 0;
  {
    const ScopedAllocationFailure failure(1, true);
    result = request.SetServiceType(kRenderingControl);
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(Text(request.GetServiceType()), kAVTransport);
}

TEST(ActionRequest, SetActionNameAnswersNoMemoryOnAFreshRequestLeavingItUnset) {
  marlo::ActionRequest request;
  int32_t result = 0;
  {
    const ScopedAllocationFailure failure(1, true);
    result = request.SetActionName(kLongText);
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(request.GetActionName(), nullptr);
}

TEST(ActionRequest, AddArgumentAnswersNoMemoryAtEveryAllocationAndAppendsNothing) {
  for (unsigned long nth = 1;; ++nth) {
    marlo::ActionRequest request;
    ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
    int32_t result = 0;
    unsigned long fired = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = request.AddArgument(kLongText, kLongText);
      fired = failure.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(request.GetArgumentCount(), 2u);
      EXPECT_GT(nth, 2u);
      break;
    }
    EXPECT_EQ(result, -1997) << "allocation " << nth;
    EXPECT_EQ(request.GetArgumentCount(), 1u) << "allocation " << nth;
    EXPECT_EQ(Text(request.GetArgumentValue("InstanceID")), "0") << "allocation " << nth;
  }
}

// ActionResponse --------------------------------------------------------------------------------------------

TEST(ActionResponse, NewResponseCarriesNoErrorAndNoArguments) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.GetErrorCode(), 0);
  EXPECT_EQ(response.GetErrorDescription(), nullptr);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
  EXPECT_EQ(response.GetArgumentName(0), nullptr);
  EXPECT_EQ(response.GetArgumentValueAt(0), nullptr);
}

TEST(ActionResponse, SetErrorCodeIsReadBackAndCountedOnce) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetErrorCode(701), 0);
  EXPECT_EQ(response.GetErrorCode(), 701);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 1u);
}

TEST(ActionResponse, SetErrorCodeTwiceKeepsTheLastCodeAndCountsTwoWrites) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetErrorCode(402), 0);
  EXPECT_EQ(response.SetErrorCode(718), 0);
  EXPECT_EQ(response.GetErrorCode(), 718);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 2u);
}

TEST(ActionResponse, SetErrorCodeTwiceWithTheSameCodeCountsTwoWrites) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetErrorCode(501), 0);
  ASSERT_EQ(response.SetErrorCode(501), 0);
  EXPECT_EQ(response.GetErrorCode(), 501);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 2u);
}

TEST(ActionResponse, SetErrorDescriptionIsReadBack) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetErrorDescription("Transition not available"), 0);
  EXPECT_EQ(Text(response.GetErrorDescription()), "Transition not available");
}

TEST(ActionResponse, LaterSetErrorDescriptionReplacesTheEarlier) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetErrorDescription("Invalid Args"), 0);
  EXPECT_EQ(response.SetErrorDescription("Action Failed"), 0);
  EXPECT_EQ(Text(response.GetErrorDescription()), "Action Failed");
}

TEST(ActionResponse, SetErrorDescriptionRejectsNullAndKeepsTheOldValue) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetErrorDescription("Invalid Args"), 0);
  EXPECT_EQ(response.SetErrorDescription(nullptr), -1998);
  EXPECT_EQ(Text(response.GetErrorDescription()), "Invalid Args");
}

TEST(ActionResponse, SetErrorDescriptionAnswersNoMemoryAndKeepsTheOldValue) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetErrorDescription("Invalid Args"), 0);
  int32_t result = 0;
  {
    const ScopedAllocationFailure failure(1, true);
    result = response.SetErrorDescription(kLongText);
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(Text(response.GetErrorDescription()), "Invalid Args");
}

TEST(ActionResponse, SetArgumentValueKeepsCallOrderWithDuplicates) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  EXPECT_EQ(response.SetArgumentValue("CurrentMute", "0"), 0);
  EXPECT_EQ(response.SetArgumentValue("CurrentVolume", "43"), 0);
  ASSERT_EQ(response.GetArgumentCount(), 3u);
  EXPECT_EQ(Text(response.GetArgumentName(0)), "CurrentVolume");
  EXPECT_EQ(Text(response.GetArgumentValueAt(0)), "42");
  EXPECT_EQ(Text(response.GetArgumentName(1)), "CurrentMute");
  EXPECT_EQ(Text(response.GetArgumentValueAt(1)), "0");
  EXPECT_EQ(Text(response.GetArgumentName(2)), "CurrentVolume");
  EXPECT_EQ(Text(response.GetArgumentValueAt(2)), "43");
}

TEST(ActionResponse, SetArgumentValueAcceptsAnEmptyValue) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetArgumentValue("TrackMetaData", ""), 0);
  EXPECT_EQ(Text(response.FindArgumentValue("TrackMetaData")), "");
}

TEST(ActionResponse, ArgumentAtIsNullPastTheEnd) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  EXPECT_EQ(response.GetArgumentName(1), nullptr);
  EXPECT_EQ(response.GetArgumentValueAt(1), nullptr);
}

TEST(ActionResponse, FindArgumentValueFindsTheFirstOfARepeatedName) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "43"), 0);
  EXPECT_EQ(Text(response.FindArgumentValue("CurrentVolume")), "42");
}

TEST(ActionResponse, FindArgumentValueIsNullForAMissingName) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  EXPECT_EQ(response.FindArgumentValue("CurrentMute"), nullptr);
  EXPECT_EQ(response.FindArgumentValue("currentvolume"), nullptr);
}

TEST(ActionResponse, FindArgumentValueOfANullNameIsNull) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  EXPECT_EQ(response.FindArgumentValue(nullptr), nullptr);
}

TEST(ActionResponse, SetArgumentValueRejectsANullNameAndAppendsNothing) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetArgumentValue(nullptr, "42"), -1998);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST(ActionResponse, SetArgumentValueRejectsANullValueAndAppendsNothing) {
  marlo::ActionResponse response;
  EXPECT_EQ(response.SetArgumentValue("CurrentVolume", nullptr), -1998);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST(ActionResponse, SetArgumentValueFaultAnswersTheInjectedCodeAndAppendsNothing) {
  marlo::ActionResponse response;
  ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kActionResponseSetArgument, 1, -1234);
    EXPECT_EQ(response.SetArgumentValue("CurrentMute", "0"), -1234);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ASSERT_EQ(response.GetArgumentCount(), 1u);
  EXPECT_EQ(Text(response.GetArgumentName(0)), "CurrentVolume");
  EXPECT_EQ(response.FindArgumentValue("CurrentMute"), nullptr);
}

TEST(ActionResponse, SetArgumentValueFaultOnTheSecondCallKeepsTheFirstArgument) {
  marlo::ActionResponse response;
  {
    const ScopedFault fault(DMR_CMN_FaultPoint::kActionResponseSetArgument, 2, -1997);
    EXPECT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
    EXPECT_EQ(response.SetArgumentValue("CurrentMute", "0"), -1997);
    EXPECT_EQ(response.SetArgumentValue("CurrentLoudness", "1"), 0);
  }
  ASSERT_EQ(response.GetArgumentCount(), 2u);
  EXPECT_EQ(Text(response.GetArgumentName(0)), "CurrentVolume");
  EXPECT_EQ(Text(response.GetArgumentName(1)), "CurrentLoudness");
}

TEST(ActionResponse, SetArgumentValueAnswersNoMemoryAtEveryAllocationAndAppendsNothing) {
  for (unsigned long nth = 1;; ++nth) {
    marlo::ActionResponse response;
    ASSERT_EQ(response.SetArgumentValue("CurrentVolume", "42"), 0);
    int32_t result = 0;
    unsigned long fired = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = response.SetArgumentValue(kLongText, kLongText);
      fired = failure.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(response.GetArgumentCount(), 2u);
      EXPECT_GT(nth, 2u);
      break;
    }
    EXPECT_EQ(result, -1997) << "allocation " << nth;
    EXPECT_EQ(response.GetArgumentCount(), 1u) << "allocation " << nth;
    EXPECT_EQ(Text(response.FindArgumentValue("CurrentVolume")), "42") << "allocation " << nth;
  }
}
