// Asks devices for their status through status_probe, so that the same tests can speak for the
// libraries of either system: TVRSCN_STATUS_PROBE holds the command where it is not the native one,
// such as "wine build/windows/tests/status_probe.exe".
#ifndef TVRSCN_TESTS_ALERTS_PROBE_H
#define TVRSCN_TESTS_ALERTS_PROBE_H

#include <string>
#include <vector>

namespace tvrscn::test {

struct Probed {
  bool answered = false;
  long milliseconds = 0;
  std::vector<std::string> alerts;  // "keyword|severity|description"
};

// Asks all addresses at the same time; as many results, in the same order. Throws
// std::runtime_error when the program does not say what it should.
std::vector<Probed> probe(const std::vector<std::string>& addresses);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_ALERTS_PROBE_H
