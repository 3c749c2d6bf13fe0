// The fixed interface tables of the platform: the host drives a service object, the renderer calls the
// application's transfer service and listener, all through table slots whose numbers are part of the
// binary interface. Slots are counted from 1, the two destructor entries being slots 1 and 2.
//
// On the Itanium C++ ABI (g++ and clang on Linux) a pointer to a virtual member function holds 1 + the
// byte offset of its entry in the table, followed by the adjustment of `this`; that is what is read here.
#include <gtest/gtest.h>

#include <type_traits>

#include "SlotOf.h"
#include "dmr_cmn/AVTEventListener.h"
#include "dmr_cmn/CMSEventListener.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "sink_core/TransferService.h"

namespace {

using marlo::SinkContentTransferSubsystem;

// One virtual operation more than the interface: lands in the first slot after the last one, which tells
// how long the table is.
struct ServiceProbe : SinkContentTransferSubsystem {
  virtual void ProbeAfterLastSlot() {}
};
struct TransferServiceProbe : SINK_CORE_TransferService {
  virtual void ProbeAfterLastSlot() {}
};
struct AVTListenerProbe : DMR_CMN_AVTEventListener {
  virtual void ProbeAfterLastSlot() {}
};

TEST(ServiceInterfaceSlots, LifecycleAndDispatchComeFirstInTheirOrder) {
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::PerformAction), 3);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::WarnTimeOut), 4);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::Initialize), 5);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::Finalize), 6);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::Start), 7);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::Stop), 8);
}

TEST(ServiceInterfaceSlots, EventListenerPairsFollowInServiceOrder) {
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterAVTransportServiceEventListener), 9);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterAVTransportServiceEventListener), 10);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterConnectionManagerServiceEventListener), 11);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterConnectionManagerServiceEventListener), 12);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterPlaylistServiceEventListener), 13);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterPlaylistServiceEventListener), 14);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterProductServiceEventListener), 15);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterProductServiceEventListener), 16);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterTimeServiceEventListener), 17);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterTimeServiceEventListener), 18);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterInfoServiceEventListener), 19);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterInfoServiceEventListener), 20);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterSenderServiceEventListener), 21);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterSenderServiceEventListener), 22);
}

TEST(ServiceInterfaceSlots, FormatDecoderPairThenStateVariableQueryCloseTheTable) {
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::RegisterFormatDecoderSubsystem), 23);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::UnregisterFormatDecoderSubsystem), 24);
  EXPECT_EQ(SlotOf(&SinkContentTransferSubsystem::GetStateVariable), 25);
  EXPECT_EQ(SlotOf(&ServiceProbe::ProbeAfterLastSlot), 26);
}

TEST(ServiceInterfaceSlots, SecondTableHoldsDestructorsThenStateVariableQuery) {
  EXPECT_EQ(SlotOf(&marlo::StateVariableProvider::GetStateVariable), 3);
  // The second table lives behind the primary one in the object.
  EXPECT_GT(sizeof(SinkContentTransferSubsystem), sizeof(void*));
  EXPECT_TRUE((std::is_base_of_v<marlo::StateVariableProvider, SinkContentTransferSubsystem>));
  EXPECT_TRUE(std::has_virtual_destructor_v<SinkContentTransferSubsystem>);
}

// A service object overrides GetStateVariable once; both tables must reach that one override.
class QueryCountingService : public ServiceProbe {
 public:
  int32_t PerformAction(marlo::ActionRequest*, marlo::ActionResponse*, unsigned long) override { return 0; }
  int32_t WarnTimeOut(unsigned long, unsigned long*, const char**) override { return 0; }
  int32_t Initialize(marlo::Properties*) override { return 0; }
  int32_t Finalize() override { return 0; }
  int32_t Start() override { return 0; }
  int32_t Stop() override { return 0; }
  int32_t RegisterAVTransportServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterAVTransportServiceEventListener() override { return 0; }
  int32_t RegisterConnectionManagerServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterConnectionManagerServiceEventListener() override { return 0; }
  int32_t RegisterPlaylistServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterPlaylistServiceEventListener() override { return 0; }
  int32_t RegisterProductServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterProductServiceEventListener() override { return 0; }
  int32_t RegisterTimeServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterTimeServiceEventListener() override { return 0; }
  int32_t RegisterInfoServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterInfoServiceEventListener() override { return 0; }
  int32_t RegisterSenderServiceEventListener(marlo::EventHandler*) override { return 0; }
  int32_t UnregisterSenderServiceEventListener() override { return 0; }
  int32_t RegisterFormatDecoderSubsystem(marlo::FormatDecoderSubsystem*) override { return 0; }
  int32_t UnregisterFormatDecoderSubsystem() override { return 0; }
  int32_t GetStateVariable(const char*, const char*, marlo::StateVariable*) override {
    ++queries;
    return 7;
  }
  int queries = 0;
};

TEST(ServiceInterfaceSlots, OneOverrideOfTheStateVariableQueryServesBothTables) {
  QueryCountingService service;
  SinkContentTransferSubsystem* primary = &service;
  marlo::StateVariableProvider* second = &service;
  EXPECT_EQ(primary->GetStateVariable("s", "v", nullptr), 7);
  EXPECT_EQ(second->GetStateVariable("s", "v", nullptr), 7);
  EXPECT_EQ(service.queries, 2);
}

TEST(TransferServiceSlots, StoreAttachmentAndTimerSlots) {
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::AttachOpenHomeStateVariableManager), 10);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::AttachStateVariableManager), 11);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::WarnTimeOut), 12);
}

TEST(TransferServiceSlots, TransportCommandsFillSlotsThirteenToNineteen) {
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::SetAVTransportURI), 13);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Play), 14);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Stop), 15);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Pause), 16);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Seek), 17);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Next), 18);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Previous), 19);
}

TEST(TransferServiceSlots, QueriesFollowTheCommandsInTableOrder) {
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetDeviceCapabilities), 20);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetMediaInfo), 21);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetPositionInfo), 22);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetTransportInfo), 23);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetTransportSettings), 24);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetCurrentTransportActions), 25);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetCurrentConnectionIDs), 26);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetCurrentConnectionInfo), 27);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetProtocolInfo), 28);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::SetPlayMode), 29);
}

TEST(TransferServiceSlots, PlaylistAttachmentIsSlotThirtyTwoAndLast) {
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::AttachPlaylistManager), 32);
  EXPECT_EQ(SlotOf(&TransferServiceProbe::ProbeAfterLastSlot), 33);
}

TEST(TransferServiceSlots, ApplicationOwnOperationsFillTheUnnamedSlots) {
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Initialize), 3);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::Finalize), 4);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::StartEngine), 5);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::StopEngine), 6);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetVolume), 7);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::SetVolume), 8);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::SetNextAVTransportURI), 9);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::GetMute), 30);
  EXPECT_EQ(SlotOf(&SINK_CORE_TransferService::SetMute), 31);
}

TEST(AVTEventListenerSlots, TwentyTwoNotificationsFromSlotThreeInVariableOrder) {
  using L = DMR_CMN_AVTEventListener;
  EXPECT_EQ(SlotOf(&L::NotifyTransportState), 3);
  EXPECT_EQ(SlotOf(&L::NotifyTransportStatus), 4);
  EXPECT_EQ(SlotOf(&L::NotifyPlaybackStorageMedium), 5);
  EXPECT_EQ(SlotOf(&L::NotifyRecordStorageMedium), 6);
  EXPECT_EQ(SlotOf(&L::NotifyPossiblePlaybackStorageMedia), 7);
  EXPECT_EQ(SlotOf(&L::NotifyPossibleRecordStorageMedia), 8);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentPlayMode), 9);
  EXPECT_EQ(SlotOf(&L::NotifyTransportPlaySpeed), 10);
  EXPECT_EQ(SlotOf(&L::NotifyRecordMediumWriteStatus), 11);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentRecordQualityMode), 12);
  EXPECT_EQ(SlotOf(&L::NotifyPossibleRecordQualityModes), 13);
  EXPECT_EQ(SlotOf(&L::NotifyNumberOfTracks), 14);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentTrack), 15);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentTrackDuration), 16);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentMediaDuration), 17);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentTrackMetaData), 18);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentTrackURI), 19);
  EXPECT_EQ(SlotOf(&L::NotifyAVTransportURI), 20);
  EXPECT_EQ(SlotOf(&L::NotifyAVTransportURIMetaData), 21);
  EXPECT_EQ(SlotOf(&L::NotifyNextAVTransportURI), 22);
  EXPECT_EQ(SlotOf(&L::NotifyNextAVTransportURIMetaData), 23);
  EXPECT_EQ(SlotOf(&L::NotifyCurrentTransportActions), 24);
  EXPECT_EQ(SlotOf(&AVTListenerProbe::ProbeAfterLastSlot), 25);
}

TEST(CMSEventListenerSlots, NotificationsFollowTheDestructors) {
  EXPECT_EQ(SlotOf(&DMR_CMN_CMSEventListener::NotifySourceProtocolInfo), 3);
  EXPECT_EQ(SlotOf(&DMR_CMN_CMSEventListener::NotifySinkProtocolInfo), 4);
  EXPECT_EQ(SlotOf(&DMR_CMN_CMSEventListener::NotifyCurrentConnectionIDs), 5);
}

TEST(ProtocolInfoLayout, DeletesThroughItsVirtualDestructorAndCarriesItsOwnLink) {
  EXPECT_TRUE(std::has_virtual_destructor_v<marlo::ProtocolInfo>);
  EXPECT_TRUE((std::is_same_v<decltype(marlo::ProtocolInfo::next), marlo::ProtocolInfo*>));
}

TEST(InterfaceSlotReading, PrimaryTableEntriesNeedNoThisAdjustment) {
  EXPECT_EQ(ThisAdjustmentOf(&SinkContentTransferSubsystem::PerformAction), 0);
  EXPECT_EQ(ThisAdjustmentOf(&SINK_CORE_TransferService::AttachPlaylistManager), 0);
}

}  // namespace
