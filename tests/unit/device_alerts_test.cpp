// What the user is told about the device's own alerts: which host is asked, and which dialog comes.
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/fake_status_library.h"
#include "tests/support/platform_test.h"
#include "tvrscn/scan_client.h"

namespace {

using tvrscn::test::FakeStatusLibrary;
using tvrscn::test::Kind;
using tvrscn::test::Lines;
using tvrscn::test::namedDictionary;
using tvrscn::test::PlatformTest;

using Hosts = std::vector<std::wstring>;

class DeviceAlerts : public PlatformTest {
 protected:
  DeviceAlerts() { ClientTestPeer::dictionary(client) = namedDictionary(); }

  void TearDown() override {
    EXPECT_EQ(status.clients, 0);
    PlatformTest::TearDown();
  }

  Lines dialogs() const { return platform.calls({Kind::kDialog}); }

  FakeStatusLibrary status;
  ScanBaseClient client;
};

TEST_F(DeviceAlerts, HostIsWhatStandsBehindTheFirstSlashes) {
  const struct {
    const wchar_t* uri;
    const wchar_t* host;
  } kCases[] = {
      {L"scheme://198.51.100.7", L"198.51.100.7"},
      {L"//host", L"host"},
      {L"host", L"ost"},
      {L"h", L""},
      {L"scheme://", L""},
      {L"//", L""},
      {L"ipp://host:8631/ipp/print", L"host:8631/ipp/print"},
      {L"a://b//c", L"b//c"},
      {L"///host", L"/host"},
      {L"scheme:/host", L"cheme:/host"},
  };
  for (const auto& row : kCases) {
    status.hosts.clear();
    client.ShowErrorMessageFromDevice(row.uri);
    EXPECT_EQ(status.hosts, Hosts{row.host});
  }
}

TEST_F(DeviceAlerts, WithoutADictionaryNothingHappens) {
  ClientTestPeer::dictionary(client) = nullptr;
  for (const bool shown : {false, true}) {
    client.m_bClientErrorShown = shown;
    client.ShowErrorMessageFromDevice(L"scheme://host");
    client.ShowErrorMessageFromDevice(L"");
    EXPECT_EQ(client.m_bClientErrorShown, shown);
  }
  EXPECT_EQ(status.hosts, Hosts{});
  EXPECT_EQ(platform.calls(), Lines{});
}

TEST_F(DeviceAlerts, EmptyUriIsOutOfRangeOnceTheFlagIsSet) {
  for (const wchar_t* uri : {L"", static_cast<const wchar_t*>(nullptr)}) {
    client.m_bClientErrorShown = false;
    try {
      client.ShowErrorMessageFromDevice(uri);
      FAIL() << "an empty address was taken";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid string position");
    }
    EXPECT_TRUE(client.m_bClientErrorShown);
  }
  EXPECT_EQ(status.hosts, Hosts{});
  EXPECT_EQ(dialogs(), Lines{});
}

TEST_F(DeviceAlerts, DeviceThatDoesNotAnswerGivesOneDialogWithTheTitleAsItsText) {
  status.answers = false;
  status.alerts = {{"media-jam", "error", ""}};
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(platform.calls(), Lines{"Dialog [Title] CommFailureTitle 0x40000"});
  EXPECT_TRUE(client.m_bClientErrorShown);
}

TEST_F(DeviceAlerts, NoAlertsGiveTheGeneralText) {
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(dialogs(), Lines{"Dialog [Title] GeneralError 0x40000"});
  EXPECT_TRUE(client.m_bClientErrorShown);
}

TEST_F(DeviceAlerts, AlertIsToldInTheWordsOfTheModelsFamily) {
  status.alerts = {{"scan-media-path-input-empty", "error", ""}};
  client.m_scanUIData.modelName = "no such model";
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(dialogs(),
            Lines{"Dialog [Title] There is no document in the document feeder. Load your "
                  "document, or lay it on the glass of the scanner, then scan again. 0x40000"});
}

TEST_F(DeviceAlerts, ModelOfTheCatalogueGivesItsFamily) {
  status.alerts = {{"scan-media-path-output-full", "error", ""}};
  client.m_scanUIData.modelName = "Tevra Birch 120 MFP (48:C1)";
  ProductData product;
  client.GetProductData(client.m_scanUIData.modelName, product);
  ASSERT_EQ(product.ControllerFamily, "LOWEND");
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(dialogs(),
            Lines{"Dialog [Title] The output of the automatic document feeder is full. Take "
                  "the scanned pages away, then scan again. 0x40000"});
}

TEST_F(DeviceAlerts, EveryCallAsksAgain) {
  status.answers = false;
  client.ShowErrorMessageFromDevice(L"scheme://host");
  status.answers = true;
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(dialogs(), (Lines{"Dialog [Title] CommFailureTitle 0x40000",
                              "Dialog [Title] GeneralError 0x40000"}));
}

TEST_F(DeviceAlerts, ErrorMessageIsTheDictionarysText) {
  std::vector<AlertStatus> alerts = {{"scan-media-path-output-full", "error", ""}};
  std::wstring message = L"old";
  client.GetErrorMessage(alerts, "HARBOR", message);
  EXPECT_EQ(message,
            L"The output of the document handler is full. Take the scanned pages away, then scan "
            L"again.");
  alerts.clear();
  client.GetErrorMessage(alerts, "HARBOR", message);
  EXPECT_EQ(message, L"");
  EXPECT_EQ(dialogs(), Lines{});
  EXPECT_FALSE(client.m_bClientErrorShown);
}

TEST_F(DeviceAlerts, ErrorMessageWithoutADictionaryStaysAsItIs) {
  ClientTestPeer::dictionary(client) = nullptr;
  std::vector<AlertStatus> alerts = {{"media-jam", "error", ""}};
  std::wstring message = L"old";
  client.GetErrorMessage(alerts, "HARBOR", message);
  EXPECT_EQ(message, L"old");
}

}  // namespace
