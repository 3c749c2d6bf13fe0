// The configuration in force, as the status page lists it: one (name, value) row per setting a person
// checking the renderer asks about. Written once at start; the settings do not change while it runs.
#ifndef HOST_STATUS_CONFIGURATION_H_
#define HOST_STATUS_CONFIGURATION_H_

#include <string>
#include <utility>
#include <vector>

namespace marlo {
class Properties;
}
struct HOST_Settings;
struct HOST_AudioOutputChoice;

using HOST_StatusRows = std::vector<std::pair<std::string, std::string>>;

// `audio` is the output the daemon chose for the settings; `serviceProperties` what the service objects
// were given (their protocol list is counted there, since that is the list in force).
HOST_StatusRows HOST_StatusConfiguration(const HOST_Settings& settings, const HOST_AudioOutputChoice& audio,
                                         const marlo::Properties& serviceProperties);

#endif  // HOST_STATUS_CONFIGURATION_H_
