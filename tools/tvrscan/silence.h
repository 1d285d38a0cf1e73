// When to say that nothing happens: after 10, 20 and 30 seconds of silence, then every 30.
#ifndef TVRSCN_TOOLS_TVRSCAN_SILENCE_H
#define TVRSCN_TOOLS_TVRSCAN_SILENCE_H

#include <chrono>

namespace tvrscn::cli {

class Silence {
 public:
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::seconds;

  explicit Silence(Clock::time_point now) : lastSign_(now) {}

  void onSign(Clock::time_point now) {
    lastSign_ = now;
    nextReminder_ = kFirst;
  }

  Seconds length(Clock::time_point now) const {
    return std::chrono::duration_cast<Seconds>(now - lastSign_);
  }

  // True once for each reminder that has become due.
  bool reminderDue(Clock::time_point now) {
    if (length(now) < nextReminder_) return false;
    nextReminder_ = length(now) + (nextReminder_ < kFrequentUntil ? kFirst : kLater);
    return true;
  }

 private:
  static constexpr Seconds kFirst{10};
  static constexpr Seconds kFrequentUntil{30};
  static constexpr Seconds kLater{30};

  Clock::time_point lastSign_;
  Seconds nextReminder_ = kFirst;
};

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_SILENCE_H
