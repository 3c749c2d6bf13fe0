// The two service objects as the fault sweep drives them: each with the event handlers, the application
// and the configuration the renderer daemon gives it, run in the daemon's host call order
// (host/Renderer.cpp: Prepare, Start, Shutdown), and with the fault-free probes that prove it usable.
//
// A sweep runs the part under test with a fault armed; every other call here is made without one.
#ifndef TESTS_FAULTSWEEP_SWEPT_SERVICES_H_
#define TESTS_FAULTSWEEP_SWEPT_SERVICES_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "AnsweringTransferService.h"
#include "DeliberateEffects.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/LastChange.h"
#include "marlo/Properties.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

// One host call and what it answered.
struct StepResult {
  const char* step;
  int32_t result;
};

using ActionArgs = std::vector<std::pair<std::string, std::string>>;

// What the two objects share: the daemon's call order over each object's own steps, the action and query
// calls, and the handling of the deliberate effects.
class SweptService {
 public:
  virtual ~SweptService() = default;

  // The daemon's Prepare (each step until the first that fails), Start when everything was prepared,
  // and Shutdown (Stop when started, then every unregistration and Finalize, whatever they answer).
  std::vector<StepResult> RunLifecycle();
  // Prepare and Start; every step answers 0 (checked).
  void StartFaultFree();
  // Shutdown of a started object; every step answers 0 (checked).
  void ShutdownFaultFree();

  // PerformAction of `action` with `args` into a fresh reply (Reply()).
  int32_t Perform(const char* serviceType, const char* action, const ActionArgs& args);
  const marlo::ActionResponse& Reply() const { return *response_; }
  // The host's query for an evented variable.
  int32_t Query(const char* serviceType, const char* variable);

  // After RunLifecycle: looks for every deliberate lasting effect (DeliberateEffects.h), undoes it, and
  // answers those found. Threads lost with a store are those RunLifecycle saw in the store just before a
  // Finalize that deleted it; threads and handlers still registered after the shutdown are kept ones.
  std::vector<LastingEffect> UndoLastingEffects();
  // The same for a started object, whose registered threads and handlers are its own: a held lock only.
  std::vector<LastingEffect> UndoLastingEffectsWhileStarted();
  // Stops and finalizes what is still started or initialized, without a fault; both answer 0 (checked).
  // Afterwards the object is no longer initialized (the transfer service stays, as Finalize leaves it).
  void RecoverToCreated();

  // Fault-free proof that the started object serves its actions and queries and events a changed state
  // variable to its subscribers (gtest assertions).
  virtual void ExpectUsable() = 0;

 protected:
  struct Step {
    const char* name;
    std::function<int32_t()> call;
  };

  SweptService();
  virtual marlo::SinkContentTransferSubsystem& Object() = 0;
  virtual std::vector<Step> PrepareSteps() = 0;
  virtual std::vector<Step> UnregisterSteps() = 0;
  virtual int32_t Initialized() = 0;
  virtual int32_t Started() = 0;
  // The store's lock, or null while there is no initialized store.
  virtual DMR_CMN_Lock* StoreLock() = 0;
  // The eventing threads in the store's fields.
  virtual std::vector<DMR_CMN_UPnPEventingThread*> StoreThreads() = 0;
  virtual bool HasStore() = 0;
  // The store's pending LastChange document, or null; and the store's own CleanLastChange.
  virtual marlo::LastChange* PendingDocument() = 0;
  virtual void CleanPendingDocument() = 0;
  virtual int DropStoreThreads() = 0;
  virtual int ForgetHandlers() = 0;
  // Waits for a batch holding `name` on `handler` after `before` batches; true when it came.
  static bool EventArrives(const RecordingEventHandler& handler, std::size_t before, const std::string& name);
  // A value no earlier probe stored.
  static std::string FreshValue(const char* prefix);

  marlo::Properties properties_;
  AnsweringTransferService application_;
  std::unique_ptr<marlo::ActionRequest> request_;
  std::unique_ptr<marlo::ActionResponse> response_;

 private:
  std::vector<DMR_CMN_UPnPEventingThread*> threadsAtFinalize_;
  bool storeDeletedWithThreads_ = false;
};

class SweptStandardService : public SweptService {
 public:
  SweptStandardService();
  ~SweptStandardService() override;
  void ExpectUsable() override;
  SINK_UPNP_SinkCTSSUPnPService& Service() { return *service_; }
  // The store the application is handed; null while there is none.
  SINK_UPNP_SinkCTSSStateVariableManager* Store();

 protected:
  marlo::SinkContentTransferSubsystem& Object() override { return *service_; }
  std::vector<Step> PrepareSteps() override;
  std::vector<Step> UnregisterSteps() override;
  int32_t Initialized() override;
  int32_t Started() override;
  DMR_CMN_Lock* StoreLock() override;
  std::vector<DMR_CMN_UPnPEventingThread*> StoreThreads() override;
  bool HasStore() override;
  marlo::LastChange* PendingDocument() override;
  void CleanPendingDocument() override;
  int DropStoreThreads() override;
  int ForgetHandlers() override;

 private:
  RecordingEventHandler avTransportHandler_;
  RecordingEventHandler connectionManagerHandler_;
  RecordingAVTEventListener transportListener_;
  std::unique_ptr<SINK_UPNP_SinkCTSSUPnPService> service_;
};

class SweptOpenHomeService : public SweptService {
 public:
  SweptOpenHomeService();
  ~SweptOpenHomeService() override;
  void ExpectUsable() override;
  SINK_UPNP_OpenHomeUPnPService& Service() { return *service_; }
  // The store the application is handed; null while there is none.
  SINK_UPNP_OpenHomeStateVariableManager* Store();
  // Puts `count` tracks into the playlist (no action, no event) and sets the transport state, as the
  // application reports it.
  void Arrange(int tracks, const char* transportState);
  // Gtest assertions: the ids of the playlist are unique and its IdArray lists them in order.
  void ExpectPlaylistConsistent();

 protected:
  marlo::SinkContentTransferSubsystem& Object() override { return *service_; }
  std::vector<Step> PrepareSteps() override;
  std::vector<Step> UnregisterSteps() override;
  int32_t Initialized() override;
  int32_t Started() override;
  DMR_CMN_Lock* StoreLock() override;
  std::vector<DMR_CMN_UPnPEventingThread*> StoreThreads() override;
  bool HasStore() override;
  marlo::LastChange* PendingDocument() override;
  void CleanPendingDocument() override;
  int DropStoreThreads() override;
  int ForgetHandlers() override;

 private:
  std::vector<uint64_t> TrackIds();

  RecordingEventHandler playlistHandler_;
  RecordingEventHandler productHandler_;
  RecordingEventHandler timeHandler_;
  RecordingEventHandler infoHandler_;
  RecordingEventHandler senderHandler_;
  std::unique_ptr<SINK_UPNP_OpenHomeUPnPService> service_;
};

#endif  // TESTS_FAULTSWEEP_SWEPT_SERVICES_H_
