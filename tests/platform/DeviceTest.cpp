#include "marlo/Device.h"

#include <gtest/gtest.h>

#include <string>

#include "marlo/Result.h"

namespace {

// The address is process-wide: every test puts the default back, so that no test sees another's.
class Device : public ::testing::Test {
 protected:
  void TearDown() override { ASSERT_EQ(marlo::Device::SetServerIPAddress("127.0.0.1"), 0); }
};

}  // namespace

TEST_F(Device, ServerIPAddressIsLoopbackUntilSet) {
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "127.0.0.1");
}

TEST_F(Device, SetServerIPAddressIsReadBack) {
  EXPECT_EQ(marlo::Device::SetServerIPAddress("192.168.1.20"), 0);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "192.168.1.20");
}

TEST_F(Device, SetServerIPAddressTakesHostAndPort) {
  EXPECT_EQ(marlo::Device::SetServerIPAddress("192.168.1.20:49152"), 0);
  EXPECT_EQ(std::string("http://") + marlo::Device::GetServerIPAddress() + "/icon.png",
            "http://192.168.1.20:49152/icon.png");
}

TEST_F(Device, SetServerIPAddressCopiesTheText) {
  char address[] = "10.0.0.5";
  ASSERT_EQ(marlo::Device::SetServerIPAddress(address), 0);
  address[0] = '9';
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "10.0.0.5");
}

TEST_F(Device, LaterSetServerIPAddressReplacesALongerOne) {
  ASSERT_EQ(marlo::Device::SetServerIPAddress("[fe80::1234:5678:9abc:def0]:49152"), 0);
  EXPECT_EQ(marlo::Device::SetServerIPAddress("10.0.0.5"), 0);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "10.0.0.5");
}

TEST_F(Device, SetServerIPAddressTakes63Bytes) {
  const std::string address(63, 'a');
  EXPECT_EQ(marlo::Device::SetServerIPAddress(address.c_str()), 0);
  EXPECT_EQ(std::string(marlo::Device::GetServerIPAddress()), address);
}

TEST_F(Device, SetServerIPAddressRejects64BytesAndKeepsTheOldAddress) {
  ASSERT_EQ(marlo::Device::SetServerIPAddress("192.168.1.20"), 0);
  const std::string address(64, 'a');
  EXPECT_EQ(marlo::Device::SetServerIPAddress(address.c_str()), -1998);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "192.168.1.20");
}

TEST_F(Device, SetServerIPAddressRejectsAMuchLongerTextAndKeepsTheOldAddress) {
  const std::string address(1000, 'a');
  EXPECT_EQ(marlo::Device::SetServerIPAddress(address.c_str()), -1998);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "127.0.0.1");
}

TEST_F(Device, SetServerIPAddressRejectsNullAndKeepsTheOldAddress) {
  ASSERT_EQ(marlo::Device::SetServerIPAddress("192.168.1.20"), 0);
  EXPECT_EQ(marlo::Device::SetServerIPAddress(nullptr), -1998);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "192.168.1.20");
}

TEST_F(Device, SetServerIPAddressRejectsAnEmptyTextAndKeepsTheOldAddress) {
  ASSERT_EQ(marlo::Device::SetServerIPAddress("192.168.1.20"), 0);
  EXPECT_EQ(marlo::Device::SetServerIPAddress(""), -1998);
  EXPECT_STREQ(marlo::Device::GetServerIPAddress(), "192.168.1.20");
}

TEST_F(Device, GetServerIPAddressAnswersTheSameTextUntilTheNextSet) {
  const char* first = marlo::Device::GetServerIPAddress();
  EXPECT_EQ(marlo::Device::GetServerIPAddress(), first);
  EXPECT_STREQ(first, "127.0.0.1");
}
