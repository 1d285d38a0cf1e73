// The tests, or one of the parts that a second process plays in them.
#include <cstring>

#include <gtest/gtest.h>

#include "tests/e2e/e2e_support.h"

int main(int argc, char** argv) {
  constexpr int kFailed = 2;
  if (argc >= 3 && std::strcmp(argv[1], tvrscn::test::kOneJobArgument) == 0) {
    try {
      using tvrscn::test::DeviceChoice;
      return tvrscn::test::runOneJob(
          argv[2], argc == 4 ? DeviceChoice{CONTROLLER_LOWEND, argv[3]} : DeviceChoice{});
    } catch (const std::exception&) {
      return kFailed;
    }
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
