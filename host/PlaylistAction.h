// One action performed by the daemon itself through the service object's own PerformAction, exactly as a
// control point's would be: of the OpenHome Playlist service (to save, put back or show the playlist), or
// of another service (to show its state on the status page).
// Main loop only, like every action.
#ifndef HOST_PLAYLIST_ACTION_H_
#define HOST_PLAYLIST_ACTION_H_

#include <string>
#include <utility>
#include <vector>

namespace marlo {
class SinkContentTransferSubsystem;
}

using HOST_Arguments = std::vector<std::pair<std::string, std::string>>;

// Performs `action` with `in`; on success fills *out (OUT arguments in order) and answers true. Otherwise
// false with *error naming the action and the result or the UPnP error.
bool HOST_PerformPlaylistAction(marlo::SinkContentTransferSubsystem* openHome, const char* action,
                                const HOST_Arguments& in, HOST_Arguments* out, std::string* error);

// The same for an action of any service the service object `service` answers (`serviceType` names it).
bool HOST_PerformOwnAction(marlo::SinkContentTransferSubsystem* service, const char* serviceType,
                           const char* action, const HOST_Arguments& in, HOST_Arguments* out,
                           std::string* error);

// The value of OUT argument `name`, or null.
const std::string* HOST_FindArgument(const HOST_Arguments& out, const char* name);

#endif  // HOST_PLAYLIST_ACTION_H_
