// HOST_RunDaemon: the renderer, from its settings to its exit status. It checks the document root, writes
// the device description into the state directory, creates the player, takes both service objects
// through their host call order, puts the device on the network, and runs the main loop until SIGINT or
// SIGTERM; then it says byebye and shuts everything down in order.
#ifndef HOST_DAEMON_H_
#define HOST_DAEMON_H_

#include <string>

namespace marlo {
class Properties;
}
struct HOST_Settings;

// 0 after a clean shutdown; 1 when a step failed (the log names it and its result code).
// `udn` is the device's "uuid:…", the same across restarts.
int HOST_RunDaemon(const HOST_Settings& settings, const std::string& udn, marlo::Properties* serviceProperties);

#endif  // HOST_DAEMON_H_
