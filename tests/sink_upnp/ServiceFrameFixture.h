// ServiceFrameFixture<Service>: a service object of either kind driven through its lifecycle by the tests
// themselves, and FrameTraits<Service>, what the two service objects differ in where their frame is the same
// (which handlers they send events through, what the application is handed, which queries and actions
// they serve).
//
// The typed suite of ServiceFrameTest.cpp runs every frame test over both services with it; the tests of
// what only one service does (SinkCTSSUPnPServiceTest.cpp, OpenHomeUPnPServiceTest.cpp) use it for their
// own service.
//
// Every test starts Created, with fault injection reset, two protocol-info entries (kMpeg then kFlac) and,
// for the OpenHome object, the test description folder as "device.docroot"; the application is a strict
// mock that accepts whatever it is handed at registration. TearDown stops, unregisters and finalizes what
// the test left and frees what a failed Initialize left.
#ifndef TESTS_SINK_UPNP_SERVICE_FRAME_FIXTURE_H_
#define TESTS_SINK_UPNP_SERVICE_FRAME_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "OpenHomeUPnPServiceTestPeer.h"
#include "RecordingEventHandler.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/SinkCTSSUPnPService.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace service_frame_test {

using Standard = SINK_UPNP_SinkCTSSUPnPService;
using OpenHome = SINK_UPNP_OpenHomeUPnPService;

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManager[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kRenderingControl[] = "urn:schemas-upnp-org:service:RenderingControl:1";
constexpr char kPlaylistService[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kProductService[] = "urn:av-openhome-org:service:Product:1";
constexpr char kTimeService[] = "urn:av-openhome-org:service:Time:1";
constexpr char kInfoService[] = "urn:av-openhome-org:service:Info:1";
constexpr char kSenderService[] = "urn:av-openhome-org:service:Sender:1";

constexpr char kMpeg[] = "http-get:*:audio/mpeg:*";
constexpr char kFlac[] = "http-get:*:audio/flac:*";
constexpr char kJoined[] = "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*";
constexpr unsigned long kHandle = 42;

enum class State { kCreated, kInitialized, kStarted };

inline const char* StateName(State state) {
  switch (state) {
    case State::kCreated:
      return "Created";
    case State::kInitialized:
      return "Initialized";
    case State::kStarted:
      return "Started";
  }
  return "?";
}

constexpr State kAllStates[] = {State::kCreated, State::kInitialized, State::kStarted};

// A state variable query: a service type and a variable name.
struct Query {
  const char* serviceName;
  const char* variableName;
};

// An action as a control point sends it: the service type it is addressed to, its name, its arguments.
struct ActionCase {
  const char* serviceType;
  const char* name;
  std::vector<std::pair<const char*, const char*>> arguments;
};

// An action whose handler fails when fault point `point` fails (from its first call, or on every call
// with `persistent`) and answers what the point answered.
struct FaultingAction {
  ActionCase action;
  DMR_CMN_FaultPoint point;
  bool persistent;
};

// An action its own handler answers with a UPnP error, without asking the application.
struct RefusedAction {
  ActionCase action;
  int32_t upnpError;
};

// One service whose events the store sends through an eventing thread bound to a handler of the host.
// The registrations go through the host's base class, so that they are reached the way the host reaches
// them.
template <typename Service, typename Store>
struct EventedHandler {
  const char* name;
  int32_t (marlo::SinkContentTransferSubsystem::*registerHandler)(marlo::EventHandler*);
  int32_t (marlo::SinkContentTransferSubsystem::*unregisterHandler)();
  // The service's field that keeps the handler.
  marlo::EventHandler* (*field)(const Service&);
  // The store's own registration of the service's thread, as the application could call it.
  int32_t (*storeRegister)(Store&, marlo::EventHandler*);
  int32_t (*storeUnregister)(Store&);
  // A variable of the service: a batch with this first name goes out through the service's thread.
  const char* eventedName;
};

template <typename Service>
struct FrameTraits;

template <>
struct FrameTraits<Standard> {
  using Peer = SINK_UPNP_SinkCTSSUPnPServiceTestPeer;
  using Store = SINK_UPNP_SinkCTSSStateVariableManager;
  using Evented = EventedHandler<Standard, Store>;

  static Store* StoreOf(const Standard& s) { return Peer::FrameStore(s); }
  static marlo::ProtocolInfo* Chain(const Standard& s) { return Peer::FrameChain(s); }
  static std::size_t ChainLength(const Standard& s) { return Peer::FrameChainLength(s); }
  static marlo::EventHandler* AvtHandler(const Standard& s) { return Peer::FrameAvtHandler(s); }
  static marlo::EventHandler* CmsHandler(const Standard& s) { return Peer::FrameCmsHandler(s); }
  static SINK_CORE_TransferService* Transfer(const Standard& s) { return Peer::FrameTransfer(s); }
  static int32_t Initialized(const Standard& s) { return Peer::FrameInitialized(s); }
  static int32_t Started(const Standard& s) { return Peer::FrameStarted(s); }
  static bool AllFieldsZero(const Standard& s) { return Peer::FrameAllFieldsZero(s); }
  static std::vector<const void*> FieldAddresses(const Standard& s) { return Peer::FrameFieldAddresses(s); }
  static int32_t GetProtocolInfo(Standard& s, char** out) { return Peer::FrameGetProtocolInfo(s, out); }
  static void ReleaseLeftovers(Standard& s) { Peer::FrameReleaseLeftovers(s); }

  // Nothing beyond the protocol list.
  static void Configure(marlo::Properties*) {}

  // The application accepts the store whenever it is registered.
  static void AcceptAttach(MockTransferService& application) {
    EXPECT_CALL(application, AttachStateVariableManager(::testing::_)).WillRepeatedly(::testing::Return(0));
  }
  // The application is handed the store once and answers `answer`.
  static void ExpectAttach(MockTransferService& application, Standard& s, int32_t answer) {
    EXPECT_CALL(application, AttachStateVariableManager(StoreOf(s))).WillOnce(::testing::Return(answer));
  }

  // The AVTransport handler; the ConnectionManager one is only kept (not evented).
  static std::vector<Evented> EventedHandlers() {
    return {{"AVTransport", &marlo::SinkContentTransferSubsystem::RegisterAVTransportServiceEventListener,
             &marlo::SinkContentTransferSubsystem::UnregisterAVTransportServiceEventListener,
             &Peer::FrameAvtHandler,
             [](Store& m, marlo::EventHandler* h) { return m.RegisterAVTransportServiceEventListener(h); },
             [](Store& m) { return m.UnregisterAVTransportServiceEventListener(); }, "LastChange"}};
  }

  // The destructor frees nothing: the host stops and finalizes first.
  static constexpr bool kDestructorDeletesTheStore = false;

  // The joined protocol list as a control point reads it.
  static Query ProtocolList() { return {kConnectionManager, "SinkProtocolInfo"}; }
  // The store's full LastChange document.
  static Query LastChange() { return {kAVTransport, "LastChange"}; }
  // Queries answered from the store's values.
  static std::vector<Query> StoreQueries() {
    return {{kConnectionManager, "SinkProtocolInfo"},
            {kConnectionManager, "SourceProtocolInfo"},
            {kConnectionManager, "CurrentConnectionIDs"}};
  }
  // Names of a served service that the service does not answer.
  static std::vector<Query> UnknownVariables() {
    return {{kAVTransport, "TransportState"}, {kConnectionManager, "Unknown"}};
  }
  // A service type this object does not serve.
  static Query ForeignService() { return {kRenderingControl, "LastChange"}; }

  // An action the application's Stop(handle, 0) serves.
  static ActionCase StopAction() { return {kAVTransport, "Stop", {{"InstanceID", "0"}}}; }
  // Play copies its speed into a string before the application is asked.
  static FaultingAction FailingHandler() {
    return {{kAVTransport, "Play", {{"InstanceID", "0"}, {"Speed", "1"}}}, DMR_CMN_FaultPoint::kStringAllocation,
            true};
  }
  static RefusedAction RefusedByItsHandler() {
    return {{kAVTransport, "Play", {{"InstanceID", "1"}, {"Speed", "1"}}}, 718};
  }
};

template <>
struct FrameTraits<OpenHome> {
  using Peer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;
  using Store = SINK_UPNP_OpenHomeStateVariableManager;
  using Evented = EventedHandler<OpenHome, Store>;

  static Store* StoreOf(const OpenHome& s) { return Peer::Store(s); }
  static marlo::ProtocolInfo* Chain(const OpenHome& s) { return Peer::Chain(s); }
  static std::size_t ChainLength(const OpenHome& s) { return Peer::ChainLength(s); }
  static marlo::EventHandler* AvtHandler(const OpenHome& s) { return Peer::AvtHandler(s); }
  static marlo::EventHandler* CmsHandler(const OpenHome& s) { return Peer::CmsHandler(s); }
  static SINK_CORE_TransferService* Transfer(const OpenHome& s) { return Peer::Transfer(s); }
  static int32_t Initialized(const OpenHome& s) { return Peer::Initialized(s); }
  static int32_t Started(const OpenHome& s) { return Peer::Started(s); }
  static bool AllFieldsZero(const OpenHome& s) { return Peer::AllFieldsZero(s); }
  static std::vector<const void*> FieldAddresses(const OpenHome& s) { return Peer::FieldAddresses(s); }
  static int32_t GetProtocolInfo(OpenHome& s, char** out) { return Peer::GetProtocolInfo(s, out); }
  static void ReleaseLeftovers(OpenHome& s) { Peer::ReleaseLeftovers(s); }

  static std::string DescriptionFolder() { return std::string(DMR_TEST_DATA_DIR) + "/description"; }
  static void Configure(marlo::Properties* properties) {
    ASSERT_EQ(properties->SetProperty("device.docroot", DescriptionFolder().c_str()), 0);
  }

  // The application accepts the store and the playlist whenever it is registered.
  static void AcceptAttach(MockTransferService& application) {
    EXPECT_CALL(application, AttachOpenHomeStateVariableManager(::testing::_))
        .WillRepeatedly(::testing::Return(0));
    EXPECT_CALL(application, AttachPlaylistManager(::testing::_)).WillRepeatedly(::testing::Return(0));
  }
  // The application is handed the store once and answers `answer`; only when it took it, the playlist.
  static void ExpectAttach(MockTransferService& application, OpenHome& s, int32_t answer) {
    ::testing::InSequence order;
    EXPECT_CALL(application, AttachOpenHomeStateVariableManager(StoreOf(s))).WillOnce(::testing::Return(answer));
    if (answer == 0) {
      EXPECT_CALL(application, AttachPlaylistManager(&Peer::Playlist(s))).WillOnce(::testing::Return(0));
    }
  }

#define SERVICE_FRAME_OPEN_HOME_HANDLER(S, evented)                                                         \
  Evented {                                                                                                 \
    #S, &marlo::SinkContentTransferSubsystem::Register##S##ServiceEventListener,                            \
        &marlo::SinkContentTransferSubsystem::Unregister##S##ServiceEventListener, &Peer::S##Handler,        \
        [](Store& m, marlo::EventHandler* h) { return m.Register##S##ServiceEventListener(h); },            \
        [](Store& m) { return m.Unregister##S##ServiceEventListener(); }, evented                            \
  }
  // The five OpenHome handlers, in the order of the host's table; the Playlist one comes first.
  static std::vector<Evented> EventedHandlers() {
    return {SERVICE_FRAME_OPEN_HOME_HANDLER(Playlist, "Id"), SERVICE_FRAME_OPEN_HOME_HANDLER(Product, "Standby"),
            SERVICE_FRAME_OPEN_HOME_HANDLER(Time, "Seconds"), SERVICE_FRAME_OPEN_HOME_HANDLER(Info, "DetailsCount"),
            SERVICE_FRAME_OPEN_HOME_HANDLER(Sender, "Status")};
  }
#undef SERVICE_FRAME_OPEN_HOME_HANDLER

  // The destructor deletes the store (without finalizing it) and leaves the protocol list to the host.
  static constexpr bool kDestructorDeletesTheStore = true;

  static Query ProtocolList() { return {kPlaylistService, "ProtocolInfo"}; }
  static Query LastChange() { return {kPlaylistService, "LastChange"}; }
  static std::vector<Query> StoreQueries() {
    return {{kPlaylistService, "ProtocolInfo"}, {kPlaylistService, "TracksMax"}, {kPlaylistService, "Id"},
            {kProductService, "ManufacturerName"}, {kProductService, "ModelName"}, {kTimeService, "Seconds"},
            {kInfoService, "TrackCount"},         {kSenderService, "Status"},     {kSenderService, "Attributes"}};
  }
  static std::vector<Query> UnknownVariables() {
    return {{kPlaylistService, "NoSuchVariable"}, {kProductService, "TrackCount"}};
  }
  static Query ForeignService() { return {kAVTransport, "LastChange"}; }

  static ActionCase StopAction() { return {kPlaylistService, "Stop", {}}; }
  // SetRepeat answers what its event call answered.
  static FaultingAction FailingHandler() {
    return {{kPlaylistService, "SetRepeat", {{"Value", "true"}}}, DMR_CMN_FaultPoint::kEventingThreadNotify, false};
  }
  static RefusedAction RefusedByItsHandler() { return {{kPlaylistService, "SetRepeat", {}}, 402}; }
};

// The services' names in the typed suites' names.
class ServiceNames {
 public:
  template <typename T>
  static std::string GetName(int) {
    return std::is_same<T, Standard>::value ? "SinkCTSS" : "OpenHome";
  }
};

using ServiceTypes = ::testing::Types<Standard, OpenHome>;

template <typename Service>
class ServiceFrameFixture : public ::testing::Test {
 protected:
  using ServiceTraits = FrameTraits<Service>;
  using Store = typename ServiceTraits::Store;
  using Evented = typename ServiceTraits::Evented;
  using Batch = RecordingEventHandler::Batch;

  // One recording handler per evented service, in the order of ServiceTraits::EventedHandlers().
  static constexpr std::size_t kMaxEvented = 5;

  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    ASSERT_LE(ServiceTraits::EventedHandlers().size(), kMaxEvented);
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", kMpeg), 0);
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", kFlac), 0);
    ASSERT_NO_FATAL_FAILURE(ServiceTraits::Configure(&properties_));
    ServiceTraits::AcceptAttach(transfer_);
  }

  void TearDown() override { BackToCreated(); }

  // Stops, unregisters and finalizes whatever the test left, then frees what a failed Initialize left.
  void BackToCreated() {
    DMR_CMN_FaultInjection::Reset();
    if (ServiceTraits::Started(service_) == 1) {
      EXPECT_EQ(service_.Stop(), 0);
    }
    if (ServiceTraits::Initialized(service_) == 1) {
      for (const Evented& evented : ServiceTraits::EventedHandlers()) {
        if (evented.field(service_) != nullptr) {
          EXPECT_EQ((service_.*evented.unregisterHandler)(), 0) << evented.name;
        }
      }
      if (ServiceTraits::CmsHandler(service_) != nullptr) {
        EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
      }
      EXPECT_EQ(service_.Finalize(), 0);
    }
    ServiceTraits::ReleaseLeftovers(service_);
  }

  void InitializeOnly() { ASSERT_EQ(service_.Initialize(&properties_), 0); }

  // Every evented handler, each recorded by its own handlers_ entry.
  void RegisterEventedHandlers() {
    const std::vector<Evented> evented = ServiceTraits::EventedHandlers();
    for (std::size_t i = 0; i < evented.size(); ++i) {
      ASSERT_EQ((service_.*evented[i].registerHandler)(&handlers_[i]), 0) << evented[i].name;
    }
  }

  // Everything the host registers before Start: the evented handlers, the ConnectionManager handler and
  // the transfer service.
  void RegisterEverything() {
    ASSERT_NO_FATAL_FAILURE(RegisterEventedHandlers());
    ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
    ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  }

  void InitializeAndRegister() {
    ASSERT_NO_FATAL_FAILURE(InitializeOnly());
    ASSERT_NO_FATAL_FAILURE(RegisterEverything());
  }

  void StartAll() {
    ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
    ASSERT_EQ(service_.Start(), 0);
  }

  // Initialized means initialized with nothing registered; Started has everything registered.
  void Enter(State state) {
    switch (state) {
      case State::kCreated:
        return;
      case State::kInitialized:
        ASSERT_NO_FATAL_FAILURE(InitializeOnly());
        return;
      case State::kStarted:
        ASSERT_NO_FATAL_FAILURE(StartAll());
        return;
    }
  }

  // A failed Start leaves the service Initialized, and a later Start succeeds.
  void ExpectStillStartable() {
    EXPECT_EQ(ServiceTraits::Started(service_), 0);
    EXPECT_EQ(service_.Stop(), -1999);
    EXPECT_EQ(service_.Start(), 0);
  }

  Store* store() { return ServiceTraits::StoreOf(service_); }

  // A variable's value as the store holds it.
  std::string StoreValue(SINK_UPNP_StateVariableName_t index) {
    DMR_CMN_String value;
    if (store() == nullptr || store()->GetStateVariable(index, &value) != 0 || value.GetCString() == nullptr) {
      return "<unreadable>";
    }
    return value.GetCString();
  }

  int32_t ChangeInStore(SINK_UPNP_StateVariableName_t index, const char* text) {
    DMR_CMN_String value;
    if (value.SetCString(text) != 0) return -12345;
    return store()->ChangeStateVariable(index, &value);
  }

  // The full LastChange document the store gives now.
  std::string StoreLastChange() {
    DMR_CMN_String value;
    if (store() == nullptr || store()->GetLastChange(&value) != 0 || value.GetCString() == nullptr) {
      return "<unreadable>";
    }
    return value.GetCString();
  }

  // The service's answer to a query, or "<failed N>".
  std::string Ask(const Query& query) {
    marlo::StateVariable out;
    const int32_t result = service_.GetStateVariable(query.serviceName, query.variableName, &out);
    if (result != 0) return "<failed " + std::to_string(result) + ">";
    if (out.GetName() == nullptr || std::strcmp(out.GetName(), query.variableName) != 0) return "<wrong name>";
    return out.GetValue() != nullptr ? out.GetValue() : "<no value>";
  }

  static void Fill(const ActionCase& action, marlo::ActionRequest* request) {
    if (action.serviceType != nullptr) {
      ASSERT_EQ(request->SetServiceType(action.serviceType), 0);
    }
    if (action.name != nullptr) {
      ASSERT_EQ(request->SetActionName(action.name), 0);
    }
    for (const auto& argument : action.arguments) {
      ASSERT_EQ(request->AddArgument(argument.first, argument.second), 0);
    }
  }

  // Serves `action` through PerformAction into `response`.
  int32_t Perform(const ActionCase& action, marlo::ActionResponse* response, unsigned long handle = kHandle) {
    marlo::ActionRequest request;
    Fill(action, &request);
    return service_.PerformAction(&request, response, handle);
  }

  // A barrier on every eventing thread the store has: a marker batch is sent through the thread of each
  // registered evented handler, and waited for at that handler. A thread delivers in order, so once its
  // marker is in, nothing sent through it before can still be on its way.
  void DeliverMarkers() {
    const std::vector<Evented> evented = ServiceTraits::EventedHandlers();
    for (std::size_t i = 0; i < evented.size(); ++i) {
      if (evented[i].field(service_) == nullptr) continue;
      SCOPED_TRACE(evented[i].name);
      const std::string value = "marker " + std::to_string(++markers_);
      DMR_CMN_String name;
      DMR_CMN_String text;
      ASSERT_EQ(name.SetCString(evented[i].eventedName), 0);
      ASSERT_EQ(text.SetCString(value.c_str()), 0);
      ASSERT_EQ(store()->SendEventForOpenHome(&name, &text, 1), 0);
      EXPECT_TRUE(WaitFor(handlers_[i], Batch{{evented[i].eventedName, value}})) << "the marker never arrived";
    }
  }

  // Waits until `batch` is among what `handler` received; false when it does not come in time.
  static bool WaitFor(const RecordingEventHandler& handler, const Batch& batch) {
    for (;;) {
      const std::vector<Batch> received = handler.Batches();
      for (const Batch& one : received) {
        if (one == batch) return true;
      }
      if (!handler.WaitForBatches(received.size() + 1)) return false;
    }
  }

  marlo::Properties properties_;
  RecordingEventHandler handlers_[kMaxEvented];
  RecordingEventHandler cmsHandler_;
  ::testing::StrictMock<MockTransferService> transfer_;
  Service service_;

 private:
  unsigned markers_ = 0;
};

}  // namespace service_frame_test

#endif  // TESTS_SINK_UPNP_SERVICE_FRAME_FIXTURE_H_
