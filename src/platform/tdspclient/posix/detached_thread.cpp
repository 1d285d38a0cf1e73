#include "platform/tdspclient/detached_thread.h"

#include <system_error>
#include <thread>
#include <utility>

bool tvrscn::startDetached(std::function<void()> work) {
  try {
    std::thread(std::move(work)).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}
