// Owning handles for the GStreamer objects the test support creates, so that every early return releases
// what it holds.
#ifndef TESTS_PLAYER_SUPPORT_GST_HANDLES_H_
#define TESTS_PLAYER_SUPPORT_GST_HANDLES_H_

#include <gst/gst.h>

#include <memory>

struct PLAYER_GstObjectUnref {
  void operator()(gpointer object) const { gst_object_unref(object); }
};
struct PLAYER_GstMessageUnref {
  void operator()(GstMessage* message) const { gst_message_unref(message); }
};
struct PLAYER_GstCapsUnref {
  void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
};

using PLAYER_GstElementPtr = std::unique_ptr<GstElement, PLAYER_GstObjectUnref>;
using PLAYER_GstBusPtr = std::unique_ptr<GstBus, PLAYER_GstObjectUnref>;
using PLAYER_GstMessagePtr = std::unique_ptr<GstMessage, PLAYER_GstMessageUnref>;
using PLAYER_GstCapsPtr = std::unique_ptr<GstCaps, PLAYER_GstCapsUnref>;

#endif  // TESTS_PLAYER_SUPPORT_GST_HANDLES_H_
