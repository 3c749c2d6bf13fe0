// Told by HOST_ActionRouter of each action that a service object answered without an error, after the
// answer was made: for the daemon's own work that follows a change (saving the playlist). Called on the
// main loop; must not perform actions through the router from inside the call.
#ifndef HOST_ACTION_OBSERVER_H_
#define HOST_ACTION_OBSERVER_H_

class HOST_ActionObserver {
 public:
  virtual ~HOST_ActionObserver() = default;
  virtual void ActionSucceeded(const char* serviceType, const char* action) = 0;
};

#endif  // HOST_ACTION_OBSERVER_H_
