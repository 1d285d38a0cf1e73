#include "device_choice.h"

#include <gtest/gtest.h>

namespace tvrscn::cli {
namespace {

Device device(const char* hardwareId, const char* endpoint) {
  return {std::string("USB\\") + hardwareId + "\\1", hardwareId, endpoint, ""};
}

TEST(HardwareId, IsTheMiddleOfTheInstanceId) {
  EXPECT_EQ(hardwareIdOf("USB\\VID_0A7E&PID_1F48&MI_00\\1-2"), "VID_0A7E&PID_1F48&MI_00");
  EXPECT_EQ(hardwareIdOf("USB\\VID_0A7E"), "VID_0A7E");
  EXPECT_EQ(hardwareIdOf("VID_0A7E"), "VID_0A7E");
  EXPECT_EQ(hardwareIdOf(""), "");
}

TEST(ChooseOnly, TakesTheOneThatCanBeOpened) {
  Device chosen;
  EXPECT_FALSE(chooseOnly({device("A", ""), device("B", "unix:/b")}, chosen));
  EXPECT_EQ(chosen.hardwareId, "B");
}

TEST(ChooseOnly, AsksWhenThereAreSeveral) {
  Device chosen;
  const auto outcome = chooseOnly({device("A", "unix:/a"), device("B", "unix:/b")}, chosen);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->code, ExitCode::kNoDevice);
  EXPECT_NE(outcome->what.find("A, B"), std::string::npos);
  EXPECT_NE(outcome->remedy.find("--device"), std::string::npos);
}

TEST(ChooseOnly, SaysSoWhenThereIsNone) {
  Device chosen;
  const auto outcome = chooseOnly({}, chosen);
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->code, ExitCode::kNoDevice);
}

TEST(ProbeOutcome, EachResultHasItsMeaning) {
  EXPECT_FALSE(probeOutcome(0, "A", {}));
  const auto missing = probeOutcome(55, "A", {device("B", "unix:/b")});
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->code, ExitCode::kNoDevice);
  EXPECT_NE(missing->remedy.find("B"), std::string::npos);
  EXPECT_EQ(probeOutcome(15008, "A", {})->code, ExitCode::kFailed);
  EXPECT_EQ(probeOutcome(13, "A", {})->code, ExitCode::kDeviceFailed);
}

TEST(PlacementAs, TakesANameThatFollowsFromTheId) {
  virtual_device::Placement usual;
  usual.socket = "/somewhere";
  const auto placement = placementAs(usual, "USB\\VID_0001&PID_0002\\SECOND");
  EXPECT_EQ(placement.instanceId, "USB\\VID_0001&PID_0002\\SECOND");
  EXPECT_EQ(placement.name, "USB#VID_0001&PID_0002#SECOND");
  EXPECT_EQ(placement.socket, usual.socket);
}

}  // namespace
}  // namespace tvrscn::cli
