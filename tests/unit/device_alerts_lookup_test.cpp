// A program of its own: the catalogue is built at its first use in a process, and whether that came
// is told by the memory for its rows, which cannot be had here.
#include <cstddef>
#include <new>

#include <gtest/gtest.h>

#include "tests/support/allocation.h"
#include "tests/support/fake_status_library.h"
#include "tests/support/platform_test.h"
#include "tvrscn/scan_client.h"

namespace {

using tvrscn::test::RefusedAllocations;

constexpr std::size_t kCatalogueSize = 90 * sizeof(ProductData);

class DeviceAlertsLookup : public tvrscn::test::PlatformTest {};

TEST_F(DeviceAlertsLookup, ModelIsLookedUpOnlyWhenTheDeviceAnswered) {
  tvrscn::test::FakeStatusLibrary status;
  ScanBaseClient client;
  ClientTestPeer::dictionary(client) = tvrscn::test::namedDictionary();
  const RefusedAllocations refused(kCatalogueSize, kCatalogueSize);
  status.answers = false;
  client.ShowErrorMessageFromDevice(L"scheme://host");
  EXPECT_EQ(RefusedAllocations::count(), 0);
  status.answers = true;
  EXPECT_THROW(client.ShowErrorMessageFromDevice(L"scheme://host"), std::bad_alloc);
  EXPECT_EQ(RefusedAllocations::count(), 1);
  EXPECT_EQ(status.clients, 0);
}

}  // namespace
