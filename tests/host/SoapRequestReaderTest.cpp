#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "ScopedAllocationFailure.h"
#include "SoapRequestReader.h"
#include "marlo/ActionRequest.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kAVTransport = "urn:schemas-upnp-org:service:AVTransport:1";

// The Envelope element around `body` (the Body's content).
std::string EnvelopeElement(const std::string& body) {
  return "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\n"
         "  <s:Body>\n    " +
         body + "\n  </s:Body>\n</s:Envelope>\n";
}

// A whole request document, as control points send it.
std::string Envelope(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + EnvelopeElement(body);
}

// An AVTransport action element with `arguments` inside.
std::string Action(const std::string& name, const std::string& arguments) {
  return "<u:" + name + " xmlns:u=\"" + kAVTransport + "\">" + arguments + "</u:" + name + ">";
}

std::string Text(const char* text) { return text == nullptr ? "<null>" : text; }

// The outcome of one read: result, reason, and the request it filled.
struct Read {
  int32_t result = 1;
  std::string reason;
  marlo::ActionRequest request;
};

void ReadInto(const std::string& body, Read* read) {
  read->result = HOST_ReadSoapRequest(body.data(), body.size(), &read->request, &read->reason);
}

// True when the request carries nothing: a refused body leaves it as it was made.
bool IsUntouched(const marlo::ActionRequest& request) {
  return request.GetServiceType() == nullptr && request.GetActionName() == nullptr &&
         request.GetArgumentCount() == 0;
}

// Expects `body` to be refused with a reason containing `reasonPart`, the request untouched.
void ExpectRefused(const std::string& body, const std::string& reasonPart) {
  Read read;
  ReadInto(body, &read);
  EXPECT_EQ(read.result, marlo::kErrorInvalidArgument);
  EXPECT_NE(read.reason.find(reasonPart), std::string::npos) << "reason: " << read.reason;
  EXPECT_TRUE(IsUntouched(read.request));
}

}  // namespace

TEST(SoapRequestReader, NormalRequestGivesServiceTypeActionAndArguments) {
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>0</InstanceID><Speed>1</Speed>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetServiceType()), kAVTransport);
  EXPECT_EQ(Text(read.request.GetActionName()), "Play");
  ASSERT_EQ(read.request.GetArgumentCount(), 2u);
  EXPECT_EQ(Text(read.request.GetArgumentValue("InstanceID")), "0");
  EXPECT_EQ(Text(read.request.GetArgumentValue("Speed")), "1");
}

TEST(SoapRequestReader, ArgumentsKeepDocumentOrder) {
  Read read;
  ReadInto(
      Envelope(Action("Seek", "<Unit>REL_TIME</Unit>\n<InstanceID>0</InstanceID>\n<Target>0:01:00</Target>")),
      &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  ASSERT_EQ(read.request.GetArgumentCount(), 3u);
  EXPECT_EQ(Text(read.request.GetArgumentName(0)), "Unit");
  EXPECT_EQ(Text(read.request.GetArgumentName(1)), "InstanceID");
  EXPECT_EQ(Text(read.request.GetArgumentName(2)), "Target");
  EXPECT_EQ(Text(read.request.GetArgumentValueAt(2)), "0:01:00");
}

TEST(SoapRequestReader, RepeatedArgumentIsKeptTwice) {
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>0</InstanceID><InstanceID>7</InstanceID>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  ASSERT_EQ(read.request.GetArgumentCount(), 2u);
  EXPECT_EQ(Text(read.request.GetArgumentValueAt(0)), "0");
  EXPECT_EQ(Text(read.request.GetArgumentName(1)), "InstanceID");
  EXPECT_EQ(Text(read.request.GetArgumentValueAt(1)), "7");
}

TEST(SoapRequestReader, MissingArgumentStaysMissing) {
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>0</InstanceID>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(read.request.GetArgumentValue("Speed"), nullptr);
  EXPECT_EQ(read.request.GetArgumentCount(), 1u);
}

TEST(SoapRequestReader, ActionWithoutArgumentsHasNone) {
  Read read;
  ReadInto(Envelope("<u:Stop xmlns:u=\"urn:av-openhome-org:service:Playlist:1\"/>"), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetServiceType()), "urn:av-openhome-org:service:Playlist:1");
  EXPECT_EQ(Text(read.request.GetActionName()), "Stop");
  EXPECT_EQ(read.request.GetArgumentCount(), 0u);
}

TEST(SoapRequestReader, EmptyArgumentIsAnEmptyText) {
  Read read;
  ReadInto(Envelope(Action("SetAVTransportURI",
                           "<InstanceID>0</InstanceID><CurrentURI></CurrentURI><CurrentURIMetaData/>")),
           &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURI")), "");
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURIMetaData")), "");
}

TEST(SoapRequestReader, WhitespaceInsideAnArgumentIsItsValue) {
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID> 0\n</InstanceID><Speed>   </Speed>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("InstanceID")), " 0\n");
  EXPECT_EQ(Text(read.request.GetArgumentValue("Speed")), "   ");
}

TEST(SoapRequestReader, EntitiesAreDecoded) {
  Read read;
  ReadInto(Envelope(Action("SetAVTransportURI",
                           "<CurrentURI>http://h/a?x=1&amp;y=2</CurrentURI>"
                           "<CurrentURIMetaData>&lt;DIDL-Lite&gt;&#x2018;q&#8217;&quot;&apos;"
                           "</CurrentURIMetaData>")),
           &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURI")), "http://h/a?x=1&y=2");
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURIMetaData")), "<DIDL-Lite>‘q’\"'");
}

TEST(SoapRequestReader, CdataIsTakenLiterallyAndJoinedWithText) {
  Read read;
  ReadInto(Envelope(Action("SetAVTransportURI",
                           "<CurrentURIMetaData>a<![CDATA[<DIDL-Lite>&amp;</DIDL-Lite>]]>b"
                           "</CurrentURIMetaData>")),
           &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURIMetaData")), "a<DIDL-Lite>&amp;</DIDL-Lite>b");
}

TEST(SoapRequestReader, CommentsInsideAnArgumentAreSkipped) {
  Read read;
  ReadInto(Envelope(Action("Play", "<Speed>1<!-- note -->0</Speed>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("Speed")), "10");
}

TEST(SoapRequestReader, Utf8CurlyQuotesArriveUnchanged) {
  const std::string title = "Content ‘BUSY’ é€ “quoted”";
  Read read;
  ReadInto(Envelope(Action("SetAVTransportURI", "<CurrentURIMetaData>" + title + "</CurrentURIMetaData>")),
           &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURIMetaData")), title);
}

TEST(SoapRequestReader, HeaderIsIgnored) {
  const std::string body =
      "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\">"
      "<s:Header><x:Token xmlns:x=\"urn:x\">abc</x:Token></s:Header>"
      "<s:Body>" +
      Action("Pause", "<InstanceID>0</InstanceID>") + "</s:Body></s:Envelope>";
  Read read;
  ReadInto(body, &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetActionName()), "Pause");
  EXPECT_EQ(read.request.GetArgumentCount(), 1u);
}

TEST(SoapRequestReader, AnyPrefixOfTheEnvelopeNamespaceIsAccepted) {
  const std::string body =
      "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\"><SOAP-ENV:Body>"
      "<Play xmlns=\"urn:schemas-upnp-org:service:AVTransport:1\"><InstanceID>0</InstanceID></Play>"
      "</SOAP-ENV:Body></SOAP-ENV:Envelope>";
  Read read;
  ReadInto(body, &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetServiceType()), kAVTransport);
  // A default namespace is inherited by the arguments; their names stay local.
  EXPECT_EQ(Text(read.request.GetArgumentName(0)), "InstanceID");
}

TEST(SoapRequestReader, NullReasonIsAllowed) {
  const std::string body = "not xml";
  marlo::ActionRequest request;
  EXPECT_EQ(HOST_ReadSoapRequest(body.data(), body.size(), &request, nullptr), marlo::kErrorInvalidArgument);
  EXPECT_TRUE(IsUntouched(request));
}

TEST(SoapRequestReader, NullBodyOrRequestIsRefused) {
  marlo::ActionRequest request;
  std::string reason;
  EXPECT_EQ(HOST_ReadSoapRequest(nullptr, 0, &request, &reason), marlo::kErrorInvalidArgument);
  EXPECT_FALSE(reason.empty());
  EXPECT_TRUE(IsUntouched(request));
  const std::string body = Envelope(Action("Play", ""));
  EXPECT_EQ(HOST_ReadSoapRequest(body.data(), body.size(), nullptr, &reason), marlo::kErrorInvalidArgument);
}

TEST(SoapRequestReader, TruncatedBodyIsRefusedAtEveryLength) {
  const std::string whole = Envelope(Action("Play", "<InstanceID>0</InstanceID><Speed>1</Speed>"));
  // Every cut that ends before the Envelope is closed (the final newline is layout).
  const std::size_t closed = whole.rfind('>') + 1;
  for (std::size_t length = 1; length < closed; ++length) {
    marlo::ActionRequest request;
    std::string reason;
    EXPECT_EQ(HOST_ReadSoapRequest(whole.data(), length, &request, &reason), marlo::kErrorInvalidArgument)
        << "length " << length;
    EXPECT_TRUE(IsUntouched(request)) << "length " << length;
  }
  ExpectRefused(whole.substr(0, whole.find("</u:Play>")), "not well-formed");
}

TEST(SoapRequestReader, BillionLaughsIsRefusedAsADocumentType) {
  std::string laughs =
      "<?xml version=\"1.0\"?>\n<!DOCTYPE s:Envelope [\n<!ENTITY lol \"lol\">\n"
      "<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">\n";
  for (int level = 2; level <= 9; ++level) {
    laughs += "<!ENTITY lol" + std::to_string(level) + " \"";
    for (int i = 0; i < 10; ++i) laughs += "&lol" + std::to_string(level - 1) + ";";
    laughs += "\">\n";
  }
  laughs += "]>\n" + EnvelopeElement(Action("Play", "<InstanceID>&lol9;</InstanceID>"));
  ExpectRefused(laughs, "document type declaration");
}

TEST(SoapRequestReader, DocumentTypeWithoutEntitiesIsRefused) {
  ExpectRefused("<!DOCTYPE Envelope>" + EnvelopeElement(Action("Play", "")), "document type declaration");
}

TEST(SoapRequestReader, DocumentTypeIsRefusedBeforeItsInternalSubsetIsRead) {
  // The subset is broken: a parser that went on reading it would call the body not well-formed instead.
  ExpectRefused("<!DOCTYPE s [ <!ENTITY a 'never closed" + EnvelopeElement(Action("Play", "")),
                "document type declaration");
}

TEST(SoapRequestReader, ExternalEntityIsRefusedWithoutReadingIt) {
  const std::string body =
      "<?xml version=\"1.0\"?><!DOCTYPE s [<!ENTITY x SYSTEM \"file:///etc/hostname\">]>" +
      EnvelopeElement(Action("Play", "<InstanceID>&x;</InstanceID>"));
  ExpectRefused(body, "document type declaration");
}

TEST(SoapRequestReader, UndeclaredEntityIsRefused) {
  ExpectRefused(Envelope(Action("Play", "<InstanceID>&nbsp;</InstanceID>")), "not well-formed");
}

TEST(SoapRequestReader, NestingDeeperThanTheBoundIsRefused) {
  std::string header;
  for (int i = 0; i < HOST_kMaxSoapRequestDepth; ++i) header += "<d>";
  for (int i = 0; i < HOST_kMaxSoapRequestDepth; ++i) header += "</d>";
  const std::string body = "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Header>" +
                           header + "</s:Header><s:Body>" + Action("Play", "") + "</s:Body></s:Envelope>";
  ExpectRefused(body, "nested deeper than 32");
}

TEST(SoapRequestReader, NestingAtTheBoundIsRead) {
  // Envelope (1), Header (2), then HOST_kMaxSoapRequestDepth - 2 more levels.
  std::string header;
  for (int i = 0; i < HOST_kMaxSoapRequestDepth - 2; ++i) header += "<d>";
  for (int i = 0; i < HOST_kMaxSoapRequestDepth - 2; ++i) header += "</d>";
  const std::string body = "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Header>" +
                           header + "</s:Header><s:Body>" + Action("Play", "") + "</s:Body></s:Envelope>";
  Read read;
  ReadInto(body, &read);
  EXPECT_EQ(read.result, 0) << read.reason;
}

TEST(SoapRequestReader, NestingPastTheParsersOwnLimitIsRefused) {
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "<d>";
  for (int i = 0; i < 5000; ++i) deep += "</d>";
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>" + deep + "</InstanceID>")), &read);
  EXPECT_EQ(read.result, marlo::kErrorInvalidArgument);
  EXPECT_TRUE(IsUntouched(read.request));
}

TEST(SoapRequestReader, BodyOverTheSizeBoundIsRefused) {
  const std::string body = Envelope(
      Action("SetAVTransportURI",
             "<CurrentURIMetaData>" + std::string(HOST_kMaxSoapRequestBytes, 'a') + "</CurrentURIMetaData>"));
  ASSERT_GT(body.size(), HOST_kMaxSoapRequestBytes);
  ExpectRefused(body, "over the limit of 2097152");
}

TEST(SoapRequestReader, BodyOfExactlyTheSizeBoundIsRead) {
  const std::string empty =
      Envelope(Action("SetAVTransportURI", "<CurrentURIMetaData></CurrentURIMetaData>"));
  const std::string value(HOST_kMaxSoapRequestBytes - empty.size(), 'a');
  const std::string body =
      Envelope(Action("SetAVTransportURI", "<CurrentURIMetaData>" + value + "</CurrentURIMetaData>"));
  ASSERT_EQ(body.size(), HOST_kMaxSoapRequestBytes);
  Read read;
  ReadInto(body, &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetArgumentValue("CurrentURIMetaData")).size(), value.size());
}

TEST(SoapRequestReader, MissingBodyIsRefused) {
  ExpectRefused("<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"></s:Envelope>",
                "no SOAP Body");
  ExpectRefused("<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Header/></s:Envelope>",
                "no SOAP Body");
}

TEST(SoapRequestReader, BodyInAnotherNamespaceIsRefused) {
  ExpectRefused("<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><Body>" +
                    Action("Play", "") + "</Body></s:Envelope>",
                "unexpected <Body> in the Envelope");
}

TEST(SoapRequestReader, EnvelopeInTheWrongNamespaceIsRefused) {
  ExpectRefused("<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>" +
                    Action("Play", "") + "</s:Body></s:Envelope>",
                "no SOAP Envelope");
  ExpectRefused("<Envelope><Body>" + Action("Play", "") + "</Body></Envelope>", "no SOAP Envelope");
}

TEST(SoapRequestReader, OtherRootElementIsRefused) {
  ExpectRefused(Action("Play", "<InstanceID>0</InstanceID>"), "no SOAP Envelope");
}

TEST(SoapRequestReader, EmptyBodyElementIsRefused) { ExpectRefused(Envelope(""), "no action in the Body"); }

TEST(SoapRequestReader, TwoActionsAreRefused) {
  ExpectRefused(Envelope(Action("Play", "") + Action("Stop", "")), "more than one action");
}

TEST(SoapRequestReader, ElementAfterTheBodyIsRefused) {
  ExpectRefused("<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>" +
                    Action("Play", "") + "</s:Body><s:Body/></s:Envelope>",
                "after the Body");
}

TEST(SoapRequestReader, ActionWithoutNamespaceIsRefused) {
  ExpectRefused(Envelope("<Play><InstanceID>0</InstanceID></Play>"), "has no namespace");
}

TEST(SoapRequestReader, UndeclaredPrefixIsRefused) {
  ExpectRefused(Envelope("<u:Play><InstanceID>0</InstanceID></u:Play>"), "namespace error");
}

TEST(SoapRequestReader, ArgumentWithElementChildrenIsRefused) {
  ExpectRefused(
      Envelope(Action("SetAVTransportURI", "<CurrentURIMetaData><DIDL-Lite/></CurrentURIMetaData>")),
      "argument <CurrentURIMetaData> holds elements");
}

TEST(SoapRequestReader, TextBetweenArgumentsIsRefused) {
  ExpectRefused(Envelope(Action("Play", "<InstanceID>0</InstanceID>stray<Speed>1</Speed>")),
                "unexpected text in <Play>");
  ExpectRefused(Envelope("stray" + Action("Play", "")), "unexpected text in <Body>");
}

TEST(SoapRequestReader, TextThatIsNotXmlIsRefused) {
  ExpectRefused("POST /control HTTP/1.1", "not well-formed");
  ExpectRefused("{\"action\":\"Play\"}", "not well-formed");
}

TEST(SoapRequestReader, EmptyBodyIsRefused) {
  ExpectRefused("", "empty body");
  ExpectRefused("   \n", "not well-formed");
}

TEST(SoapRequestReader, NulByteInsideIsRefused) {
  std::string body = Envelope(Action("Play", "<InstanceID>0</InstanceID>"));
  body.insert(body.find("0</InstanceID>"), 1, '\0');
  ExpectRefused(body, "NUL byte");
  std::string trailing = Envelope(Action("Play", "<InstanceID>0</InstanceID>"));
  trailing.push_back('\0');
  ExpectRefused(trailing, "NUL byte");
}

TEST(SoapRequestReader, ContentAfterTheEnvelopeIsRefused) {
  ExpectRefused(Envelope(Action("Play", "")) + "<x/>", "not well-formed");
}

TEST(SoapRequestReader, ReaderCanBeUsedAgainAfterARefusal) {
  ExpectRefused("<!DOCTYPE x>" + EnvelopeElement(Action("Play", "")), "document type declaration");
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>0</InstanceID>")), &read);
  EXPECT_EQ(read.result, 0) << read.reason;
}

TEST(SoapRequestReader, RefusalAfterARefusalGivesItsOwnReason) {
  ExpectRefused("<a>\n<b></a>", "line 2");
  ExpectRefused("<a>\n\n\n<b></a>", "line 4");
  ExpectRefused(Envelope(Action("Play", "")) + "<x/>", "not well-formed");
  Read read;
  ReadInto(Envelope(Action("Play", "<InstanceID>0</InstanceID><Speed>1</Speed>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(read.request.GetArgumentCount(), 2u);
}

TEST(SoapRequestReader, RequestAfterOneFullOfNewNamesIsReadExactly) {
  std::string arguments;
  for (int i = 0; i < 2000; ++i)
    arguments += "<Name" + std::to_string(i) + ">" + std::to_string(i) + "</Name" + std::to_string(i) + ">";
  Read many;
  ReadInto(Envelope(Action("Play", arguments)), &many);
  ASSERT_EQ(many.result, 0) << many.reason;
  ASSERT_EQ(many.request.GetArgumentCount(), 2000u);
  EXPECT_EQ(Text(many.request.GetArgumentValue("Name1999")), "1999");

  Read read;
  ReadInto(Envelope(Action("Stop", "<InstanceID>7</InstanceID>")), &read);
  ASSERT_EQ(read.result, 0) << read.reason;
  EXPECT_EQ(Text(read.request.GetActionName()), "Stop");
  ASSERT_EQ(read.request.GetArgumentCount(), 1u);
  EXPECT_EQ(Text(read.request.GetArgumentValue("InstanceID")), "7");
}

TEST(SoapRequestReader, EncodingOfOneBodyDoesNotCarryToTheNext) {
  Read latin;
  const std::string latinBody = std::string("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>") +
                                EnvelopeElement(Action("Play", "<Speed>\xe9</Speed>"));
  ReadInto(latinBody, &latin);
  ASSERT_EQ(latin.result, 0) << latin.reason;
  EXPECT_EQ(Text(latin.request.GetArgumentValue("Speed")), "\xc3\xa9");

  Read utf8;
  ReadInto(Envelope(Action("Play", "<Speed>\xc3\xa9</Speed>")), &utf8);
  ASSERT_EQ(utf8.result, 0) << utf8.reason;
  EXPECT_EQ(Text(utf8.request.GetArgumentValue("Speed")), "\xc3\xa9");
}

TEST(SoapRequestReader, SeveralThreadsReadAtOnce) {
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < 200; ++i) {
        const std::string value = std::to_string(t * 1000 + i);
        Read read;
        ReadInto(i % 7 == 3 ? "<broken" : Envelope(Action("Seek", "<Target>" + value + "</Target>")), &read);
        const bool right = i % 7 == 3
                               ? read.result == marlo::kErrorInvalidArgument
                               : read.result == 0 && Text(read.request.GetArgumentValue("Target")) == value;
        if (!right) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

TEST(SoapRequestReader, NoMemoryAtAnyAllocationAnswersNoMemoryAndLeaksNothing) {
  // Texts longer than a string keeps inside itself, so that every copy allocates.
  const std::string uri = "http://192.168.1.20:8200/MediaItems/12345.flac?with=a&long=query";
  const std::string escapedUri = "http://192.168.1.20:8200/MediaItems/12345.flac?with=a&amp;long=query";
  const std::string body =
      Envelope(Action("SetAVTransportURI", "<InstanceID>0</InstanceID><CurrentURI>" + escapedUri +
                                               "</CurrentURI><CurrentURIMetaData>&lt;DIDL-Lite/&gt;"
                                               "</CurrentURIMetaData>"));
  for (unsigned long nth = 1;; ++nth) {
    const long before = LiveGlobalAllocations();
    int32_t result = 1;
    unsigned long fired = 0;
    {
      marlo::ActionRequest request;
      std::string reason;
      {
        const ScopedAllocationFailure failure(nth);
        result = HOST_ReadSoapRequest(body.data(), body.size(), &request, &reason);
        fired = failure.Fired();
      }
      if (fired == 0) {
        EXPECT_EQ(result, 0) << reason;
        EXPECT_EQ(Text(request.GetArgumentValue("CurrentURI")), uri);
        EXPECT_GT(nth, 3u);
        break;
      }
      EXPECT_EQ(result, marlo::kErrorNoMemory) << "allocation " << nth;
      EXPECT_EQ(reason, "no memory") << "allocation " << nth;
      // Memory may run out while the request is being filled, after the body was accepted: what it holds
      // then is a beginning of the request, never anything else.
      EXPECT_TRUE(request.GetServiceType() == nullptr || Text(request.GetServiceType()) == kAVTransport);
      EXPECT_TRUE(request.GetActionName() == nullptr || Text(request.GetActionName()) == "SetAVTransportURI");
      EXPECT_TRUE(request.GetArgumentCount() < 2 || Text(request.GetArgumentValueAt(1)) == uri);
      EXPECT_LE(request.GetArgumentCount(), 2u);
    }
    EXPECT_EQ(LiveGlobalAllocations(), before) << "allocation " << nth;
  }
}
