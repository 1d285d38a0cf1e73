// The tests, or one of the parts that a second process plays in them.
#include <exception>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/e2e/e2e_support.h"

namespace {

using namespace tvrscn::test;  // NOLINT(google-build-using-namespace): this is its program

int playPart(const std::string& part, const std::vector<std::string>& arguments) {
  if (part == kStoreScanArgument) return runStoreScan(arguments.at(0), arguments.at(1));
  if (arguments.size() < 3) return runOneJob(arguments.at(0), {});
  const auto controller = static_cast<ControllerType>(std::stoi(arguments[1]));
  return runOneJob(arguments[0], {controller, arguments[2]});
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kFailed = 99;
  const std::string part = argc >= 3 ? argv[1] : "";
  if (part == kOneJobArgument || part == kStoreScanArgument) {
    try {
      return playPart(part, {argv + 2, argv + argc});
    } catch (const std::exception&) {
      return kFailed;
    }
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
