#include "RendererFixture.h"

#include "EscapeXml.h"

using ::testing::_;

std::string SoapBody(const std::string& serviceType, const std::string& action,
                     const std::vector<std::pair<std::string, std::string>>& arguments) {
  std::string body =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
      "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
      "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>"
      "<u:" + action + " xmlns:u=\"" + serviceType + "\">";
  std::string escaped;
  for (const auto& [name, value] : arguments)
    body += "<" + name + ">" + EscapeXml(&escaped, value.c_str()) + "</" + name + ">";
  body += "</u:" + action + "></s:Body></s:Envelope>";
  return body;
}

RendererFixture::RendererFixture() : context_(g_main_context_new()) {
  properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*");
  properties_.SetProperty("sinkctss.protocolInfo_1", "http-get:*:audio/wav:*");
  ON_CALL(player_, AttachStateVariableManager(_)).WillByDefault(
      [this](SINK_UPNP_SinkCTSSStateVariableManager* store) {
        transportStore_ = store;
        return 0;
      });
  ON_CALL(player_, AttachOpenHomeStateVariableManager(_)).WillByDefault(
      [this](SINK_UPNP_OpenHomeStateVariableManager* store) {
        openHomeStore_ = store;
        return 0;
      });
  renderer_ = std::make_unique<HOST_Renderer>(&player_, &events_, context_);
}

RendererFixture::~RendererFixture() {
  renderer_.reset();
  RunPending();
  g_main_context_unref(context_);
}

void RendererFixture::StartRenderer() {
  HOST_StepFailure failure;
  ASSERT_TRUE(renderer_->Prepare(&properties_, &failure)) << failure.step << " " << failure.result;
  ASSERT_TRUE(renderer_->Start("127.0.0.1", &failure)) << failure.step << " " << failure.result;
}

HOST_ActionOutcome RendererFixture::Perform(const char* serviceType, const std::string& action,
                                            const std::vector<std::pair<std::string, std::string>>& arguments) {
  const std::string body = SoapBody(serviceType, action, arguments);
  return renderer_->Router().Perform(serviceType, body.data(), body.size());
}

void RendererFixture::RunPending() {
  while (g_main_context_iteration(context_, FALSE)) {
  }
}
