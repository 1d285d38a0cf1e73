// The tests, or one of the parts that a second process plays in them.
#include <cstring>
#include <exception>

#include <gtest/gtest.h>

#include "tests/windows/roles.h"

int main(int argc, char** argv) {
  using namespace tvrscn::test;
  constexpr int kFailed = 2;
  if (argc == 3 && std::strcmp(argv[1], kHoldMutexArgument) == 0) return holdMutex(argv[2]);
  if (argc == 3 && std::strcmp(argv[1], kInquireArgument) == 0) {
    try {
      return inquire(argv[2]);
    } catch (const std::exception&) {
      return kFailed;
    }
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
