// Work on a thread whose stack is as small as a host's may be.
#ifndef TVRSCN_TESTS_SUPPORT_SMALL_STACK_H
#define TVRSCN_TESTS_SUPPORT_SMALL_STACK_H

#include <cstddef>
#include <functional>

namespace tvrscn::test {

// Runs work on a thread of its own with a stack of `stackBytes`, and waits for its end. Work must
// not throw. Throws std::runtime_error when there is no such thread.
void runOnStack(std::size_t stackBytes, std::function<void()> work);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_SMALL_STACK_H
