#include "PipelineRun.h"

void PLAYER_EnsureGstreamer() {
  // gst_init may be called any number of times from any thread; only the first call does anything.
  gst_init(nullptr, nullptr);
}

std::string PLAYER_QuoteForLaunch(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

PLAYER_GstElementPtr PLAYER_LaunchPipeline(const std::string& description, std::string* error) {
  PLAYER_EnsureGstreamer();
  GError* parseError = nullptr;
  PLAYER_GstElementPtr pipeline(gst_parse_launch(description.c_str(), &parseError));
  if (parseError != nullptr) {
    // On purpose: a description that parsed only in part (an unknown property) is a failure too, because
    // the pipeline would not make what the caller asked for.
    *error = "cannot build \"" + description + "\": " + parseError->message;
    g_error_free(parseError);
    return nullptr;
  }
  if (!pipeline) *error = "cannot build \"" + description + "\"";
  return pipeline;
}

namespace {

std::string DescribeError(GstMessage* message) {
  GError* gerror = nullptr;
  gchar* debug = nullptr;
  gst_message_parse_error(message, &gerror, &debug);
  std::string text = std::string(GST_OBJECT_NAME(GST_MESSAGE_SRC(message))) + ": " + gerror->message;
  if (debug != nullptr) text += std::string(" (") + debug + ")";
  g_error_free(gerror);
  g_free(debug);
  return text;
}

}  // namespace

bool PLAYER_RunToEndOfStream(GstElement* pipeline, std::chrono::milliseconds timeout, std::string* error) {
  PLAYER_GstBusPtr bus(gst_element_get_bus(pipeline));
  // A failed state change posts its reason as an error message, which the wait below picks up at once.
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  const GstClockTime nanoseconds = static_cast<GstClockTime>(timeout.count()) * GST_MSECOND;
  PLAYER_GstMessagePtr message(gst_bus_timed_pop_filtered(
      bus.get(), nanoseconds, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
  bool ended = false;
  if (!message) {
    *error = std::string(GST_OBJECT_NAME(pipeline)) + ": no end of stream within " +
             std::to_string(timeout.count()) + " ms";
  } else if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
    *error = DescribeError(message.get());
  } else {
    ended = true;
  }
  gst_element_set_state(pipeline, GST_STATE_NULL);
  return ended;
}
