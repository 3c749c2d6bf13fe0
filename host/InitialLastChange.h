// The first AVTransport "LastChange" a new subscriber gets.
//
// It is the standard service object's whole document, which holds the variables of both of its stores:
// AVTransport's first, then the OpenHome ones. OpenHome's transport state has AVTransport's name,
// "TransportState", and a name entered twice keeps its first place and its last value, so the document
// would tell an AV control point the OpenHome word ("Stopped") where it expects one of AVTransport's
// ("STOPPED"), and BubbleUPnP or Windows would take the renderer to be in an unknown state until the next
// event. The daemon puts AVTransport's own state back in that place; the rest of the document stays.
#ifndef HOST_INITIAL_LAST_CHANGE_H_
#define HOST_INITIAL_LAST_CHANGE_H_

#include <string>

// `document` with the TransportState of instance 0 set to `transportState` (added at the end when the
// document lacks it). `document` itself when it cannot be read as a LastChange document or there is no
// memory: a subscriber is better served by the document as it is than by none.
std::string HOST_WithTransportState(const std::string& document, const std::string& transportState);

#endif  // HOST_INITIAL_LAST_CHANGE_H_
