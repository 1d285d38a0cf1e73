// The parts that this test program plays as a second process.
#ifndef TVRSCN_TESTS_WINDOWS_ROLES_H
#define TVRSCN_TESTS_WINDOWS_ROLES_H

#include <string>

namespace tvrscn::test {

// Takes the mutex of that name, says so through the event "NAME-held", and gives it up when the
// event "NAME-release" is set.
constexpr const char* kHoldMutexArgument = "--hold-mutex";
int holdMutex(const std::string& name);

// A host of the device at that pipe: one inquiry. 0 when it was answered in full.
constexpr const char* kInquireArgument = "--inquire";
int inquire(const std::string& pipe);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_WINDOWS_ROLES_H
