// Servers that are no printers, broken ones, and ones that mean harm. The slow ones are asked
// together, since each costs the whole time that a question may take.
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/alerts/loopback.h"
#include "tests/alerts/probe.h"
#include "tests/alerts/tcp_server.h"

namespace tvrscn::test {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

constexpr long kLimit = 5000;
// What a busy machine may add.
constexpr long kSlack = 2500;
// How much earlier than we a system may end a connection by its own clock.
constexpr long kSystemSlack = 500;

// clang-format off
const std::string kAnswer =
    "\x01\x01\x00\x00\x00\x00\x00\x01\x01"s
    "\x47\x00\x12"s "attributes-charset" "\x00\x05"s "utf-8"
    "\x48\x00\x1B"s "attributes-natural-language" "\x00\x02"s "en"
    "\x04"
    "\x44\x00\x15"s "printer-state-reasons" "\x00\x12"s "cover-open-warning"
    "\x03"s;
const std::string kIppNotFound =
    "\x01\x01\x04\x06\x00\x00\x00\x01\x01"s
    "\x47\x00\x12"s "attributes-charset" "\x00\x05"s "utf-8"
    "\x48\x00\x1B"s "attributes-natural-language" "\x00\x02"s "en"
    "\x03"s;
// clang-format on
const Lines kAlerts = {"cover-open|warning|"};

std::string head(const std::string& status, std::size_t length) {
  return "HTTP/1.1 " + status +
         "\r\nContent-Type: application/ipp\r\nContent-Length: " + std::to_string(length) +
         "\r\n\r\n";
}

std::string whole(const std::string& body) {
  return head("200 OK", body.size()) + body;
}

TcpServer::Behaviour saying(const std::string& bytes) {
  return [bytes](Caller& caller) { caller.say(bytes); };
}

// Something first, then the same again and again for as long as the caller listens.
TcpServer::Behaviour repeating(const std::string& first, const std::string& again,
                               std::chrono::milliseconds pause) {
  return [=](Caller& caller) {
    bool listens = caller.say(first);
    while (listens)
      listens = caller.saySlowly(again, pause);
  };
}

struct Case {
  const char* name;
  TcpServer::Behaviour behaviour;
};

// Asks servers with these behaviours all at once, and behind them some more.
std::vector<Probed> probeAll(const std::vector<Case>& cases, const Lines& more = {}) {
  std::vector<std::unique_ptr<TcpServer>> servers;
  Lines addresses;
  for (const Case& row : cases) {
    servers.push_back(std::make_unique<TcpServer>(row.behaviour));
    addresses.push_back(servers.back()->address());
  }
  addresses.insert(addresses.end(), more.begin(), more.end());
  return probe(addresses);
}

TEST(HostileServer, NoAnswerThatMakesSenseIsNone) {
  constexpr std::size_t kTooMuch = 300 * 1024;
  const std::string half = kAnswer.substr(0, kAnswer.size() / 2);
  std::string wrongNumber = kAnswer;
  wrongNumber[7] = '\x02';
  std::string wrongLength = kAnswer;
  wrongLength[9 + 1] = '\x7F';
  const std::vector<Case> cases = {
      {"silence", saying("")},
      {"garbage", saying("\x16\x03\x01\x00\xA5\x01 no HTTP at all\r\n\r\n"s)},
      {"garbage in HTTP", saying(whole("<html>It works!</html>"))},
      {"nothing in HTTP", saying(whole(""))},
      {"cut head", saying("HTTP/1.1 200 O")},
      {"cut answer", saying(head("200 OK", kAnswer.size()) + half)},
      {"cut answer that says so", saying(whole(half))},
      {"answer without its end", saying("HTTP/1.1 200 OK\r\n\r\n" + half)},
      {"wrong number", saying(whole(wrongNumber))},
      {"wrong length", saying(whole(wrongLength))},
      {"huge answer", saying(whole(kAnswer.substr(0, kAnswer.size() - 1) +
                                   std::string(kTooMuch, '\x04') + "\x03"))},
      {"failure", saying(head("500 Internal Server Error", 0))},
      {"wants a password",
       saying("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
              "Content-Length: 0\r\n\r\n")},
      {"IPP failure", saying(whole(kIppNotFound))},
  };
  const std::vector<Probed> outcomes = probeAll(cases);
  for (std::size_t number = 0; number < cases.size(); ++number) {
    EXPECT_FALSE(outcomes[number].answered) << cases[number].name;
    EXPECT_EQ(outcomes[number].alerts, Lines{}) << cases[number].name;
    EXPECT_LT(outcomes[number].milliseconds, kLimit) << cases[number].name;
  }
}

TEST(HostileServer, AnswersInAllFormsOfHttpAreTaken) {
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const std::string first = "10\r\n" + kAnswer.substr(0, 16) + "\r\n";
  ASSERT_EQ(kAnswer.size(), 117U);
  const std::string second = "65\r\n" + kAnswer.substr(16) + "\r\n0\r\n\r\n";
  const std::vector<Case> cases = {
      {"plain", saying(whole(kAnswer))},
      {"after a pause",
       [](Caller& caller) {
         caller.saySlowly(head("200 OK", kAnswer.size()), std::chrono::milliseconds(100));
         caller.say(kAnswer);
       }},
      {"in chunks", saying(chunked + first + second)},
      {"at the root alone",
       [](Caller& caller) {
         caller.say(caller.path() == "/" ? whole(kAnswer) : head("404 Not Found", 0));
       }},
      {"at the root alone, in IPP",
       [](Caller& caller) { caller.say(whole(caller.path() == "/" ? kAnswer : kIppNotFound)); }},
      {"at the usual path alone",
       [](Caller& caller) {
         caller.say(caller.path() == "/ipp/print" ? whole(kAnswer) : head("404 Not Found", 0));
       }},
  };
  const std::vector<Probed> outcomes = probeAll(cases);
  for (std::size_t number = 0; number < cases.size(); ++number) {
    EXPECT_TRUE(outcomes[number].answered) << cases[number].name;
    EXPECT_EQ(outcomes[number].alerts, kAlerts) << cases[number].name;
  }
}

TEST(HostileServer, WordToGoOnIsPassedOver) {
  const std::string goOn = "HTTP/1.1 100 Continue\r\n\r\n";
  EXPECT_EQ(probeAll({{"go on first", saying(goOn + whole(kAnswer))}})[0].alerts, kAlerts);
}

TEST(HostileServer, NobodyIsSentElsewhere) {
  const TcpServer other(saying(whole(kAnswer)));
  const std::string elsewhere = "HTTP/1.1 302 Found\r\nLocation: http://" + other.address() +
                                "/ipp/print\r\nContent-Length: 0\r\n\r\n";
  EXPECT_FALSE(probeAll({{"redirection", saying(elsewhere)}})[0].answered);
  EXPECT_EQ(other.callers(), 0);
}

TEST(HostileServer, NoDeviceAndNoAddressCostNoTime) {
  const ClosedPort closed;
  const Lines addresses = {closed.address(), "", "/", "a b", ":631", "127.0.0.1:0", "[::1"};
  for (const Probed& outcome : probe(addresses)) {
    EXPECT_FALSE(outcome.answered);
    EXPECT_LT(outcome.milliseconds, kSlack);
  }
}

TEST(HostileServer, SlowAndEndlessAnswersEndAtTheLimit) {
  using std::chrono::milliseconds;
  const std::string line(1000, 'x');
  const std::string endless = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  const std::vector<Case> cases = {
      {"never a word", repeating("", "", milliseconds(1000))},
      {"head byte by byte", repeating("HTTP/1.1 200 OK\r\nX: ", "x", milliseconds(50))},
      {"endless head", repeating("HTTP/1.1 200 OK\r\n", "X: " + line + "\r\n", milliseconds(1))},
      {"go on without end", repeating("", "HTTP/1.1 100 Continue\r\n\r\n", milliseconds(10))},
      {"body byte by byte", repeating(head("200 OK", 200000), "\x01", milliseconds(50))},
      {"body stops",
       repeating(head("200 OK", kAnswer.size()) + kAnswer.substr(0, 50), "", milliseconds(1000))},
      {"chunks byte by byte", repeating(endless, "1\r\n\x01\r\n", milliseconds(50))},
      {"endless body", repeating(head("200 OK", 2000000000), line, milliseconds(0))},
  };
  // And a connection that never comes.
  const FullPort full;
  const std::vector<Probed> outcomes = probeAll(cases, {full.address()});
  for (std::size_t number = 0; number < outcomes.size(); ++number) {
    EXPECT_FALSE(outcomes[number].answered) << number;
    EXPECT_LT(outcomes[number].milliseconds, kLimit + kSlack) << number;
  }
  // The bound on the size comes long before that on the time.
  EXPECT_LT(outcomes[cases.size() - 1].milliseconds, kLimit);
  // The bound on the time is not shorter than it says.
  EXPECT_GE(outcomes.front().milliseconds, kLimit);
  EXPECT_GE(outcomes.back().milliseconds, kLimit - kSystemSlack);
}

}  // namespace
}  // namespace tvrscn::test
