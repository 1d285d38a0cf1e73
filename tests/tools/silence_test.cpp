#include "silence.h"

#include <vector>

#include <gtest/gtest.h>

namespace tvrscn::cli {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(Silence, RemindsAfter10And20And30SecondsAndThenEvery30) {
  const Silence::Clock::time_point start{};
  Silence silence(start);
  std::vector<long long> reminders;
  for (int tick = 0; tick <= 1300; ++tick) {
    if (silence.reminderDue(start + milliseconds(100 * tick))) {
      reminders.push_back(silence.length(start + milliseconds(100 * tick)).count());
    }
  }
  EXPECT_EQ(reminders, (std::vector<long long>{10, 20, 30, 60, 90, 120}));
}

TEST(Silence, ASignOfLifeStartsItAnew) {
  const Silence::Clock::time_point start{};
  Silence silence(start);
  EXPECT_TRUE(silence.reminderDue(start + seconds(25)));
  silence.onSign(start + seconds(26));
  EXPECT_FALSE(silence.reminderDue(start + seconds(35)));
  EXPECT_TRUE(silence.reminderDue(start + seconds(36)));
}

}  // namespace
}  // namespace tvrscn::cli
