// A real IPP printer, ippeveprinter, set into states through the command that it runs for each job.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/alerts/loopback.h"
#include "tests/alerts/probe.h"
#include "tests/support/temporary_folder.h"
#include "tests/tools/process.h"

namespace tvrscn::test {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

constexpr int kTries = 400;
constexpr milliseconds kPause(25);

template <typename Condition>
bool waitUntil(Condition condition) {
  for (int number = 0; number < kTries; ++number) {
    if (condition()) return true;
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

int freePort() {
  return ClosedPort().number();
}

// The printer looks for its neighbours by D-Bus and does not start without one; this one is its
// own, and nobody else is on it.
class IppPrinter : public ::testing::Test {
 protected:
  IppPrinter() : port(freePort()) {
    namespace fs = std::filesystem;
    fs::create_directory(path("spool"));
    write("bus.conf", "<busconfig><type>system</type><listen>unix:path=" + path("bus") +
                          "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow "
                          "send_destination=\"*\"/>"
                          "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>");
    write("job", "any bytes");
    write("state", "");
    // Says the state, then works for as long as there is a file of that name.
    write("command", "#!/bin/sh\ncat '" + path("state") + "' >&2\n: >'" + path("said") +
                         "'\nwhile [ -e '" + path("working") + "' ]; do sleep 0.05; done\n");
    fs::permissions(path("command"), fs::perms::owner_all);
    write("print.test",
          "{ OPERATION Print-Job GROUP operation-attributes-tag ATTR charset attributes-charset "
          "utf-8 ATTR language attributes-natural-language en ATTR uri printer-uri $uri "
          "ATTR mimeMediaType document-format image/jpeg FILE $filename STATUS successful-ok }");
    bus = std::make_unique<Process>(
        Lines{"dbus-daemon", "--config-file=" + path("bus.conf"), "--nofork", "--nopidfile"},
        Environment{});
    start();
  }

  void start() {
    ASSERT_TRUE(waitUntil([this] { return std::filesystem::exists(path("bus")); }));
    printer = std::make_unique<Process>(
        Lines{"ippeveprinter", "-n", "localhost", "-p", std::to_string(port), "-r", "off", "-d",
              path("spool"), "-c", path("command"), "-f", "image/jpeg", "Test"},
        Environment{{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path("bus")}});
    ASSERT_TRUE(waitUntil([this] { return isListenedAt(port); }));
  }

  std::string path(const char* name) const { return (folder.path() / name).string(); }

  void write(const char* name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
  }

  // True when the printer takes a job; it refuses one while it works on another.
  bool printed() const {
    Process job({"ipptool", "-q", "-f", path("job"), "ipp://" + address() + "/ipp/print",
                 path("print.test")},
                {});
    return job.wait() == 0;
  }

  // Runs one job that says so.
  void set(const std::string& state) const {
    write("state", state);
    std::filesystem::remove(path("said"));
    ASSERT_TRUE(waitUntil([this] { return printed(); }));
    ASSERT_TRUE(waitUntil([this] { return std::filesystem::exists(path("said")); }));
  }

  // The alerts once they are these, or what they were at last.
  Lines alertsBecoming(const Lines& expected) const {
    Probed outcome = probe({address()})[0];
    for (int number = 0; number < 10 && outcome.alerts != expected; ++number)
      outcome = probe({address()})[0];
    EXPECT_TRUE(outcome.answered);
    return outcome.alerts;
  }

  std::string address() const { return "localhost:" + std::to_string(port); }

  TemporaryFolder folder;
  int port;
  std::unique_ptr<Process> bus;
  std::unique_ptr<Process> printer;
};

TEST_F(IppPrinter, StatesAreTold) {
  const std::string number = std::to_string(port);
  // At its name, at its addresses, and with a path behind.
  for (const Probed& outcome :
       probe({"localhost:" + number, "127.0.0.1:" + number, "localhost:" + number + "/x"})) {
    EXPECT_TRUE(outcome.answered);
    EXPECT_EQ(outcome.alerts, Lines{});
  }

  // A printer that rests has nothing worse than reports.
  set("STATE: media-jam,toner-low\n");
  const Lines resting = {"media-jam|report|", "toner-low|report|"};
  EXPECT_EQ(alertsBecoming(resting), resting);

  // One that works has warnings; descriptions come with the alert of the same meaning.
  write("working", "");
  set("STATE: cover-open\n"
      "ATTR: printer-alert='code=coverOpen;severity=critical','code=subunitMissing;"
      "severity=warning' printer-alert-description=\"Front door\",\"Unit 2\"\n");
  const Lines working = {"cover-open|warning|Front door", "subunit-missing|warning|Unit 2"};
  EXPECT_EQ(alertsBecoming(working), working);
  std::filesystem::remove(path("working"));

  set("STATE: none\nATTR: printer-alert='' printer-alert-description=''\n");
  EXPECT_EQ(alertsBecoming({}), Lines{});
}

}  // namespace
}  // namespace tvrscn::test
