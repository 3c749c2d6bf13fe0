// SetNextAVTransportURI as the daemon answers it: arguments checked, then the player's next-track slot.
#include "HostServicesFixture.h"

using ::testing::_;
using ::testing::Return;

namespace {

const HostArguments kNext = {{"InstanceID", "0"}, {"NextURI", "http://127.0.0.1/b.flac"},
                             {"NextURIMetaData", "<DIDL-Lite/>"}};

HostArguments Without(const char* name) {
  HostArguments arguments;
  for (const auto& argument : kNext)
    if (argument.first != name) arguments.push_back(argument);
  return arguments;
}

}  // namespace

TEST_F(HostServicesFixture, NextUriGoesToThePlayersNextSlotWithItsMetadata) {
  std::string uri;
  std::string metadata;
  EXPECT_CALL(player_, SetNextAVTransportURI(7, 0, _, _))
      .WillOnce([&](unsigned long, unsigned long, DMR_CMN_String* u, DMR_CMN_String* m) {
        uri = u->GetCString();
        metadata = m->GetCString();
        return 0;
      });
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "SetNextAVTransportURI", kNext);
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_TRUE(outcome.out.empty());
  EXPECT_EQ(uri, "http://127.0.0.1/b.flac");
  EXPECT_EQ(metadata, "<DIDL-Lite/>");
}

TEST_F(HostServicesFixture, NextUriWithoutAnArgumentIsInvalidArgs) {
  EXPECT_CALL(player_, SetNextAVTransportURI(_, _, _, _)).Times(0);
  for (const char* missing : {"InstanceID", "NextURI", "NextURIMetaData"}) {
    const HOST_ActionOutcome outcome = Perform(kAVTransportType, "SetNextAVTransportURI", Without(missing));
    EXPECT_EQ(outcome.errorCode, 402) << missing;
    EXPECT_EQ(outcome.errorDescription, "Invalid Args") << missing;
  }
}

TEST_F(HostServicesFixture, NextUriOnAnotherInstanceIsInvalidInstanceId) {
  EXPECT_CALL(player_, SetNextAVTransportURI(_, _, _, _)).Times(0);
  for (const char* instance : {"1", " 0", "00", ""}) {
    HostArguments arguments = kNext;
    arguments[0].second = instance;
    const HOST_ActionOutcome outcome = Perform(kAVTransportType, "SetNextAVTransportURI", arguments);
    EXPECT_EQ(outcome.errorCode, 718) << instance;
    EXPECT_EQ(outcome.errorDescription, "Invalid InstanceID") << instance;
  }
}

TEST_F(HostServicesFixture, NextUriRefusedByThePlayerCarriesItsErrorAndText) {
  EXPECT_CALL(player_, SetNextAVTransportURI(_, 0, _, _)).WillOnce(Return(716)).WillOnce(Return(701));
  HOST_ActionOutcome outcome = Perform(kAVTransportType, "SetNextAVTransportURI", kNext);
  EXPECT_EQ(outcome.errorCode, 716);
  EXPECT_EQ(outcome.errorDescription, "Resource not found");
  outcome = Perform(kAVTransportType, "SetNextAVTransportURI", kNext);
  EXPECT_EQ(outcome.errorCode, 701);
  EXPECT_EQ(outcome.errorDescription, "Transition not available");
}

TEST_F(HostServicesFixture, NextUriFailingInThePlayerOtherwiseIsActionFailed) {
  EXPECT_CALL(player_, SetNextAVTransportURI(_, 0, _, _)).WillOnce(Return(-1999));
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "SetNextAVTransportURI", kNext);
  EXPECT_EQ(outcome.errorCode, 501);
  EXPECT_EQ(outcome.errorDescription, "Action Failed");
}
