#include "ActionReplies.h"

#include <gtest/gtest.h>

#include <cstddef>

const UPnPErrorText kUPnPErrorTexts[13] = {
    {401, "Invalid Action"},
    {402, "Invalid Args"},
    {701, "Transition not available"},
    {705, "Transport is locked"},
    {706, "Invalid connection reference"},
    {710, "Seek mode not supported"},
    {711, "Illegal seek target"},
    {712, "Play mode not supported"},
    {714, "Illegal MIME-type"},
    {715,
     "Content \xE2\x80\x98"
     "BUSY\xE2\x80\x99"},
    {716, "Resource not found"},
    {717, "Play speed not supported"},
    {718, "Invalid InstanceID"},
};

std::string Description(int32_t code) {
  for (const UPnPErrorText& error : kUPnPErrorTexts) {
    if (error.code == code) return error.description;
  }
  ADD_FAILURE() << "no description for " << code;
  return "";
}

Args OutArguments(const marlo::ActionResponse& response) {
  Args arguments;
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    arguments.emplace_back(response.GetArgumentName(i), response.GetArgumentValueAt(i));
  }
  return arguments;
}

void ExpectUntouched(const marlo::ActionResponse& response) {
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
  EXPECT_EQ(response.GetErrorCode(), 0);
  EXPECT_EQ(response.GetErrorDescription(), nullptr);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

void ExpectError(const marlo::ActionResponse& response, int32_t code, unsigned writes) {
  EXPECT_EQ(response.GetErrorCode(), code);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), writes);
  ASSERT_NE(response.GetErrorDescription(), nullptr);
  EXPECT_EQ(std::string(response.GetErrorDescription()), Description(code));
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}
