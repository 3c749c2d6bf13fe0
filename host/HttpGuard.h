// HOST_GuardRequests: applies the rules of RequestGuard.h to every HTTP request that reaches a context's
// server, as soon as the request's headers are read and before the UPnP stack's handlers run: a refused
// request is answered with its status and "Connection: close", its body is read and dropped without being
// kept, and no handler of the stack sees it. One line per refusal goes to the log.
//
// Main loop only. The guard's state lives with the context's server and goes with it.
#ifndef HOST_HTTP_GUARD_H_
#define HOST_HTTP_GUARD_H_

typedef struct _GUPnPContext GUPnPContext;

// Guards the server of `context`; once per context, before its device is published.
void HOST_GuardRequests(GUPnPContext* context);

#endif  // HOST_HTTP_GUARD_H_
