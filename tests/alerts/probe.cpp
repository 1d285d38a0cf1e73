#include "tests/alerts/probe.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "tests/tools/process.h"

namespace tvrscn::test {
namespace {

std::vector<std::string> probeCommand() {
  const char* const named = std::getenv("TVRSCN_STATUS_PROBE");
  if (named == nullptr) return {TVRSCN_NATIVE_PROBE};
  std::vector<std::string> command;
  std::istringstream words(named);
  for (std::string word; words >> word;)
    command.push_back(word);
  return command;
}

// "ADDRESS: true 12"
Probed outcomeOf(const std::string& line, const std::string& address) {
  if (!line.starts_with(address + ": ")) throw std::runtime_error("not an outcome: " + line);
  std::istringstream words(line.substr(address.size() + 2));
  std::string answered;
  Probed probed;
  if (!(words >> answered >> probed.milliseconds)) {
    throw std::runtime_error("not an outcome: " + line);
  }
  probed.answered = answered == "true";
  return probed;
}

}  // namespace

std::vector<Probed> probe(const std::vector<std::string>& addresses) {
  std::vector<std::string> command = probeCommand();
  command.insert(command.end(), addresses.begin(), addresses.end());
  Process process(command, {});
  if (process.wait() != 0) throw std::runtime_error("the probe failed: " + process.errors());
  std::vector<Probed> outcomes;
  for (std::string line : process.outputLines()) {
    // Programs of Windows end their lines in two characters.
    if (line.ends_with('\r')) line.pop_back();
    if (line.starts_with("  ") && !outcomes.empty()) {
      outcomes.back().alerts.push_back(line.substr(2));
    } else if (outcomes.size() < addresses.size()) {
      outcomes.push_back(outcomeOf(line, addresses[outcomes.size()]));
    }
  }
  if (outcomes.size() != addresses.size()) throw std::runtime_error("the probe said too little");
  return outcomes;
}

}  // namespace tvrscn::test
