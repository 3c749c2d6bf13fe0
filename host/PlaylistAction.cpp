#include "PlaylistAction.h"

#include <cstring>

#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/SinkContentTransferSubsystem.h"

namespace {

constexpr char kPlaylistType[] = "urn:av-openhome-org:service:Playlist:1";

// The handle of the daemon's own actions: nonzero as every handle must be, and far from the router's
// counter, which starts at 1.
constexpr unsigned long kOwnActionHandle = 0xfffffff0ul;

}  // namespace

bool HOST_PerformPlaylistAction(marlo::SinkContentTransferSubsystem* openHome, const char* action,
                                const HOST_Arguments& in, HOST_Arguments* out, std::string* error) {
  return HOST_PerformOwnAction(openHome, kPlaylistType, action, in, out, error);
}

bool HOST_PerformOwnAction(marlo::SinkContentTransferSubsystem* service, const char* serviceType,
                           const char* action, const HOST_Arguments& in, HOST_Arguments* out,
                           std::string* error) {
  marlo::ActionRequest request;
  bool built = request.SetServiceType(serviceType) == 0 && request.SetActionName(action) == 0;
  for (const auto& [name, value] : in) built = built && request.AddArgument(name.c_str(), value.c_str()) == 0;
  if (!built) {
    *error = std::string(action) + ": no memory for the request";
    return false;
  }
  marlo::ActionResponse response;
  const int32_t result = service->PerformAction(&request, &response, kOwnActionHandle);
  if (result != 0) {
    *error = std::string(action) + " failed in the service object (" + std::to_string(result) + ")";
    return false;
  }
  if (response.GetErrorCode() != 0) {
    const char* description = response.GetErrorDescription();
    *error = std::string(action) + " answered " + std::to_string(response.GetErrorCode()) + " " +
             (description != nullptr ? description : "");
    return false;
  }
  out->clear();
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    const char* value = response.GetArgumentValueAt(i);
    out->emplace_back(response.GetArgumentName(i), value != nullptr ? value : "");
  }
  return true;
}

const std::string* HOST_FindArgument(const HOST_Arguments& out, const char* name) {
  for (const auto& [argument, value] : out)
    if (argument == name) return &value;
  return nullptr;
}
