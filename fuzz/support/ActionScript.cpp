#include "ActionScript.h"

#include <string>

#include "FuzzCheck.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"

namespace {

// Argument values: the texts the handlers compare against or convert, and their near misses.
constexpr const char* kValues[] = {
    "0",
    "1",
    "",
    " 0",
    "00",
    "-1",
    "2",
    "true",
    "false",
    "yes",
    "no",
    "TRUE",
    "2147483647",
    "2147483648",
    "-2147483648",
    "4294967297",
    "18446744073709551615",
    "0x10",
    "010",
    "1 2 3",
    "1  2",
    "NORMAL",
    "REPEAT_ALL",
    "SHUFFLE",
    "REL_TIME",
    "ABS_TIME",
    "TRACK_NR",
    "00:00:10",
    "1:00:00.500",
    "http://127.0.0.1:9/a.flac",
    "http://127.0.0.1:9/b.mp3?x=1&y=2",
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
    "<item id=\"1\" parentID=\"0\" restricted=\"1\"><dc:title>A &amp; B</dc:title>"
    "<res protocolInfo=\"http-get:*:audio/flac:*\">http://127.0.0.1:9/a.flac</res></item></DIDL-Lite>",
    "&<>\"'",
};

}  // namespace

void FillRequest(FuzzScript& script, const ActionWords& words, marlo::ActionRequest* request) {
  const uint8_t parts = script.Byte();
  if ((parts & 0x0F) != 0) {
    FUZZ_CHECK(request->SetServiceType(script.Pick(words.serviceTypes, words.serviceTypeCount, 80).c_str()) == 0);
  }
  if ((parts & 0xF0) != 0) {
    FUZZ_CHECK(request->SetActionName(script.Pick(words.actions, words.actionCount, 40).c_str()) == 0);
  }
  const int count = script.Between(0, 8);
  for (int i = 0; i < count; ++i) {
    const std::string name = script.Pick(words.arguments, words.argumentCount, 24);
    const std::string value = script.Pick(kValues, 512);
    FUZZ_CHECK(request->AddArgument(name.c_str(), value.c_str()) == 0);
  }
}

void CheckServed(int32_t result, const marlo::ActionResponse& response) {
  FUZZ_CHECK(result == 0 || result == -1997 || result == -1998 || result == -1999);
  const int32_t error = response.GetErrorCode();
  if (error != 0) {
    FUZZ_CHECK(error >= 401 && error <= 718);
    FUZZ_CHECK(response.GetErrorDescription() != nullptr && response.GetErrorDescription()[0] != '\0');
  }
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    FUZZ_CHECK(response.GetArgumentName(i) != nullptr && response.GetArgumentValueAt(i) != nullptr);
  }
}
