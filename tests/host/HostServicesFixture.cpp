#include "HostServicesFixture.h"

#include <cstring>

#include "marlo/ActionRequest.h"
#include "marlo/LastChange.h"

using ::testing::_;

HostServicesFixture::HostServicesFixture() {
  ON_CALL(player_, GetVolume(_, 0, _)).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* value) {
    return value->SetCString(std::to_string(volume_).c_str());
  });
  ON_CALL(player_, SetVolume(_, 0, _)).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* value) {
    volume_ = static_cast<unsigned>(std::stoul(value->GetCString()));
    return 0;
  });
  ON_CALL(player_, GetMute(_, 0, _)).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* value) {
    return value->SetCString(mute_ ? "1" : "0");
  });
  ON_CALL(player_, SetMute(_, 0, _)).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* value) {
    mute_ = std::strcmp(value->GetCString(), "1") == 0;
    return 0;
  });
}

HOST_ActionOutcome HostServicesFixture::Perform(const char* serviceType, const char* action,
                                                const HostArguments& arguments) {
  marlo::ActionRequest request;
  EXPECT_EQ(request.SetServiceType(serviceType), 0);
  EXPECT_EQ(request.SetActionName(action), 0);
  for (const auto& [name, value] : arguments) EXPECT_EQ(request.AddArgument(name.c_str(), value.c_str()), 0);
  return services_->Perform(serviceType, request, 7);
}

HOST_ActionOutcome HostServicesFixture::PerformMaster(const char* action, const HostArguments& more) {
  HostArguments arguments = {{"InstanceID", "0"}, {"Channel", "Master"}};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return Perform(kRenderingControlType, action, arguments);
}

std::vector<HOST_EventBatch> HostServicesFixture::BatchesOf(const char* serviceType) const {
  std::vector<HOST_EventBatch> batches;
  for (const auto& [type, batch] : events_.batches)
    if (type == serviceType) batches.push_back(batch);
  return batches;
}

std::pair<std::string, std::string> HostServicesFixture::MasterLevel(const std::string& document) {
  marlo::LastChange reader;
  std::pair<std::string, std::string> level;
  if (reader.SetXMLText(document.c_str()) != 0) return level;
  const marlo::LastChange::VariableSet* set = reader.GetVariableSet(0);
  for (int i = 0; reader.GetVariableName(set, i) != nullptr; ++i) {
    const char* channel = reader.GetVariableChannel(set, i);
    if (channel == nullptr || std::strcmp(channel, "Master") != 0) continue;
    const std::string name = reader.GetVariableName(set, i);
    if (name == "Volume") level.first = reader.GetVariableValue(set, i);
    if (name == "Mute") level.second = reader.GetVariableValue(set, i);
  }
  return level;
}
