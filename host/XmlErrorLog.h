// GUPnP reads every control request with libxml2's recovering parser before the daemon sees it, and
// libxml2 prints what it had to recover from straight to standard error. This routes those messages
// into the daemon's log instead, as debug lines: a malformed request is the client's problem, and the
// daemon answers it; a person reading the log should not see bare parser output between its lines.
#ifndef HOST_XML_ERROR_LOG_H_
#define HOST_XML_ERROR_LOG_H_

// For the calling thread (libxml2's error handlers are per thread): the main loop's thread.
void HOST_RouteXmlErrorsToLog();

#endif  // HOST_XML_ERROR_LOG_H_
