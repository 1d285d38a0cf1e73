// Fake of the status library's client.
#include "tests/support/fake_status_library.h"
#include "tvrscn/tdspclient/scan_tdsp_client.h"

namespace tvrscn::test {
namespace {
FakeStatusLibrary* g_current = nullptr;
}  // namespace

FakeStatusLibrary::FakeStatusLibrary() {
  g_current = this;
}

FakeStatusLibrary::~FakeStatusLibrary() {
  g_current = nullptr;
}

FakeStatusLibrary* FakeStatusLibrary::currentOrNull() {
  return g_current;
}

}  // namespace tvrscn::test

using tvrscn::test::FakeStatusLibrary;

CScanTDSPClient::CScanTDSPClient() {
  if (FakeStatusLibrary* library = FakeStatusLibrary::currentOrNull()) ++library->clients;
}

CScanTDSPClient::~CScanTDSPClient() {
  if (FakeStatusLibrary* library = FakeStatusLibrary::currentOrNull()) --library->clients;
}

bool CScanTDSPClient::GetDeviceStatus(const wchar_t* host, std::vector<AlertStatus>& alerts) {
  FakeStatusLibrary* const library = FakeStatusLibrary::currentOrNull();
  if (library == nullptr) return false;
  library->hosts.emplace_back(host);
  if (library->answers) alerts = library->alerts;
  return library->answers;
}
