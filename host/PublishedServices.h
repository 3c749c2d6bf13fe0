// Which of the renderer's services the device description lists, and so which ones control points see:
// some OpenHome control points get confused by AV services beside the OpenHome ones, and some AV control
// points by OpenHome services. Both service objects run whatever is published: only what is announced
// and answered on the network changes.
#ifndef HOST_PUBLISHED_SERVICES_H_
#define HOST_PUBLISHED_SERVICES_H_

enum class HOST_PublishedServices {
  Both,        // "both": every service
  AudioVideo,  // "av": AVTransport, ConnectionManager and RenderingControl
  OpenHome,    // "openhome": Product, Playlist, Time, Info, Volume and Sender
};

// True when the service of type `serviceType` is published under `published`; false for a null type.
bool HOST_IsPublished(HOST_PublishedServices published, const char* serviceType);

#endif  // HOST_PUBLISHED_SERVICES_H_
