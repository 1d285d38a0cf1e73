// The status library as a test wants it. One is current at a time, from its construction to its
// destruction; without one no device answers. Not for several threads at once.
#ifndef TVRSCN_TESTS_SUPPORT_FAKE_STATUS_LIBRARY_H
#define TVRSCN_TESTS_SUPPORT_FAKE_STATUS_LIBRARY_H

#include <string>
#include <vector>

#include "tvrscn/tevrautil/error_code_dictionary.h"

namespace tvrscn::test {

class FakeStatusLibrary {
 public:
  FakeStatusLibrary();
  FakeStatusLibrary(const FakeStatusLibrary&) = delete;
  FakeStatusLibrary& operator=(const FakeStatusLibrary&) = delete;
  ~FakeStatusLibrary();

  static FakeStatusLibrary* currentOrNull();

  bool answers = true;
  std::vector<AlertStatus> alerts;  // of every device
  std::vector<std::wstring> hosts;  // that were asked
  int clients = 0;                  // that live now
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_FAKE_STATUS_LIBRARY_H
