// Asks devices for their status as a driver does and prints what comes: for each address one line
// "ADDRESS: true|false MILLISECONDS", and for each alert "  KEYWORD|SEVERITY|DESCRIPTION". All
// addresses are asked at once. A program of its own, so that the same tests can ask from the
// libraries of either system.
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "tvrscn/tdspclient/scan_tdsp_client.h"

namespace {

struct Outcome {
  bool answered = false;
  std::chrono::milliseconds time{0};
  std::vector<AlertStatus> alerts;
};

void ask(const std::string& address, Outcome& outcome) {
  const auto start = std::chrono::steady_clock::now();
  const std::wstring host(address.begin(), address.end());
  CScanTDSPClient client;
  outcome.answered = client.GetDeviceStatus(host.c_str(), outcome.alerts);
  outcome.time = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> addresses(argv + 1, argv + argc);
  std::vector<Outcome> outcomes(addresses.size());
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < addresses.size(); ++number)
    threads.emplace_back([&, number] { ask(addresses[number], outcomes[number]); });
  for (std::thread& thread : threads)
    thread.join();
  for (std::size_t number = 0; number < addresses.size(); ++number) {
    const Outcome& outcome = outcomes[number];
    std::printf("%s: %s %lld\n", addresses[number].c_str(), outcome.answered ? "true" : "false",
                static_cast<long long>(outcome.time.count()));
    for (const AlertStatus& alert : outcome.alerts) {
      std::printf("  %s|%s|%s\n", alert.keyword.c_str(), alert.severity.c_str(),
                  alert.description.c_str());
    }
  }
  return 0;
}
