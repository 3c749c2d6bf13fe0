#include "SweptServices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>

#include "OpenHomeUPnPServiceTestPeer.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "StateVariableStoreTestPeer.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/String.h"
#include "marlo/Device.h"
#include "marlo/StateVariable.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using StandardPeer = SINK_UPNP_SinkCTSSUPnPServiceTestPeer;
using OpenHomePeer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;
using StorePeer = SINK_UPNP_StateVariableStoreTestPeer;

// A handle that is neither 0 nor 1.
constexpr unsigned long kHandle = 0x5EE9;

constexpr char kAVTransportType[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kPlaylistType[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kProbeUri[] = "http://127.0.0.1:9/probe.flac";

// The IdArray of `ids` as the Playlist service reports it: each id's low 32 bits big-endian, in Base64.
std::string IdArrayOf(const std::vector<uint64_t>& ids) {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> bytes;
  for (uint64_t id : ids) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<unsigned char>(id >> shift));
  }
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t left = bytes.size() - i;
    const unsigned group = (bytes[i] << 16) | ((left > 1 ? bytes[i + 1] : 0) << 8) | (left > 2 ? bytes[i + 2] : 0);
    text += kAlphabet[(group >> 18) & 63];
    text += kAlphabet[(group >> 12) & 63];
    text += left > 1 ? kAlphabet[(group >> 6) & 63] : '=';
    text += left > 2 ? kAlphabet[group & 63] : '=';
  }
  return text;
}

}  // namespace

SweptService::SweptService() {
  // The daemon sets the server address before it starts the objects (the OpenHome store builds the
  // Product image URLs from it).
  marlo::Device::SetServerIPAddress("127.0.0.1");
  EXPECT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
  EXPECT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", "http-get:*:audio/mpeg:*"), 0);
  const std::string docRoot = std::string(DMR_TEST_DATA_DIR) + "/description";
  EXPECT_EQ(properties_.SetProperty("device.docroot", docRoot.c_str()), 0);
}

std::vector<StepResult> SweptService::RunLifecycle() {
  std::vector<StepResult> steps;
  bool prepared = true;
  for (const Step& step : PrepareSteps()) {
    steps.push_back({step.name, step.call()});
    if (steps.back().result != 0) {
      prepared = false;
      break;
    }
  }
  bool started = false;
  if (prepared) {
    steps.push_back({"Start", Object().Start()});
    started = steps.back().result == 0;
  }
  if (started) steps.push_back({"Stop", Object().Stop()});
  for (const Step& step : UnregisterSteps()) steps.push_back({step.name, step.call()});
  threadsAtFinalize_ = StoreThreads();
  steps.push_back({"Finalize", Object().Finalize()});
  if (HasStore()) threadsAtFinalize_.clear();  // still in the store's fields, not lost
  return steps;
}

void SweptService::StartFaultFree() {
  for (const Step& step : PrepareSteps()) ASSERT_EQ(step.call(), 0) << step.name;
  ASSERT_EQ(Object().Start(), 0);
}

void SweptService::ShutdownFaultFree() {
  EXPECT_EQ(Object().Stop(), 0);
  for (const Step& step : UnregisterSteps()) EXPECT_EQ(step.call(), 0) << step.name;
  EXPECT_EQ(Object().Finalize(), 0);
}

int32_t SweptService::Perform(const char* serviceType, const char* action, const ActionArgs& args) {
  request_ = std::make_unique<marlo::ActionRequest>();
  response_ = std::make_unique<marlo::ActionResponse>();
  EXPECT_EQ(request_->SetServiceType(serviceType), 0);
  EXPECT_EQ(request_->SetActionName(action), 0);
  for (const auto& argument : args) {
    EXPECT_EQ(request_->AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
  }
  return Object().PerformAction(request_.get(), response_.get(), kHandle);
}

int32_t SweptService::Query(const char* serviceType, const char* variable) {
  marlo::StateVariable value;
  return Object().GetStateVariable(serviceType, variable, &value);
}

std::vector<LastingEffect> SweptService::UndoLastingEffectsWhileStarted() {
  std::vector<LastingEffect> effects;
  // The lock refuses a thread that does not hold it: from the thread that ran the scenario, a successful
  // release means the scenario left it held.
  DMR_CMN_Lock* lock = StoreLock();
  if (lock != nullptr && lock->Unlock() == 0) effects.push_back(LastingEffect::kStoreLockHeld);
  marlo::LastChange* pending = PendingDocument();
  if (pending != nullptr && pending->GetXMLText() == nullptr) {
    CleanPendingDocument();
    effects.push_back(LastingEffect::kUnrenderablePendingDocument);
  }
  return effects;
}

std::vector<LastingEffect> SweptService::UndoLastingEffects() {
  std::vector<LastingEffect> effects = UndoLastingEffectsWhileStarted();
  if (!threadsAtFinalize_.empty()) {
    for (DMR_CMN_UPnPEventingThread* thread : threadsAtFinalize_) delete thread;
    threadsAtFinalize_.clear();
    effects.push_back(LastingEffect::kEventingThreadLostWithStore);
  }
  if (DropStoreThreads() > 0) effects.push_back(LastingEffect::kEventingThreadKept);
  if (ForgetHandlers() > 0) effects.push_back(LastingEffect::kEventHandlerKept);
  return effects;
}

void SweptService::RecoverToCreated() {
  if (Started() == 1) {
    EXPECT_EQ(Object().Stop(), 0);
  }
  if (Initialized() == 1) {
    EXPECT_EQ(Object().Finalize(), 0);
  }
  EXPECT_EQ(Initialized(), 0);
}

bool SweptService::EventArrives(const RecordingEventHandler& handler, std::size_t before, const std::string& name) {
  for (std::size_t count = before + 1;; ++count) {
    if (!handler.WaitForBatches(count)) return false;
    const std::vector<RecordingEventHandler::Batch> batches = handler.Batches();
    for (const auto& pair : batches[count - 1]) {
      if (pair.first == name) return true;
    }
  }
}

std::string SweptService::FreshValue(const char* prefix) {
  static std::atomic<unsigned long> counter{0};
  return std::string(prefix) + std::to_string(++counter);
}

// --- The standard object ---

SweptStandardService::SweptStandardService() : service_(std::make_unique<SINK_UPNP_SinkCTSSUPnPService>()) {}

SweptStandardService::~SweptStandardService() = default;

std::vector<SweptService::Step> SweptStandardService::PrepareSteps() {
  SINK_UPNP_SinkCTSSUPnPService& s = *service_;
  return {
      {"Initialize", [&] { return s.Initialize(&properties_); }},
      {"RegisterAVTransportServiceEventListener",
       [&] { return s.RegisterAVTransportServiceEventListener(&avTransportHandler_); }},
      {"RegisterConnectionManagerServiceEventListener",
       [&] { return s.RegisterConnectionManagerServiceEventListener(&connectionManagerHandler_); }},
      {"RegisterApplicationAVTEventListener", [&] { return s.RegisterApplicationAVTEventListener(&transportListener_); }},
      {"RegisterTransferService", [&] { return s.RegisterTransferService(&application_); }},
  };
}

std::vector<SweptService::Step> SweptStandardService::UnregisterSteps() {
  SINK_UPNP_SinkCTSSUPnPService& s = *service_;
  return {
      {"UnregisterAVTransportServiceEventListener", [&] { return s.UnregisterAVTransportServiceEventListener(); }},
      {"UnregisterConnectionManagerServiceEventListener",
       [&] { return s.UnregisterConnectionManagerServiceEventListener(); }},
      {"UnregisterApplicationAVTEventListener", [&] { return s.UnregisterApplicationAVTEventListener(); }},
  };
}

marlo::LastChange* SweptStandardService::PendingDocument() {
  const auto* store = StandardPeer::FrameStore(*service_);
  return store != nullptr ? StorePeer::PendingDocument(*store) : nullptr;
}

void SweptStandardService::CleanPendingDocument() { StandardPeer::FrameStore(*service_)->CleanLastChange(); }

SINK_UPNP_SinkCTSSStateVariableManager* SweptStandardService::Store() {
  return StandardPeer::FrameStore(*service_);
}

int32_t SweptStandardService::Initialized() { return StandardPeer::FrameInitialized(*service_); }
int32_t SweptStandardService::Started() { return StandardPeer::FrameStarted(*service_); }
bool SweptStandardService::HasStore() { return StandardPeer::FrameStore(*service_) != nullptr; }

DMR_CMN_Lock* SweptStandardService::StoreLock() {
  const auto* store = StandardPeer::FrameStore(*service_);
  return store != nullptr ? StorePeer::Lock(*store) : nullptr;
}

std::vector<DMR_CMN_UPnPEventingThread*> SweptStandardService::StoreThreads() {
  const auto* store = StandardPeer::FrameStore(*service_);
  return store != nullptr ? StorePeer::RegisteredThreads(*store) : std::vector<DMR_CMN_UPnPEventingThread*>{};
}

int SweptStandardService::DropStoreThreads() {
  auto* store = StandardPeer::FrameStore(*service_);
  return store != nullptr ? StorePeer::DropThreads(*store) : 0;
}

int SweptStandardService::ForgetHandlers() { return StandardPeer::FrameForgetAvtHandler(*service_) ? 1 : 0; }

void SweptStandardService::ExpectUsable() {
  EXPECT_EQ(Perform(kAVTransportType, "GetTransportInfo", {{"InstanceID", "0"}}), 0);
  EXPECT_EQ(Reply().GetErrorCode(), 0);
  EXPECT_EQ(Reply().GetArgumentCount(), 3u);
  EXPECT_EQ(Query(kAVTransportType, "LastChange"), 0);

  auto* store = StandardPeer::FrameStore(*service_);
  ASSERT_NE(store, nullptr);
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString(FreshValue("http://127.0.0.1:9/probe-").c_str()), 0);
  ASSERT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI, &value), 0);
  const std::size_t before = avTransportHandler_.BatchCount();
  ASSERT_EQ(store->SendEvent(), 0);
  EXPECT_TRUE(EventArrives(avTransportHandler_, before, "LastChange"));
}

// --- The OpenHome object ---

SweptOpenHomeService::SweptOpenHomeService() : service_(std::make_unique<SINK_UPNP_OpenHomeUPnPService>()) {}

SweptOpenHomeService::~SweptOpenHomeService() = default;

std::vector<SweptService::Step> SweptOpenHomeService::PrepareSteps() {
  SINK_UPNP_OpenHomeUPnPService& s = *service_;
  return {
      {"Initialize", [&] { return s.Initialize(&properties_); }},
      {"RegisterPlaylistServiceEventListener", [&] { return s.RegisterPlaylistServiceEventListener(&playlistHandler_); }},
      {"RegisterProductServiceEventListener", [&] { return s.RegisterProductServiceEventListener(&productHandler_); }},
      {"RegisterTimeServiceEventListener", [&] { return s.RegisterTimeServiceEventListener(&timeHandler_); }},
      {"RegisterInfoServiceEventListener", [&] { return s.RegisterInfoServiceEventListener(&infoHandler_); }},
      {"RegisterSenderServiceEventListener", [&] { return s.RegisterSenderServiceEventListener(&senderHandler_); }},
      {"RegisterTransferService", [&] { return s.RegisterTransferService(&application_); }},
  };
}

std::vector<SweptService::Step> SweptOpenHomeService::UnregisterSteps() {
  SINK_UPNP_OpenHomeUPnPService& s = *service_;
  return {
      {"UnregisterPlaylistServiceEventListener", [&] { return s.UnregisterPlaylistServiceEventListener(); }},
      {"UnregisterProductServiceEventListener", [&] { return s.UnregisterProductServiceEventListener(); }},
      {"UnregisterTimeServiceEventListener", [&] { return s.UnregisterTimeServiceEventListener(); }},
      {"UnregisterInfoServiceEventListener", [&] { return s.UnregisterInfoServiceEventListener(); }},
      {"UnregisterSenderServiceEventListener", [&] { return s.UnregisterSenderServiceEventListener(); }},
  };
}

marlo::LastChange* SweptOpenHomeService::PendingDocument() {
  const auto* store = OpenHomePeer::Store(*service_);
  return store != nullptr ? StorePeer::PendingDocument(*store) : nullptr;
}

void SweptOpenHomeService::CleanPendingDocument() { OpenHomePeer::Store(*service_)->CleanLastChange(); }

SINK_UPNP_OpenHomeStateVariableManager* SweptOpenHomeService::Store() { return OpenHomePeer::Store(*service_); }

int32_t SweptOpenHomeService::Initialized() { return OpenHomePeer::Initialized(*service_); }
int32_t SweptOpenHomeService::Started() { return OpenHomePeer::Started(*service_); }
bool SweptOpenHomeService::HasStore() { return OpenHomePeer::Store(*service_) != nullptr; }

DMR_CMN_Lock* SweptOpenHomeService::StoreLock() {
  const auto* store = OpenHomePeer::Store(*service_);
  return store != nullptr ? StorePeer::Lock(*store) : nullptr;
}

std::vector<DMR_CMN_UPnPEventingThread*> SweptOpenHomeService::StoreThreads() {
  const auto* store = OpenHomePeer::Store(*service_);
  return store != nullptr ? StorePeer::RegisteredThreads(*store) : std::vector<DMR_CMN_UPnPEventingThread*>{};
}

int SweptOpenHomeService::DropStoreThreads() {
  auto* store = OpenHomePeer::Store(*service_);
  return store != nullptr ? StorePeer::DropThreads(*store) : 0;
}

int SweptOpenHomeService::ForgetHandlers() { return OpenHomePeer::ForgetOpenHomeHandlers(*service_); }

void SweptOpenHomeService::Arrange(int tracks, const char* transportState) {
  PLAYLIST_PlaylistManager& playlist = OpenHomePeer::Playlist(*service_);
  for (int i = 0; i < tracks; ++i) {
    const std::vector<uint64_t> ids = TrackIds();
    const std::string uri = "http://127.0.0.1:9/track-" + std::to_string(i) + ".flac";
    uint64_t newId = 0;
    ASSERT_EQ(playlist.Insert(uri.c_str(), "<DIDL-Lite><item><dc:title>A &amp; B</dc:title></item></DIDL-Lite>",
                              ids.empty() ? 0 : ids.back(), &newId),
              0);
  }
  DMR_CMN_String state;
  ASSERT_EQ(state.SetCString(transportState), 0);
  ASSERT_EQ(OpenHomePeer::Store(*service_)->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &state), 0);
}

std::vector<uint64_t> SweptOpenHomeService::TrackIds() {
  std::vector<uint64_t> ids;
  std::string document;
  EXPECT_EQ(OpenHomePeer::Playlist(*service_).PlaylistXml(&document), 0);
  const std::string opening = "<Entry><Id>";
  for (auto at = document.find(opening); at != std::string::npos; at = document.find(opening, at + 1)) {
    ids.push_back(std::stoull(document.substr(at + opening.size())));
  }
  return ids;
}

void SweptOpenHomeService::ExpectPlaylistConsistent() {
  const std::vector<uint64_t> ids = TrackIds();
  EXPECT_EQ(std::set<uint64_t>(ids.begin(), ids.end()).size(), ids.size()) << "ids repeat";
  EXPECT_EQ(OpenHomePeer::Playlist(*service_).GetTrackCount(), ids.size());
  EXPECT_EQ(Perform(kPlaylistType, "IdArray", {}), 0);
  const char* array = Reply().FindArgumentValue("Array");
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(std::string(array), IdArrayOf(ids));
}

void SweptOpenHomeService::ExpectUsable() {
  ExpectPlaylistConsistent();
  const std::vector<uint64_t> ids = TrackIds();
  const std::string afterId = ids.empty() ? "0" : std::to_string(ids.back());
  ASSERT_EQ(Perform(kPlaylistType, "Insert", {{"AfterId", afterId}, {"Uri", kProbeUri}, {"Metadata", ""}}), 0);
  const char* newIdText = Reply().FindArgumentValue("NewId");
  ASSERT_NE(newIdText, nullptr);
  const uint64_t newId = std::stoull(newIdText);
  for (uint64_t id : ids) EXPECT_GT(newId, id);
  std::vector<uint64_t> expected = ids;
  expected.push_back(newId);
  EXPECT_EQ(TrackIds(), expected);
  ExpectPlaylistConsistent();
  EXPECT_EQ(Query(kPlaylistType, "Id"), 0);

  auto* store = OpenHomePeer::Store(*service_);
  ASSERT_NE(store, nullptr);
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString(FreshValue("probe-").c_str()), 0);
  ASSERT_EQ(store->ChangeStateVariable(SINK_UPNP_INFO_BIT_RATE, &value), 0);
  const std::size_t before = infoHandler_.BatchCount();
  ASSERT_EQ(store->SendEvent(), 0);
  EXPECT_TRUE(EventArrives(infoHandler_, before, "BitRate"));
}
