#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "FaultInjection.h"
#include "ScopedFault.h"
#include "marlo/LastChange.h"
#include "marlo/Result.h"

namespace {

using marlo::LastChange;

constexpr char kAvtOpen[] = "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\">";
constexpr char kRcsOpen[] = "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\">";

std::unique_ptr<LastChange> NewDocument() {
  return std::unique_ptr<LastChange>(new (std::nothrow) LastChange);
}

std::unique_ptr<LastChange> NewDocument(int type) {
  std::unique_ptr<LastChange> document = NewDocument();
  if (document != nullptr && document->SetType(type) != marlo::kOk) document.reset();
  return document;
}

std::string TextOf(LastChange* document) {
  const char* text = document->GetXMLText();
  return text != nullptr ? text : "<null>";
}

// The whole content as one line per variable, "instance|name|value|channel" ("-" for no channel), and
// "instance|" for an instance without variables: easy to compare exactly.
std::vector<std::string> Walk(const LastChange& document) {
  std::vector<std::string> lines;
  for (int s = 0; document.GetVariableSet(s) != nullptr; ++s) {
    const LastChange::VariableSet* set = document.GetVariableSet(s);
    const std::string instance = std::to_string(document.GetInstanceId(set)) + "|";
    if (document.GetVariableName(set, 0) == nullptr) lines.push_back(instance);
    for (int v = 0; document.GetVariableName(set, v) != nullptr; ++v) {
      const char* channel = document.GetVariableChannel(set, v);
      lines.push_back(instance + document.GetVariableName(set, v) + "|" + document.GetVariableValue(set, v) +
                      "|" + (channel != nullptr ? channel : "-"));
    }
  }
  return lines;
}

using Lines = std::vector<std::string>;

// A DIDL-Lite document as a renderer receives it in CurrentTrackMetaData: quotes, entities of its own,
// an ampersand in a URL, non-ASCII text and a newline.
const char kDidl[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
    "<item id=\"1\" parentID=\"0\" restricted=\"1\"><dc:title>Rock &amp; Roll &lt;Live&gt; \xC3\xA9t\xC3\xA9"
    "</dc:title>\n<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
    "<res protocolInfo=\"http-get:*:audio/mpeg:*\">http://host/a.mp3?x=1&amp;y='2'</res></item></DIDL-Lite>";

// ---- Building ----

TEST(LastChange, OneVariableGivesTheExactText) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "TransportState", "PLAYING", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kAvtOpen) +
                                        "<InstanceID val=\"0\"><TransportState val=\"PLAYING\"/>"
                                        "</InstanceID></Event>");
}

TEST(LastChange, SeveralVariablesAppearInTheOrderFirstSet) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "TransportState", "PLAYING", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "3", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "AVTransportURI", "", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) +
                "<InstanceID val=\"0\"><TransportState val=\"PLAYING\"/><CurrentTrack val=\"3\"/>"
                "<AVTransportURI val=\"\"/></InstanceID></Event>");
}

TEST(LastChange, InstancesAppearInTheOrderOfTheirFirstVariable) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(5, "TransportState", "STOPPED", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "TransportState", "PLAYING", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(5, "CurrentTrack", "1", nullptr), marlo::kOk);
  EXPECT_EQ(
      TextOf(document.get()),
      std::string(kAvtOpen) +
          "<InstanceID val=\"5\"><TransportState val=\"STOPPED\"/><CurrentTrack val=\"1\"/></InstanceID>"
          "<InstanceID val=\"0\"><TransportState val=\"PLAYING\"/></InstanceID></Event>");
}

TEST(LastChange, LargestInstanceIdIsWrittenInDecimal) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(ULONG_MAX, "CurrentTrack", "1", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kAvtOpen) + "<InstanceID val=\"" + std::to_string(ULONG_MAX) +
                                        "\"><CurrentTrack val=\"1\"/></InstanceID></Event>");
}

TEST(LastChange, RenderingControlTypeWritesItsNamespaceAndTheChannelBeforeVal) {
  auto document = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "50", "Master"), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "PresetNameList", "FactoryDefaults", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kRcsOpen) +
                                        "<InstanceID val=\"0\"><Volume channel=\"Master\" val=\"50\"/>"
                                        "<PresetNameList val=\"FactoryDefaults\"/></InstanceID></Event>");
}

TEST(LastChange, DocumentWithoutVariablesIsTheEmptyEventElement) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>");
  ASSERT_EQ(document->SetType(LastChange::kTypeRenderingControl), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\"/>");
}

TEST(LastChange, ValueSetTwiceKeepsItsPlaceAndTakesTheLastValue) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "TransportState", "STOPPED", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "3", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "TransportState", "PLAYING", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) +
                "<InstanceID val=\"0\"><TransportState val=\"PLAYING\"/><CurrentTrack val=\"3\"/>"
                "</InstanceID></Event>");
}

TEST(LastChange, SameNameOnAnotherChannelIsAnotherVariable) {
  auto document = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "50", "Master"), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "40", "LF"), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "7", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "60", "Master"), marlo::kOk);
  EXPECT_EQ(
      TextOf(document.get()),
      std::string(kRcsOpen) +
          "<InstanceID val=\"0\"><Volume channel=\"Master\" val=\"60\"/><Volume channel=\"LF\" val=\"40\"/>"
          "<Volume val=\"7\"/></InstanceID></Event>");
}

TEST(LastChange, TextIsRebuiltAfterAChange) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "1", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><CurrentTrack val=\"1\"/></InstanceID></Event>");
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "2", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><CurrentTrack val=\"2\"/></InstanceID></Event>");
  ASSERT_EQ(document->SetType(LastChange::kTypeRenderingControl), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kRcsOpen) + "<InstanceID val=\"0\"><CurrentTrack val=\"2\"/></InstanceID></Event>");
}

TEST(LastChange, TextStaysTheSameWhileNothingChanges) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "1", nullptr), marlo::kOk);
  const char* first = document->GetXMLText();
  ASSERT_NE(first, nullptr);
  const std::string copy = first;
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "1", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetType(LastChange::kTypeAVTransport), marlo::kOk);
  EXPECT_EQ(document->GetXMLText(), first);
  EXPECT_EQ(std::string(first), copy);
}

// ---- Escaping ----

TEST(LastChange, EscapesAmpersandLessGreaterAndQuoteButNotApostrophe) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "a&b<c>d\"e'f", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kAvtOpen) +
                                        "<InstanceID val=\"0\"><A val=\"a&amp;b&lt;c&gt;d&quot;e'f\"/>"
                                        "</InstanceID></Event>");
}

TEST(LastChange, EscapesTabNewlineAndCarriageReturnAsCharacterReferences) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "1\t2\n3\r4", nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kAvtOpen) +
                                        "<InstanceID val=\"0\"><A val=\"1&#9;2&#10;3&#13;4\"/>"
                                        "</InstanceID></Event>");
}

TEST(LastChange, DropsOtherControlCharactersBelowSpace) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "\x01x\x08y\x0B\x0C\x1Fz\x7F", nullptr), marlo::kOk);
  // 0x7F (DEL) is a legal XML character and stays.
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><A val=\"xyz\x7F\"/></InstanceID></Event>");
}

TEST(LastChange, PassesUtf8BytesUnchanged) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  const char* value = "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xB5";
  ASSERT_EQ(document->SetStateVariable(0, "A", value, nullptr), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><A val=\"" + value + "\"/></InstanceID></Event>");
}

// A value that is not UTF-8 (or holds a character XML excludes) must not make the document unreadable:
// every subscriber would lose the whole event. Found by the fuzz target last_change.
TEST(LastChange, ReplacesBytesThatAreNotUtf8SoTheDocumentStaysReadable) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "\xFF\xFE", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(0, "B", "x\xC3", nullptr), marlo::kOk);           // cut off
  ASSERT_EQ(document->SetStateVariable(0, "C", "\xC0\x80", nullptr), marlo::kOk);       // overlong
  ASSERT_EQ(document->SetStateVariable(0, "D", "\xED\xA0\x80", nullptr), marlo::kOk);   // surrogate
  ASSERT_EQ(document->SetStateVariable(0, "E", "\xEF\xBF\xBE\xEF\xBF\xBF", nullptr), marlo::kOk);  // U+FFFE, U+FFFF
  ASSERT_EQ(document->SetStateVariable(0, "F", "\xC3\xA9\x80", nullptr), marlo::kOk);   // a stray continuation
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(TextOf(document.get()), std::string(kAvtOpen) + "<InstanceID val=\"0\"><A val=\"" + r + r +
                                        "\"/><B val=\"x" + r + "\"/><C val=\"" + r + r + "\"/><D val=\"" + r +
                                        r + r + "\"/><E val=\"" + r + r + r + r + r + r + "\"/><F val=\"\xC3\xA9" +
                                        r + "\"/></InstanceID></Event>");
  auto read = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(read->SetXMLText(TextOf(document.get()).c_str()), marlo::kOk);
  EXPECT_STREQ(read->GetVariableValue(read->GetVariableSet(0), 0), (r + r).c_str());
}

TEST(LastChange, EscapesTheChannelLikeTheValue) {
  auto document = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "Volume", "1", "L&R \"x\"\t<>\x02"), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kRcsOpen) +
                "<InstanceID val=\"0\"><Volume channel=\"L&amp;R &quot;x&quot;&#9;&lt;&gt;\" val=\"1\"/>"
                "</InstanceID></Event>");
}

// ---- Argument and state checks ----

TEST(LastChange, RejectsNamesThatAreNotXmlNames) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "CurrentTrack", "1", nullptr), marlo::kOk);
  const std::string before = TextOf(document.get());
  const char* const names[] = {nullptr,         "",        "1Track",  "-Track", ".Track", "Current Track",
                               "Track ",        "\tTrack", "a<b",     "a>b",    "a&b",    "a\"b",
                               "a/b",           "a=b",     "e:Track", ":Track",
                               "\xFF\xFE",       // not UTF-8
                               "Tr\xC3",         // cut-off sequence
                               "\xC0\x80x",      // overlong
                               "x\xED\xA0\x80",  // surrogate
                               "\xC3\x97x",      // U+00D7, not a letter
                               "\xCC\x80x",      // U+0300 may continue a name but not start it
                               "\xC2\xB7x"};     // U+00B7 likewise
  for (const char* name : names) {
    EXPECT_EQ(document->SetStateVariable(0, name, "2", nullptr), marlo::kErrorInvalidArgument)
        << (name != nullptr ? name : "(null)");
  }
  EXPECT_EQ(TextOf(document.get()), before);
}

TEST(LastChange, AcceptsXmlNamesWithDigitsDotsHyphensAndNonAsciiLetters) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  const char* const names[] = {"_x",
                               "A",
                               "X_1.b-c",
                               "Gr\xC3\xB6\xC3\x9F"
                               "e",
                               "\xC3\xA9t\xC3\xA9",
                               "x\xCC\x80\xC2\xB7",
                               "\xF0\x90\x80\x80"};
  for (const char* name : names) {
    EXPECT_EQ(document->SetStateVariable(0, name, "v", nullptr), marlo::kOk) << name;
  }
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) +
                "<InstanceID val=\"0\"><_x val=\"v\"/><A val=\"v\"/><X_1.b-c val=\"v\"/>"
                "<Gr\xC3\xB6\xC3\x9F"
                "e val=\"v\"/><\xC3\xA9t\xC3\xA9 val=\"v\"/><x\xCC\x80\xC2\xB7 val=\"v\"/>"
                "<\xF0\x90\x80\x80 val=\"v\"/></InstanceID></Event>");
  // And a reader takes them back.
  auto read = NewDocument();
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(read->SetXMLText(TextOf(document.get()).c_str()), marlo::kOk);
  EXPECT_EQ(Walk(*read), Walk(*document));
}

TEST(LastChange, RejectsANullValue) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->SetStateVariable(0, "CurrentTrack", nullptr, nullptr), marlo::kErrorInvalidArgument);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>");
}

TEST(LastChange, SetStateVariableBeforeSetTypeFails) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->SetStateVariable(0, "CurrentTrack", "1", nullptr), marlo::kErrorFailure);
  ASSERT_EQ(document->SetType(LastChange::kTypeAVTransport), marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>");
}

TEST(LastChange, UnknownTypeIsRejectedAndTheTypeStays) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->SetType(2), marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->SetType(-1), marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->GetXMLText(), nullptr);
  ASSERT_EQ(document->SetType(LastChange::kTypeRenderingControl), marlo::kOk);
  EXPECT_EQ(document->SetType(7), marlo::kErrorInvalidArgument);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\"/>");
}

TEST(LastChange, GetXMLTextBeforeSetTypeIsNull) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->GetXMLText(), nullptr);
}

// ---- Reading ----

TEST(LastChange, RoundTripKeepsTrickyValuesNamesAndChannelsInOrder) {
  auto built = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(built, nullptr);
  ASSERT_EQ(built->SetStateVariable(0, "CurrentTrackMetaData", kDidl, nullptr), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(0, "Quotes", "\"double\" 'single'", nullptr), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(0, "Amps", "a&b&amp;c&#39;d&lt;", nullptr), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(0, "Lines", "one\ntwo\r\nthree\tfour  five ", nullptr), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(0, "Volume", "50", "Master"), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(0, "Volume", "", "L\"F\""), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(3, "Empty", "", nullptr), marlo::kOk);
  ASSERT_EQ(built->SetStateVariable(3, "Utf8", "\xE2\x82\xAC>", nullptr), marlo::kOk);
  const std::string text = TextOf(built.get());

  auto read = NewDocument();
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(read->SetXMLText(text.c_str()), marlo::kOk);
  EXPECT_EQ(Walk(*read), Walk(*built));
  EXPECT_EQ(Walk(*read),
            (Lines{std::string("0|CurrentTrackMetaData|") + kDidl + "|-", "0|Quotes|\"double\" 'single'|-",
                   "0|Amps|a&b&amp;c&#39;d&lt;|-", "0|Lines|one\ntwo\r\nthree\tfour  five |-",
                   "0|Volume|50|Master", "0|Volume||L\"F\"", "3|Empty||-", "3|Utf8|\xE2\x82\xAC>|-"}));
  // The namespace gave the type, and the read document writes the same text again.
  EXPECT_EQ(TextOf(read.get()), text);
}

TEST(LastChange, LargeValueRoundTrips) {
  std::string value;
  while (value.size() < 200 * 1024) value += kDidl;
  auto built = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(built, nullptr);
  ASSERT_EQ(built->SetStateVariable(0, "CurrentTrackMetaData", value.c_str(), nullptr), marlo::kOk);
  const std::string text = TextOf(built.get());
  auto read = NewDocument();
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(read->SetXMLText(text.c_str()), marlo::kOk);
  const LastChange::VariableSet* set = read->GetVariableSet(0);
  ASSERT_NE(set, nullptr);
  EXPECT_STREQ(read->GetVariableName(set, 0), "CurrentTrackMetaData");
  ASSERT_NE(read->GetVariableValue(set, 0), nullptr);
  EXPECT_EQ(std::string(read->GetVariableValue(set, 0)), value);
  EXPECT_EQ(read->GetVariableName(set, 1), nullptr);
}

TEST(LastChange, ReadsPrefixedElements) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<e:Event xmlns:e=\"urn:schemas-upnp-org:metadata-1-0/AVT/\">"
                                 "<e:InstanceID val=\"0\"><e:TransportState val=\"PLAYING\"/>"
                                 "<e:CurrentTrack e:val=\"3\"/></e:InstanceID></e:Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|TransportState|PLAYING|-", "0|CurrentTrack|3|-"}));
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) +
                "<InstanceID val=\"0\"><TransportState val=\"PLAYING\"/><CurrentTrack val=\"3\"/>"
                "</InstanceID></Event>");
}

TEST(LastChange, ReadsADocumentWithoutNamespaceAndKeepsTheType) {
  auto document = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"0\"><Mute channel=\"Master\" val=\"0\"/>"
                                 "</InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|Mute|0|Master"}));
  EXPECT_EQ(TextOf(document.get()),
            std::string(kRcsOpen) +
                "<InstanceID val=\"0\"><Mute channel=\"Master\" val=\"0\"/></InstanceID></Event>");
}

TEST(LastChange, ReadingADocumentWithoutNamespaceGivesNoTypeWhenThereWasNone) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"0\"><A val=\"1\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|A|1|-"}));
  EXPECT_EQ(document->GetXMLText(), nullptr);
}

TEST(LastChange, ReadingTheRcsNamespaceSetsTheType) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\">"
                                 "<InstanceID val=\"0\"><Volume channel=\"Master\" val=\"50\"/>"
                                 "</InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(TextOf(document.get()), std::string(kRcsOpen) +
                                        "<InstanceID val=\"0\"><Volume channel=\"Master\" val=\"50\"/>"
                                        "</InstanceID></Event>");
}

TEST(LastChange, ReadingAnUnknownNamespaceKeepsTheType) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event xmlns=\"urn:example:other\"><InstanceID val=\"0\"><A val=\"1\"/>"
                                 "</InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><A val=\"1\"/></InstanceID></Event>");
}

TEST(LastChange, ReadsAnXmlDeclarationIndentationAndNewlines) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                 "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\">\n"
                                 "  <!-- a comment -->\n"
                                 "  <InstanceID val=\"0\">\n"
                                 "    <TransportState val=\"PLAYING\" />\n"
                                 "\t\t<CurrentTrack val=\"3\"></CurrentTrack>\n"
                                 "  </InstanceID>\n"
                                 "</Event>\n"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|TransportState|PLAYING|-", "0|CurrentTrack|3|-"}));
}

TEST(LastChange, ReadsEntitiesAndCharacterReferencesInValues) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(
      document->SetXMLText(
          "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"><InstanceID val=\"0\">"
          "<CurrentTrackMetaData val=\"&lt;DIDL-Lite xmlns=&quot;urn:x&quot;&gt;&lt;dc:title&gt;A &amp;amp; B"
          "&lt;/dc:title&gt;&lt;/DIDL-Lite&gt;\"/>"
          "<A val=\"&amp;&#39;&#x27;&apos;&#233;&#xE9;&#x20AC;&#10;\"/>"
          "</InstanceID></Event>"),
      marlo::kOk);
  EXPECT_EQ(
      Walk(*document),
      (Lines{"0|CurrentTrackMetaData|<DIDL-Lite xmlns=\"urn:x\"><dc:title>A &amp; B</dc:title></DIDL-Lite>|-",
             "0|A|&'''\xC3\xA9\xC3\xA9\xE2\x82\xAC\n|-"}));
}

TEST(LastChange, ReadsSingleQuotedAttributes) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event xmlns='urn:schemas-upnp-org:metadata-1-0/RCS/'><InstanceID val='0'>"
                                 "<Volume channel='Master' val='5\"0'/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|Volume|5\"0|Master"}));
}

TEST(LastChange, ReadsSeveralInstanceIdsInOrder) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"2\"><A val=\"a\"/><B val=\"b\"/></InstanceID>"
                                 "<InstanceID val=\"0\"><A val=\"c\"/></InstanceID>"
                                 "<InstanceID val=\"1\"><C val=\"d\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"2|A|a|-", "2|B|b|-", "0|A|c|-", "1|C|d|-"}));
}

TEST(LastChange, RepeatedInstanceIdsMergeAndRepeatedVariablesKeepTheirFirstPlaceAndLastValue) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"0\"><A val=\"1\"/><B val=\"2\"/></InstanceID>"
                                 "<InstanceID val=\"1\"><A val=\"x\"/></InstanceID>"
                                 "<InstanceID val=\"0\"><C val=\"3\"/><A val=\"4\"/></InstanceID>"
                                 "<InstanceID val=\"1\"><A val=\"y\" channel=\"M\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|A|4|-", "0|B|2|-", "0|C|3|-", "1|A|x|-", "1|A|y|M"}));
}

TEST(LastChange, SkipsElementsWithoutValAndOtherChildrenOfEvent) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><Other val=\"9\"><A val=\"no\"/></Other>"
                                 "<InstanceID val=\"0\"><A/><B value=\"x\"/><C val=\"c\">text</C>"
                                 "<D channel=\"Master\"/>text<?pi x?></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|C|c|-"}));
}

TEST(LastChange, SkipsInstanceIdsWhoseValIsNotADecimalNumber) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(
      document->SetXMLText("<Event><InstanceID><A val=\"missing\"/></InstanceID>"
                           "<InstanceID val=\"\"><A val=\"empty\"/></InstanceID>"
                           "<InstanceID val=\"-1\"><A val=\"negative\"/></InstanceID>"
                           "<InstanceID val=\"+1\"><A val=\"plus\"/></InstanceID>"
                           "<InstanceID val=\"abc\"><A val=\"letters\"/></InstanceID>"
                           "<InstanceID val=\"1x\"><A val=\"trailing\"/></InstanceID>"
                           "<InstanceID val=\"0x10\"><A val=\"hex\"/></InstanceID>"
                           "<InstanceID val=\"1.5\"><A val=\"fraction\"/></InstanceID>"
                           "<InstanceID val=\"99999999999999999999999\"><A val=\"overflow\"/></InstanceID>"
                           "<InstanceID val=\" 7 \"><A val=\"blanks\"/></InstanceID>"
                           "<InstanceID val=\"007\"><B val=\"zeros\"/></InstanceID></Event>"),
      marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"7|A|blanks|-", "7|B|zeros|-"}));
}

TEST(LastChange, KeepsAnInstanceIdWithoutVariablesAsAnEmptySet) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText(
                "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\">"
                "<InstanceID val=\"0\"/><InstanceID val=\"1\"><A val=\"1\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"0|", "1|A|1|-"}));
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) +
                "<InstanceID val=\"0\"/><InstanceID val=\"1\"><A val=\"1\"/></InstanceID></Event>");
}

TEST(LastChange, ReadingAnEmptyEventGivesNoSets) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>"), marlo::kOk);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>");
}

TEST(LastChange, ReadingReplacesTheWholeContent) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "1", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(1, "B", "2", nullptr), marlo::kOk);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"4\"><C val=\"3\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"4|C|3|-"}));
  // Building goes on from the read content.
  ASSERT_EQ(document->SetStateVariable(4, "C", "5", nullptr), marlo::kOk);
  EXPECT_EQ(Walk(*document), (Lines{"4|C|5|-"}));
}

TEST(LastChange, WalkAnswersNullPastTheEndAndForANullSet) {
  auto document = NewDocument(LastChange::kTypeRenderingControl);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
  ASSERT_EQ(document->SetStateVariable(9, "Volume", "1", "Master"), marlo::kOk);
  ASSERT_EQ(document->SetStateVariable(9, "Mute", "0", nullptr), marlo::kOk);
  const LastChange::VariableSet* set = document->GetVariableSet(0);
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(document->GetInstanceId(set), 9ul);
  EXPECT_STREQ(document->GetVariableChannel(set, 0), "Master");
  EXPECT_EQ(document->GetVariableChannel(set, 1), nullptr);  // a variable without channel
  EXPECT_EQ(document->GetVariableSet(1), nullptr);
  EXPECT_EQ(document->GetVariableSet(-1), nullptr);
  EXPECT_EQ(document->GetVariableName(set, 2), nullptr);
  EXPECT_EQ(document->GetVariableValue(set, 2), nullptr);
  EXPECT_EQ(document->GetVariableChannel(set, 2), nullptr);
  EXPECT_EQ(document->GetVariableName(set, -1), nullptr);
  EXPECT_EQ(document->GetVariableValue(set, -1), nullptr);
  EXPECT_EQ(document->GetVariableChannel(set, -1), nullptr);
  EXPECT_EQ(document->GetVariableName(nullptr, 0), nullptr);
  EXPECT_EQ(document->GetVariableValue(nullptr, 0), nullptr);
  EXPECT_EQ(document->GetVariableChannel(nullptr, 0), nullptr);
  EXPECT_EQ(document->GetInstanceId(nullptr), 0ul);
}

TEST(LastChange, MalformedTextIsRefusedAndEmptiesTheContent) {
  const char* const inputs[] = {
      "",
      "not xml at all",
      "<Event><InstanceID val=\"0\"><A val=\"1\"/></InstanceID>",              // unclosed
      "<Event><InstanceID val=\"0\"><A val=\"a & b\"/></InstanceID></Event>",  // bare ampersand
      "<Event><InstanceID val=\"0\"><A val=\"a < b\"/></InstanceID></Event>",
      "<Event><InstanceID val=0><A val=\"1\"/></InstanceID></Event>",           // unquoted
      "<Event><InstanceID val=\"0\"><A val=\"&#1;\"/></InstanceID></Event>",    // not an XML character
      "<Event><InstanceID val=\"0\"><A val=\"&nbsp;\"/></InstanceID></Event>",  // undeclared entity
      "<e:Event><InstanceID val=\"0\"><A val=\"1\"/></InstanceID></e:Event>",   // undeclared prefix
      "<Event/><Event/>",
      "<Other><InstanceID val=\"0\"><A val=\"1\"/></InstanceID></Other>",  // root not Event
      "<InstanceID val=\"0\"><A val=\"1\"/></InstanceID>",
  };
  for (const char* input : inputs) {
    auto document = NewDocument(LastChange::kTypeAVTransport);
    ASSERT_NE(document, nullptr);
    ASSERT_EQ(document->SetStateVariable(0, "Before", "1", nullptr), marlo::kOk);
    EXPECT_EQ(document->SetXMLText(input), marlo::kErrorInvalidArgument) << input;
    EXPECT_EQ(document->GetVariableSet(0), nullptr) << input;
    // The type stays: the document is the empty Event.
    EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>") << input;
  }
}

TEST(LastChange, NullTextIsRefusedAndEmptiesTheContent) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetXMLText("<Event><InstanceID val=\"0\"><A val=\"1\"/></InstanceID></Event>"),
            marlo::kOk);
  EXPECT_EQ(document->SetXMLText(nullptr), marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
}

TEST(LastChange, DocumentTypeDeclarationIsRefused) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->SetXMLText("<!DOCTYPE Event><Event><InstanceID val=\"0\"><A val=\"1\"/></InstanceID>"
                                 "</Event>"),
            marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->SetXMLText("<!DOCTYPE Event [<!ENTITY x \"y\">]><Event><InstanceID val=\"0\">"
                                 "<A val=\"&x;\"/></InstanceID></Event>"),
            marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
}

TEST(LastChange, ExternalEntityIsNeverRead) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  const std::string path = std::string(DMR_TEST_DATA_DIR) + "/../CMakeLists.txt";
  const std::string text = "<!DOCTYPE Event [<!ENTITY x SYSTEM \"file://" + path +
                           "\">]><Event><InstanceID val=\"0\"><A val=\"1\">&x;</A><B val=\"&x;\"/>"
                           "</InstanceID></Event>";
  EXPECT_EQ(document->SetXMLText(text.c_str()), marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
}

// Entities nested ten deep, each ten of the one below: 10^9 copies of "lol" if expanded.
std::string BillionLaughs(bool inAttribute) {
  std::string text = "<?xml version=\"1.0\"?><!DOCTYPE Event [<!ENTITY lol0 \"lol\">";
  for (int level = 1; level <= 9; ++level) {
    text += "<!ENTITY lol" + std::to_string(level) + " \"";
    for (int i = 0; i < 10; ++i) text += "&lol" + std::to_string(level - 1) + ";";
    text += "\">";
  }
  text += "]><Event><InstanceID val=\"0\">";
  text += inAttribute ? "<A val=\"&lol9;\"/>" : "<A val=\"1\">&lol9;</A>";
  text += "</InstanceID></Event>";
  return text;
}

// An expansion would take minutes and gigabytes: the test's time limit catches one. How fast the refusal
// is stands in runtime_bench (BM_LastChangeRefusesEntityExpansion).
TEST(LastChange, BillionLaughsIsRefused) {
  for (bool inAttribute : {true, false}) {
    auto document = NewDocument();
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->SetXMLText(BillionLaughs(inAttribute).c_str()), marlo::kErrorInvalidArgument);
    EXPECT_EQ(document->GetVariableSet(0), nullptr);
  }
}

TEST(LastChange, QuadraticEntityBlowupIsRefused) {
  // One 50 KB entity used 20000 times: 1 GB if expanded, no nesting for a loop detector to see.
  std::string text = "<!DOCTYPE Event [<!ENTITY big \"" + std::string(50000, 'x') +
                     "\">]><Event>"
                     "<InstanceID val=\"0\"><A val=\"";
  for (int i = 0; i < 20000; ++i) text += "&big;";
  text += "\"/></InstanceID></Event>";
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->SetXMLText(text.c_str()), marlo::kErrorInvalidArgument);
  EXPECT_EQ(document->GetVariableSet(0), nullptr);
}

// ---- Fault injection ----

TEST(LastChange, CreationFaultAnswersNull) {
  ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeCreation, 1, 0);
  LastChange* document = new (std::nothrow) LastChange;
  EXPECT_EQ(document, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
  delete document;
}

TEST(LastChange, SetTypeFaultAnswersTheCodeAndKeepsTheType) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeSetType, 1, -1234);
    EXPECT_EQ(document->SetType(LastChange::kTypeRenderingControl), -1234);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(TextOf(document.get()), "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"/>");
}

TEST(LastChange, SetTypeFaultBeforeAnyTypeLeavesNoType) {
  auto document = NewDocument();
  ASSERT_NE(document, nullptr);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeSetType, 1, marlo::kErrorNoMemory);
    EXPECT_EQ(document->SetType(LastChange::kTypeAVTransport), marlo::kErrorNoMemory);
  }
  EXPECT_EQ(document->GetXMLText(), nullptr);
}

TEST(LastChange, SetStateVariableFaultAnswersTheCodeAndChangesNothing) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "1", nullptr), marlo::kOk);
  const std::string before = TextOf(document.get());
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeSetStateVariable, 1, marlo::kErrorNoMemory, true);
    EXPECT_EQ(document->SetStateVariable(0, "A", "2", nullptr), marlo::kErrorNoMemory);  // existing
    EXPECT_EQ(document->SetStateVariable(0, "B", "3", nullptr), marlo::kErrorNoMemory);  // new variable
    EXPECT_EQ(document->SetStateVariable(1, "A", "4", nullptr), marlo::kErrorNoMemory);  // new instance
    EXPECT_EQ(fault.Fired(), 3u);
  }
  EXPECT_EQ(TextOf(document.get()), before);
  EXPECT_EQ(Walk(*document), (Lines{"0|A|1|-"}));
}

TEST(LastChange, GetXMLTextFaultAnswersNullAndTheNextCallGivesTheText) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "1", nullptr), marlo::kOk);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeGetXMLText, 1, 0);
    EXPECT_EQ(document->GetXMLText(), nullptr);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(TextOf(document.get()),
            std::string(kAvtOpen) + "<InstanceID val=\"0\"><A val=\"1\"/></InstanceID></Event>");
}

TEST(LastChange, SetXMLTextFaultAnswersTheCodeAndChangesNothing) {
  auto document = NewDocument(LastChange::kTypeAVTransport);
  ASSERT_NE(document, nullptr);
  ASSERT_EQ(document->SetStateVariable(0, "A", "1", nullptr), marlo::kOk);
  const std::string before = TextOf(document.get());
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLastChangeSetXMLText, 1, marlo::kErrorFailure, true);
    EXPECT_EQ(document->SetXMLText("<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\">"
                                   "<InstanceID val=\"2\"><B val=\"2\"/></InstanceID></Event>"),
              marlo::kErrorFailure);
    // Not even the emptying that a refused text brings.
    EXPECT_EQ(document->SetXMLText(nullptr), marlo::kErrorFailure);
    EXPECT_EQ(document->SetXMLText("not xml"), marlo::kErrorFailure);
    EXPECT_EQ(fault.Fired(), 3u);
  }
  EXPECT_EQ(TextOf(document.get()), before);
  EXPECT_EQ(Walk(*document), (Lines{"0|A|1|-"}));
}

}  // namespace
