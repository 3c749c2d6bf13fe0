// The XML writer under the documents: escaping, the repair of text that is no valid XML, and its layout.
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <string>

#include "host/XmlWriter.h"

namespace {

const std::string kReplacement = "\xEF\xBF\xBD";

bool ParsesStrictly(const std::string& xml) {
  xmlDoc* document = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "memory.xml", nullptr,
                                   XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (document == nullptr) return false;
  xmlFreeDoc(document);
  return true;
}

TEST(HostValidXmlText, KeepsUtf8TextAndTheThreeAllowedControlCharacters) {
  const std::string text = "Caf\xC3\xA9 \xE2\x99\xAB \xF0\x9F\x8E\xB5\t\n\r&<>\"'";
  EXPECT_EQ(HOST_ValidXmlText(text), text);
  EXPECT_EQ(HOST_ValidXmlText(""), "");
}

TEST(HostValidXmlText, ReplacesEachByteThatIsNoXmlCharacter) {
  EXPECT_EQ(HOST_ValidXmlText(std::string("a\x01"
                                          "b",
                                          3)),
            "a" + kReplacement + "b");
  EXPECT_EQ(HOST_ValidXmlText(std::string("\0", 1)), kReplacement);
  EXPECT_EQ(HOST_ValidXmlText("\x1F\x0B"), kReplacement + kReplacement);
  EXPECT_EQ(HOST_ValidXmlText("\xFF"
                              "x"),
            kReplacement + "x");
  // An overlong form, a surrogate, a non-character and a code point beyond U+10FFFF.
  EXPECT_EQ(HOST_ValidXmlText("\xC0\x80"), kReplacement + kReplacement);
  EXPECT_EQ(HOST_ValidXmlText("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement);
  EXPECT_EQ(HOST_ValidXmlText("\xEF\xBF\xBE"), kReplacement + kReplacement + kReplacement);
  EXPECT_EQ(HOST_ValidXmlText("\xF4\x90\x80\x80"), kReplacement + kReplacement + kReplacement + kReplacement);
  // A sequence cut short by the end of the text.
  EXPECT_EQ(HOST_ValidXmlText("ok\xE2\x99"), "ok" + kReplacement + kReplacement);
}

TEST(HostXmlWriter, EscapesTextAndAttributesIntoAWellFormedDocument) {
  HOST_XmlWriter writer;
  writer.Start("root", "urn:example-org:test");
  writer.Attribute("quote", "say \"hi\" & 'bye' <now>");
  writer.Element("text", "a & b < c > d \" e ' f");
  writer.Element("broken", std::string("bell\x07 and \xFE", 11));
  writer.End();
  const std::string xml = writer.Finish();
  EXPECT_EQ(xml,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<root xmlns=\"urn:example-org:test\" quote=\"say &quot;hi&quot; &amp; 'bye' &lt;now&gt;\">\n"
            "  <text>a &amp; b &lt; c &gt; d &quot; e ' f</text>\n"
            "  <broken>bell" +
                kReplacement + " and " + kReplacement +
                "</broken>\n"
                "</root>\n");
  EXPECT_TRUE(ParsesStrictly(xml)) << xml;
}

TEST(HostXmlWriter, DeclaresAPrefixWhereItIsUsed) {
  HOST_XmlWriter writer;
  writer.Start("root");
  writer.PrefixedElement("x", "Marker", "urn:example-org:x", "on");
  writer.StartPrefixed("y", "Group", "urn:example-org:y");
  writer.End();
  const std::string xml = writer.Finish();
  EXPECT_EQ(xml,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<root>\n"
            "  <x:Marker xmlns:x=\"urn:example-org:x\">on</x:Marker>\n"
            "  <y:Group xmlns:y=\"urn:example-org:y\"/>\n"
            "</root>\n");
}

TEST(HostXmlWriter, FinishClosesWhatIsStillOpen) {
  HOST_XmlWriter writer;
  writer.Start("root");
  writer.Start("inner");
  const std::string xml = writer.Finish();
  EXPECT_TRUE(ParsesStrictly(xml)) << xml;
  EXPECT_NE(xml.find("</root>"), std::string::npos) << xml;
}

}  // namespace
