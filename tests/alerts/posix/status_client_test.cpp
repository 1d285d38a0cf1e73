// What a question leaves behind in the program that asks.
#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/alerts/loopback.h"
#include "tvrscn/tdspclient/scan_tdsp_client.h"

namespace tvrscn::test {
namespace {

TEST(StatusClient, LeavesTheSignalsOfTheProgramAlone) {
  struct sigaction before = {};
  ASSERT_EQ(sigaction(SIGPIPE, nullptr, &before), 0);
  ASSERT_EQ(before.sa_handler, SIG_DFL);
  const ClosedPort closed;
  const std::string address = closed.address();
  std::vector<AlertStatus> alerts = {{"k", "s", "d"}};
  CScanTDSPClient client;
  EXPECT_FALSE(
      client.GetDeviceStatus(std::wstring(address.begin(), address.end()).c_str(), alerts));
  struct sigaction after = {};
  ASSERT_EQ(sigaction(SIGPIPE, nullptr, &after), 0);
  EXPECT_EQ(after.sa_handler, SIG_DFL);
  // Without an answer, nor are the alerts touched.
  ASSERT_EQ(alerts.size(), 1U);
  EXPECT_EQ(alerts[0].keyword, "k");
  EXPECT_FALSE(client.GetDeviceStatus(nullptr, alerts));
  EXPECT_EQ(alerts.size(), 1U);
}

}  // namespace
}  // namespace tvrscn::test
