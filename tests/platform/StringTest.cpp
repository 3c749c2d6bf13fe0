#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>

#include "ScopedFault.h"
#include "dmr_cmn/Result.h"
#include "dmr_cmn/String.h"

namespace {

TEST(String, NewStringIsUnsetAndGivesNoText) {
  DMR_CMN_String s;
  EXPECT_EQ(s.GetCString(), nullptr);
  EXPECT_EQ(s.GetLength(), 0u);
}

TEST(String, SetCStringCopiesTheText) {
  char source[] = "PLAYING";
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString(source), 0);
  source[0] = 'X';
  EXPECT_STREQ(s.GetCString(), "PLAYING");
  EXPECT_EQ(s.GetLength(), 7u);
}

TEST(String, EmptyTextIsSetAndDiffersFromUnset) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString(""), 0);
  ASSERT_NE(s.GetCString(), nullptr);
  EXPECT_STREQ(s.GetCString(), "");
  EXPECT_EQ(s.Equals(""), 0);
}

TEST(String, SetCStringOfNullFailsAndKeepsTheText) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("kept"), 0);
  EXPECT_EQ(s.SetCString(nullptr), DMR_CMN_ERR_GENERIC);
  EXPECT_STREQ(s.GetCString(), "kept");
}

TEST(String, SetCStringReplacesTheText) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("a much longer first text"), 0);
  ASSERT_EQ(s.SetCString("b"), 0);
  EXPECT_STREQ(s.GetCString(), "b");
  EXPECT_EQ(s.GetLength(), 1u);
}

TEST(String, SetCStringOfItsOwnTextIsSafe) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("self"), 0);
  ASSERT_EQ(s.SetCString(s.GetCString()), 0);
  EXPECT_STREQ(s.GetCString(), "self");
}

TEST(String, EqualsGivesZeroForEqualAndMinusOneForDifferent) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("STOPPED"), 0);
  EXPECT_EQ(s.Equals("STOPPED"), 0);
  EXPECT_EQ(s.Equals("stopped"), -1);
  EXPECT_EQ(s.Equals("STOPPED "), -1);
  EXPECT_EQ(s.Equals(""), -1);
}

TEST(String, UnsetStringAndNullTextDifferFromEverything) {
  DMR_CMN_String unset;
  EXPECT_EQ(unset.Equals(""), -1);
  EXPECT_EQ(unset.Equals(nullptr), -1);
  DMR_CMN_String set;
  ASSERT_EQ(set.SetCString(""), 0);
  EXPECT_EQ(set.Equals(nullptr), -1);
}

TEST(String, AppendCStringGrowsTheTextAndTakesUnsetAsEmpty) {
  DMR_CMN_String s;
  ASSERT_EQ(s.AppendCString("/srv/renderer"), 0);
  ASSERT_EQ(s.AppendCString("/openhome.xml"), 0);
  EXPECT_STREQ(s.GetCString(), "/srv/renderer/openhome.xml");
  ASSERT_EQ(s.AppendCString("/openhome.xml"), 0);
  EXPECT_STREQ(s.GetCString(), "/srv/renderer/openhome.xml/openhome.xml");
  EXPECT_EQ(s.AppendCString(nullptr), DMR_CMN_ERR_GENERIC);
  EXPECT_EQ(s.GetLength(), std::strlen(s.GetCString()));
}

// A one-character text grows by appending: "a" then "b" is "ab" (a document root of "/" then gets
// "/openhome.xml" appended this way).
TEST(String, AppendingToAOneCharacterTextKeepsBoth) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("a"), 0);
  ASSERT_EQ(s.AppendCString("b"), 0);
  EXPECT_STREQ(s.GetCString(), "ab");
  EXPECT_EQ(s.GetLength(), 2u);
  DMR_CMN_String root;
  ASSERT_EQ(root.SetCString("/"), 0);
  ASSERT_EQ(root.AppendCString("/openhome.xml"), 0);
  EXPECT_STREQ(root.GetCString(), "//openhome.xml");
}

TEST(String, ClearMakesTheStringUnsetAgain) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("x"), 0);
  s.Clear();
  EXPECT_EQ(s.GetCString(), nullptr);
  EXPECT_EQ(s.GetLength(), 0u);
}

TEST(String, LongTextIsCopiedWhole) {
  const std::string text(300000, 'z');
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString(text.c_str()), 0);
  EXPECT_EQ(s.GetLength(), text.size());
  EXPECT_EQ(std::string(s.GetCString()), text);
}

TEST(String, NoMemoryForSetCStringGivesMinus989AndKeepsTheText) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("old"), 0);
  ScopedFault fault(DMR_CMN_FaultPoint::kStringAllocation, 1, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(s.SetCString("new"), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_STREQ(s.GetCString(), "old");
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(s.SetCString("new"), 0);
  EXPECT_STREQ(s.GetCString(), "new");
}

TEST(String, NoMemoryForAppendGivesMinus989AndKeepsTheText) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("old"), 0);
  ScopedFault fault(DMR_CMN_FaultPoint::kStringAllocation, 1, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(s.AppendCString("er"), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_STREQ(s.GetCString(), "old");
}

TEST(String, InjectedOtherCodeIsAnsweredAsItIs) {
  DMR_CMN_String s;
  ScopedFault fault(DMR_CMN_FaultPoint::kStringAllocation, 1, -5);
  EXPECT_EQ(s.SetCString("x"), -5);
  EXPECT_EQ(s.GetCString(), nullptr);
}

TEST(String, TheNthAllocationFailsOnlyThatOne) {
  DMR_CMN_String a, b, c;
  ScopedFault fault(DMR_CMN_FaultPoint::kStringAllocation, 2, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(a.SetCString("1"), 0);
  EXPECT_EQ(b.SetCString("2"), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(c.SetCString("3"), 0);
  EXPECT_EQ(fault.Fired(), 1u);
}

TEST(String, InjectedGetCStringGivesNoText) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("present"), 0);
  ScopedFault fault(DMR_CMN_FaultPoint::kStringGetCString, 1, 0);
  EXPECT_EQ(s.GetCString(), nullptr);
  EXPECT_STREQ(s.GetCString(), "present");
}

TEST(String, InjectedEqualsAnswersTheCode) {
  DMR_CMN_String s;
  ASSERT_EQ(s.SetCString("same"), 0);
  ScopedFault fault(DMR_CMN_FaultPoint::kStringEquals, 1, -7);
  EXPECT_EQ(s.Equals("same"), -7);
  EXPECT_EQ(s.Equals("same"), 0);
}

TEST(String, ArraysOfStringsStartUnset) {
  DMR_CMN_String* values = new (std::nothrow) DMR_CMN_String[83];
  ASSERT_NE(values, nullptr);
  for (int i = 0; i < 83; ++i) EXPECT_EQ(values[i].GetCString(), nullptr);
  ASSERT_EQ(values[82].SetCString("last"), 0);
  delete[] values;
}

}  // namespace

namespace {

TEST(String, InjectedFailureGivesNoArray) {
  ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
  DMR_CMN_String* values = new (std::nothrow) DMR_CMN_String[83];
  EXPECT_EQ(values, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
}

}  // namespace
