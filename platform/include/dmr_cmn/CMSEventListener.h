// DMR_CMN_CMSEventListener: the application's listener for ConnectionManager state changes.
//
// A renderer keeps the registered listener; the ConnectionManager variables change only at start-up, so
// nothing is reported through it today. Every operation does nothing by default.
#ifndef DMR_CMN_CMS_EVENT_LISTENER_H_
#define DMR_CMN_CMS_EVENT_LISTENER_H_

class DMR_CMN_CMSEventListener {
 public:
  virtual ~DMR_CMN_CMSEventListener();

  virtual void NotifySourceProtocolInfo(const char* value);
  virtual void NotifySinkProtocolInfo(const char* value);
  virtual void NotifyCurrentConnectionIDs(const char* value);
};

#endif  // DMR_CMN_CMS_EVENT_LISTENER_H_
