// Alerts on the command line, from a server on the loopback interface that answers as a device
// does.
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/alerts/loopback.h"
#include "tests/alerts/tcp_server.h"
#include "tvrscan_fixture.h"

namespace tvrscn::test {
namespace {

using namespace std::string_literals;
using nlohmann::json;
using Names = std::vector<std::string>;

std::string counted(std::string_view text) {
  std::string bytes;
  bytes += static_cast<char>(text.size() / 256);
  bytes += static_cast<char>(text.size() % 256);
  return bytes.append(text);
}

// One attribute; further values have no name.
std::string attribute(char tag, std::string_view name, const Names& values) {
  std::string bytes;
  for (const std::string& value : values) {
    bytes += tag + counted(bytes.empty() ? name : "") + counted(value);
  }
  return bytes;
}

struct State {
  Names reasons;
  Names alerts = {};
  Names descriptions = {};
};

// A device in this state.
TcpServer::Behaviour device(const State& state) {
  constexpr char kKeyword = '\x44';
  constexpr char kOctets = '\x30';
  constexpr char kText = '\x41';
  const std::string body =
      "\x01\x01\x00\x00\x00\x00\x00\x01\x01"s + attribute('\x47', "attributes-charset", {"utf-8"}) +
      attribute('\x48', "attributes-natural-language", {"en"}) + "\x04" +
      attribute(kKeyword, "printer-state-reasons", state.reasons) +
      attribute(kOctets, "printer-alert", state.alerts) +
      attribute(kText, "printer-alert-description", state.descriptions) + "\x03";
  const std::string answer =
      "HTTP/1.1 200 OK\r\nContent-Type: application/ipp\r\nContent-Length: " +
      std::to_string(body.size()) + "\r\n\r\n" + body;
  return [answer](Caller& caller) { caller.say(answer); };
}

const State kJam = {{"toner-low-report", "media-jam-error", "cover-open-warning"},
                    {"code=jam;severity=critical"},
                    {"Rear\x1B[31m door"}};

class TvrscanAlerts : public TvrscanTest {};

TEST_F(TvrscanAlerts, SeverityDecidesTheExitCode) {
  const struct {
    State state;
    int exitCode;
    const char* output;
    const char* words;
  } cases[] = {
      {{{"none"}}, 0, "", "tvrscan: nothing is wrong with the device\n"},
      {{{"toner-low-report"}},
       0,
       "report  toner-low\n",
       "tvrscan: the device works, and has something to report: Paper, toner or ink of the device "
       "is running low. You can go on scanning; refill the device soon.\n"},
      {{{"cover-open-warning", "toner-low-report"}},
       14,
       "warning  cover-open\nreport   toner-low\n",
       "tvrscan: attention: the device works, and warns of something.\n"
       "  A cover or door of the device is open. Close all covers and doors, then scan again.\n"},
      {{{"media-empty"}},
       11,
       "error  media-empty\n",
       "tvrscan: refused: the device reports an error.\n"
       "  A paper tray of the device is empty. Load paper, then scan again.\n"},
      {kJam, 11,
       "report   toner-low\n"
       "error    media-jam   Rear [31m door\n"
       "warning  cover-open\n",
       "tvrscan: refused: the device reports an error.\n"
       "  Paper is jammed in the device. Follow the display of the device to take the paper out, "
       "then scan again.\n"},
  };
  for (const auto& row : cases) {
    const TcpServer server(device(row.state));
    const auto program = start({"alerts", server.address()});
    EXPECT_EQ(program->wait(), row.exitCode);
    EXPECT_EQ(program->output(), row.output);
    EXPECT_EQ(program->errors(), row.words);
  }
}

TEST_F(TvrscanAlerts, WordingIsTheFamilys) {
  const TcpServer server(device(kJam));
  const struct {
    Names options;
    const char* display;
  } cases[] = {
      {{"--family", "lantern"}, "Follow the control panel to"},
      {{"--family", "LOWEND"}, "Follow the display to"},
      {{"--model", "2060"}, "Follow the control panel to"},
      {{"--model", "Tevra Quay 200 in the hall"}, "Follow the touch screen to"},
  };
  for (const auto& row : cases) {
    Names command = {"alerts", "ipp://" + server.address() + "/ipp/print"};
    command.insert(command.end(), row.options.begin(), row.options.end());
    const auto program = start(command);
    EXPECT_EQ(program->wait(), 11);
    EXPECT_NE(program->errors().find(row.display), std::string::npos) << program->errors();
  }
}

TEST_F(TvrscanAlerts, JsonHasEachAlertAndTheEnd) {
  const TcpServer server(device(kJam));
  const auto program = start({"alerts", server.address(), "--json", "--quiet"});
  EXPECT_EQ(program->wait(), 11);
  const Names lines = program->outputLines();
  ASSERT_EQ(lines.size(), 4U) << program->output();
  EXPECT_EQ(json::parse(lines[0]), (json{{"event", "alert"},
                                         {"severity", "report"},
                                         {"keyword", "toner-low"},
                                         {"description", nullptr}}));
  EXPECT_EQ(json::parse(lines[1])["description"], "Rear [31m door");
  EXPECT_EQ(json::parse(lines[2])["severity"], "warning");
  const json end = json::parse(lines[3]);
  EXPECT_EQ(end["event"], "end");
  EXPECT_EQ(end["status"], "refused");
  EXPECT_EQ(end["exit_code"], 11);
  EXPECT_EQ(end["cause"], "the device reports an error");
  EXPECT_EQ(end["remedy"],
            "Paper is jammed in the device. Follow the display of the device to take the paper "
            "out, then scan again.");
}

TEST_F(TvrscanAlerts, QuietSaysNothingOfADeviceThatIsWell) {
  const TcpServer server(device({{"none"}}));
  const auto program = start({"alerts", server.address(), "--quiet", "--json"});
  EXPECT_EQ(program->wait(), 0);
  EXPECT_EQ(program->errors(), "");
  ASSERT_EQ(program->outputLines().size(), 1U) << program->output();
  const json end = json::parse(program->output());
  EXPECT_EQ(end["status"], "done");
  EXPECT_EQ(end["exit_code"], 0);
}

TEST_F(TvrscanAlerts, NoDeviceIsNoSuchDevice) {
  const ClosedPort closed;
  for (const std::string& address :
       {closed.address(), "http://" + closed.address(), "//"s, "a b"s, "W\xC3\xA4lnut"s}) {
    const auto program = start({"alerts", address});
    EXPECT_EQ(program->wait(), 3) << address;
    EXPECT_EQ(program->output(), "");
    EXPECT_NE(program->errors().find("no device answers at '" + address + "'"), std::string::npos)
        << program->errors();
  }
}

TEST_F(TvrscanAlerts, BadWordsAreRefusedBeforeTheDeviceIsAsked) {
  const TcpServer server(device(kJam));
  const struct {
    Names arguments;
    const char* words;
  } cases[] = {
      {{"alerts"}, "address"},
      {{"alerts", ""}, "the address is empty"},
      {{"alerts", server.address(), "--model", "toaster"}, "no model is called 'toaster'"},
      {{"alerts", server.address(), "--family", "lowed"}, "did you mean LOWEND"},
      {{"alerts", server.address(), "--family", "amber", "--model", "2060"}, "excludes"},
  };
  for (const auto& row : cases) {
    const auto program = start(row.arguments);
    EXPECT_EQ(program->wait(), 2) << row.words;
    EXPECT_NE(program->errors().find(row.words), std::string::npos) << program->errors();
  }
  EXPECT_EQ(server.callers(), 0);
}

}  // namespace
}  // namespace tvrscn::test
