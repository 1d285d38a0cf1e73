// The end of a job that goes on when Scan has returned: the notification that tells it.
#ifndef TVRSCN_TESTS_E2E_JOB_END_H
#define TVRSCN_TESTS_E2E_JOB_END_H

#include <condition_variable>
#include <mutex>
#include <optional>

#include "tvrscn/notifications.h"

namespace tvrscn::test {

// Outlives the job. Without dialogs, so that every failure is one notification.
class JobEnd {
 public:
  TVR_FP_CALLBACK* callback() { return &callback_; }

  // Whether it has been told by now.
  bool hasCome() {
    const std::lock_guard lock(mutex_);
    return type_.has_value();
  }

  // Waits for it.
  NotificationType type() {
    std::unique_lock lock(mutex_);
    told_.wait(lock, [this] { return type_.has_value(); });
    return *type_;
  }

 private:
  // Signals under the lock: whoever waits may be gone as soon as it is free.
  static void onNotification(ScanNotification* notification, void* context) {
    if (notification->type == NOTIFY_TRANSFER_STARTED || notification->type == NOTIFY_IMAGE_READY)
      return;
    auto* end = static_cast<JobEnd*>(context);
    const std::lock_guard lock(end->mutex_);
    end->type_ = notification->type;
    end->told_.notify_all();
  }

  TVR_FP_CALLBACK callback_ = {&JobEnd::onNotification, this};
  std::mutex mutex_;
  std::condition_variable told_;
  std::optional<NotificationType> type_;
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_E2E_JOB_END_H
