#include "PlaybinRun.h"

#include <algorithm>

#include "PipelineRun.h"

namespace {

// playbin's GstPlayFlags "audio": audio only, no video, no subtitles, no visualisation.
constexpr guint kPlayFlagAudio = 1U << 1;

}  // namespace

PlaybinRun::PlaybinRun(const std::string& uri) {
  PLAYER_EnsureGstreamer();
  playbin_.reset(gst_element_factory_make("playbin", nullptr));
  if (!playbin_) {
    error_ = "no playbin";
    return;
  }
  gst_object_ref_sink(playbin_.get());
  GstElement* sink = gst_element_factory_make("fakesink", nullptr);
  g_object_set(sink, "sync", FALSE, nullptr);
  g_object_set(playbin_.get(), "uri", uri.c_str(), "flags", kPlayFlagAudio, "audio-sink", sink, nullptr);
  bus_.reset(gst_element_get_bus(playbin_.get()));
}

PlaybinRun::~PlaybinRun() {
  if (playbin_) gst_element_set_state(playbin_.get(), GST_STATE_NULL);
}

PLAYER_GstMessagePtr PlaybinRun::WaitFor(GstMessageType types, std::chrono::milliseconds timeout) {
  if (!bus_) return nullptr;
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  const auto wanted = static_cast<GstMessageType>(types | GST_MESSAGE_ERROR | GST_MESSAGE_TAG);
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now());
    PLAYER_GstMessagePtr message(gst_bus_timed_pop_filtered(
        bus_.get(), left.count() > 0 ? static_cast<GstClockTime>(left.count()) : 0, wanted));
    if (!message) {
      error_ = "timeout";
      return nullptr;
    }
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
      GError* gerror = nullptr;
      gst_message_parse_error(message.get(), &gerror, nullptr);
      error_ = std::string(GST_OBJECT_NAME(GST_MESSAGE_SRC(message.get()))) + ": " + gerror->message;
      g_error_free(gerror);
      return nullptr;
    }
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_TAG) {
      GstTagList* tags = nullptr;
      gst_message_parse_tag(message.get(), &tags);
      gchar* title = nullptr;
      if (gst_tag_list_get_string(tags, GST_TAG_TITLE, &title)) {
        titles_.emplace_back(title);
        g_free(title);
      }
      gst_tag_list_unref(tags);
    }
    if ((GST_MESSAGE_TYPE(message.get()) & types) != 0) return message;
  }
}

bool PlaybinRun::SetState(GstState state, std::chrono::milliseconds timeout) {
  if (!playbin_) return false;
  GstStateChangeReturn result = gst_element_set_state(playbin_.get(), state);
  GstState current = state;
  if (result != GST_STATE_CHANGE_FAILURE && (state == GST_STATE_PAUSED || state == GST_STATE_PLAYING)) {
    result = gst_element_get_state(playbin_.get(), &current, nullptr,
                                   static_cast<GstClockTime>(timeout.count()) * GST_MSECOND);
  }
  if (result != GST_STATE_CHANGE_FAILURE && current == state) return true;
  // The reason is the error message on the bus, if there is one.
  error_ = std::string("did not reach ") + gst_element_state_get_name(state);
  const std::string unreached = error_;
  if (!WaitFor(GST_MESSAGE_ERROR, std::chrono::milliseconds(100)) && error_ != "timeout") {
    error_ = unreached + ": " + error_;
  } else {
    error_ = unreached;
  }
  return false;
}

bool PlaybinRun::WaitForEnd(std::chrono::milliseconds timeout) {
  return WaitFor(GST_MESSAGE_EOS, timeout) != nullptr;
}

bool PlaybinRun::WaitForTitle(const std::string& title, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (std::find(titles_.begin(), titles_.end(), title) == titles_.end()) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      error_ = "timeout";
      return false;
    }
    // Tag messages are recorded by WaitFor itself; asking for them returns at each one.
    PLAYER_GstMessagePtr message =
        WaitFor(static_cast<GstMessageType>(GST_MESSAGE_TAG | GST_MESSAGE_EOS), left);
    if (!message) return false;
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS) {
      error_ = "end of stream";
      return false;
    }
  }
  return true;
}

bool PlaybinRun::Seek(std::chrono::milliseconds position, std::chrono::milliseconds timeout) {
  if (!playbin_ ||
      !gst_element_seek_simple(playbin_.get(), GST_FORMAT_TIME,
                               static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                               static_cast<gint64>(position.count()) * GST_MSECOND)) {
    error_ = "seek refused";
    return false;
  }
  // A flushing seek makes the pipeline preroll again; waiting for the state, not for an ASYNC_DONE
  // message, cannot be fooled by the message of an earlier preroll still on the bus.
  GstState current = GST_STATE_VOID_PENDING;
  if (gst_element_get_state(playbin_.get(), &current, nullptr,
                            static_cast<GstClockTime>(timeout.count()) * GST_MSECOND) !=
      GST_STATE_CHANGE_SUCCESS) {
    error_ = "seek did not complete";
    return false;
  }
  return true;
}
