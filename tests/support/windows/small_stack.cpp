#include "tests/support/small_stack.h"

#include <stdexcept>

#include <windows.h>

namespace tvrscn::test {
namespace {

DWORD WINAPI runWork(void* work) {
  (*static_cast<std::function<void()>*>(work))();
  return 0;
}

}  // namespace

void runOnStack(std::size_t stackBytes, std::function<void()> work) {
  const HANDLE thread =
      CreateThread(nullptr, stackBytes, runWork, &work, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) throw std::runtime_error("no thread with a small stack");
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

}  // namespace tvrscn::test
