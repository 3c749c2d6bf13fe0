#include <gtest/gtest.h>

#include <string>

#include "JsonWriter.h"

TEST(JsonEscape, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(HOST_JsonEscape("say \"hi\" \\ now"), "say \\\"hi\\\" \\\\ now");
  EXPECT_EQ(HOST_JsonEscape("a\nb\rc\td"), "a\\nb\\rc\\td");
  EXPECT_EQ(HOST_JsonEscape(std::string("\x01\x1f\x7f", 3)), "\\u0001\\u001f\\u007f");
  EXPECT_EQ(HOST_JsonEscape(std::string("nul\0byte", 8)), "nul\\u0000byte");
}

TEST(JsonEscape, EscapesMarkupCharactersSoTheTextCannotCloseATag) {
  EXPECT_EQ(HOST_JsonEscape("</script><img src=x onerror='alert(1)'>&amp;"),
            "\\u003c/script\\u003e\\u003cimg src=x onerror=\\u0027alert(1)\\u0027\\u003e\\u0026amp;");
}

TEST(JsonEscape, KeepsValidUtf8AndEscapesTheJavaScriptLineSeparators) {
  const std::string text = "Mot\xC3\xB6rhead \xE2\x80\x93 \xE6\x9D\xB1\xE4\xBA\xAC \xF0\x9F\x8E\xB5";
  EXPECT_EQ(HOST_JsonEscape(text), text);
  EXPECT_EQ(HOST_JsonEscape("a\xE2\x80\xA8"
                            "b\xE2\x80\xA9"
                            "c"),
            "a\\u2028b\\u2029c");
}

TEST(JsonEscape, ReplacesEachByteThatIsNotUtf8WithTheReplacementCharacter) {
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(HOST_JsonEscape("Caf\xE9!"), "Caf" + replacement + "!");                    // Latin-1
  EXPECT_EQ(HOST_JsonEscape("\xC0\xAF"), replacement + replacement);                    // overlong '/'
  EXPECT_EQ(HOST_JsonEscape("\xED\xA0\x80"), replacement + replacement + replacement);  // a surrogate
  EXPECT_EQ(HOST_JsonEscape("\xF4\x90\x80\x80"), replacement + replacement + replacement + replacement);
  EXPECT_EQ(HOST_JsonEscape("end\xE2\x80"), "end" + replacement + replacement);  // cut short
  EXPECT_EQ(HOST_JsonEscape("\x80x"), replacement + "x");                        // lone continuation
}

TEST(JsonEscape, CutsALongTextAtACharacterBoundaryAndMarksTheCut) {
  const std::string ellipsis = "\xE2\x80\xA6";
  EXPECT_EQ(HOST_JsonEscape("abcdefghij", 10), "abcdefghij");
  EXPECT_EQ(HOST_JsonEscape("abcdefghijk", 10), "abcdefg" + ellipsis);
  // "é" is two bytes: the cut goes before it rather than through it.
  EXPECT_EQ(HOST_JsonEscape("abcdef\xC3\xA9xyz", 10), "abcdef" + ellipsis);
  EXPECT_EQ(HOST_JsonEscape("abcde\xC3\xA9xyzw", 10), "abcde\xC3\xA9" + ellipsis);
  // Nor through an escape.
  EXPECT_EQ(HOST_JsonEscape("abcde<xyz", 10), "abcde" + ellipsis);
  EXPECT_EQ(HOST_JsonEscape("abcdefghijk", 2), "");
}

TEST(JsonEscape, TheLimitBoundsTheEscapedLengthWhateverTheText) {
  const std::string controls(5000, '\x01');
  for (std::size_t limit : {0u, 3u, 5u, 6u, 7u, 100u, 1023u}) {
    const std::string escaped = HOST_JsonEscape(controls, limit);
    EXPECT_LE(escaped.size(), limit) << limit;
  }
}

TEST(JsonWriter, PlacesCommasAndColonsInNestedObjectsAndArrays) {
  HOST_JsonWriter json;
  json.BeginObject();
  json.Member("name", "a\"b");
  json.Member("count", int64_t{-3});
  json.MemberBool("on", true);
  json.Key("none");
  json.Null();
  json.Key("list");
  json.BeginArray();
  json.Number(1);
  json.BeginObject();
  json.End();
  json.BeginArray();
  json.End();
  json.String("x");
  json.End();
  json.Key("empty");
  json.BeginObject();
  json.End();
  json.End();
  EXPECT_EQ(json.Text(),
            R"({"name":"a\"b","count":-3,"on":true,"none":null,"list":[1,{},[],"x"],"empty":{}})");
}

TEST(JsonWriter, KeysAreEscapedAndStringsCutToTheirLimit) {
  HOST_JsonWriter json;
  json.BeginObject();
  json.Member("k<", "abcdefghijk", 10);
  json.End();
  EXPECT_EQ(json.Text(), "{\"k\\u003c\":\"abcdefg\xE2\x80\xA6\"}");
}
