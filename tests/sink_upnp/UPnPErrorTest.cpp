// The UPnP error table both service objects answer actions with, the writing of an error into a reply,
// and the mapping of the application's answer through an action's set of accepted numbers.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "ActionReplies.h"
#include "marlo/ActionResponse.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/UPnPError.h"

namespace {

// True when nothing at all was written into the reply.
bool Untouched(const marlo::ActionResponse& response) {
  return response.GetErrorCode() == 0 && response.GetErrorCodeWriteCount() == 0 &&
         response.GetErrorDescription() == nullptr && response.GetArgumentCount() == 0;
}

TEST(UPnPErrorTable, EveryCodeHasItsExactDescription) {
  for (const UPnPErrorText& row : kUPnPErrorTexts) {
    SCOPED_TRACE(row.code);
    const char* description = SINK_UPNP_UPnPErrorDescription(row.code);
    ASSERT_NE(description, nullptr);
    EXPECT_STREQ(description, row.description);
  }
}

TEST(UPnPErrorTable, ContentBusyKeepsItsCurlyQuotes) {
  const char* description = SINK_UPNP_UPnPErrorDescription(715);
  ASSERT_NE(description, nullptr);
  // U+2018 and U+2019 in UTF-8, never the straight apostrophe.
  EXPECT_EQ(std::string(description), std::string("Content \u2018BUSY\u2019"));
  EXPECT_EQ(std::string(description), std::string("Content \xE2\x80\x98" "BUSY\xE2\x80\x99"));
  EXPECT_EQ(std::string(description).find('\''), std::string::npos);
  EXPECT_EQ(std::string(description).size(), 18u);
}

TEST(UPnPErrorTable, NumbersOutsideTheTableHaveNoDescription) {
  const int32_t unknown[] = {0, 1, -1, 400, 403, 500, 501, 700, 702, 703, 704, 707, 708, 709, 713, 719, 720, 999,
                             -401, -989, -1997};
  for (int32_t code : unknown) {
    SCOPED_TRACE(code);
    EXPECT_EQ(SINK_UPNP_UPnPErrorDescription(code), nullptr);
  }
}

TEST(UPnPErrorWrite, WritesTheCodeOnceAndItsDescription) {
  for (const UPnPErrorText& row : kUPnPErrorTexts) {
    SCOPED_TRACE(row.code);
    marlo::ActionResponse response;
    EXPECT_EQ(SINK_UPNP_WriteUPnPError(&response, row.code), 0);
    EXPECT_EQ(response.GetErrorCode(), row.code);
    EXPECT_EQ(response.GetErrorCodeWriteCount(), 1u);
    ASSERT_NE(response.GetErrorDescription(), nullptr);
    EXPECT_STREQ(response.GetErrorDescription(), row.description);
    EXPECT_EQ(response.GetArgumentCount(), 0u);
  }
}

TEST(UPnPErrorWrite, CodeWithoutDescriptionAnswersGenericAndWritesNothing) {
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_WriteUPnPError(&response, 719), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(SINK_UPNP_WriteUPnPError(&response, 0), SINK_UPNP_ERR_GENERIC);
  EXPECT_TRUE(Untouched(response));
}

TEST(UPnPErrorWrite, NullResponseAnswersGeneric) {
  EXPECT_EQ(SINK_UPNP_WriteUPnPError(nullptr, 402), SINK_UPNP_ERR_GENERIC);
}

TEST(UPnPErrorWrite, SecondErrorReplacesTheFirst) {
  marlo::ActionResponse response;
  ASSERT_EQ(SINK_UPNP_WriteUPnPError(&response, 402), 0);
  ASSERT_EQ(SINK_UPNP_WriteUPnPError(&response, 718), 0);
  EXPECT_EQ(response.GetErrorCode(), 718);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid InstanceID");
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 2u);
}

const int32_t kPlayAccepted[] = {402, 701, 714, 715, 716, 717, 718};

TEST(UPnPErrorAnswer, SuccessAnswersZeroAndLeavesTheReplyUntouched) {
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 0, kPlayAccepted), 0);
  EXPECT_TRUE(Untouched(response));
}

TEST(UPnPErrorAnswer, SuccessNeedsNoResponse) {
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(nullptr, 0, kPlayAccepted), 0);
}

TEST(UPnPErrorAnswer, EachAcceptedNumberIsWrittenAndAnswersZero) {
  for (int32_t code : kPlayAccepted) {
    SCOPED_TRACE(code);
    marlo::ActionResponse response;
    EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, code, kPlayAccepted), 0);
    EXPECT_EQ(response.GetErrorCode(), code);
    EXPECT_EQ(response.GetErrorCodeWriteCount(), 1u);
    EXPECT_STREQ(response.GetErrorDescription(), SINK_UPNP_UPnPErrorDescription(code));
    EXPECT_EQ(response.GetArgumentCount(), 0u);
  }
}

TEST(UPnPErrorAnswer, ContentBusyIsWrittenWithCurlyQuotes) {
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 715, kPlayAccepted), 0);
  EXPECT_EQ(response.GetErrorCode(), 715);
  EXPECT_STREQ(response.GetErrorDescription(), "Content \xE2\x80\x98" "BUSY\xE2\x80\x99");
}

TEST(UPnPErrorAnswer, TableNumberOutsideTheAcceptedSetAnswersGenericAndWritesNothing) {
  // 705 has a description but "Play" does not accept it.
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 705, kPlayAccepted), SINK_UPNP_ERR_GENERIC);
  EXPECT_TRUE(Untouched(response));
}

TEST(UPnPErrorAnswer, UnknownNumbersAnswerGenericAndWriteNothing) {
  const int32_t unknown[] = {-1, 1, 401, 500, 999, -989};
  for (int32_t code : unknown) {
    SCOPED_TRACE(code);
    marlo::ActionResponse response;
    EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, code, kPlayAccepted), SINK_UPNP_ERR_GENERIC);
    EXPECT_TRUE(Untouched(response));
  }
}

TEST(UPnPErrorAnswer, OnlyTheGivenCountOfTheSetIsAccepted) {
  const int32_t accepted[] = {705, 712};
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 712, accepted, 1), SINK_UPNP_ERR_GENERIC);
  EXPECT_TRUE(Untouched(response));
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 712, accepted, 2), 0);
  EXPECT_EQ(response.GetErrorCode(), 712);
  EXPECT_STREQ(response.GetErrorDescription(), "Play mode not supported");
}

TEST(UPnPErrorAnswer, EmptyAcceptedSetRefusesEveryError) {
  marlo::ActionResponse response;
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 402, nullptr, 0), SINK_UPNP_ERR_GENERIC);
  EXPECT_TRUE(Untouched(response));
  EXPECT_EQ(SINK_UPNP_AnswerTransferResult(&response, 0, nullptr, 0), 0);
}

}  // namespace
