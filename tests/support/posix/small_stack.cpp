#include "tests/support/small_stack.h"

#include <stdexcept>

#include <pthread.h>

namespace tvrscn::test {
namespace {

void* runWork(void* work) {
  (*static_cast<std::function<void()>*>(work))();
  return nullptr;
}

}  // namespace

void runOnStack(std::size_t stackBytes, std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_t thread{};
  const bool started = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                       pthread_create(&thread, &attributes, runWork, &work) == 0;
  pthread_attr_destroy(&attributes);
  if (!started) throw std::runtime_error("no thread with a small stack");
  pthread_join(thread, nullptr);
}

}  // namespace tvrscn::test
