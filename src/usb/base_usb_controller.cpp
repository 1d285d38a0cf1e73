// Life of the common controller state. The handles are opened in endpoint_search.cpp.
#include "tvrscn/usb_controller.h"

#include <algorithm>
#include <new>

#include "platform/device_file.h"
#include "platform/device_setup.h"
#include "platform/files.h"
#include "platform/identity_text.h"
#include "platform/modules.h"
#include "usb/log_writer.h"

namespace {

// Every job of every process takes this one lock.
constexpr const wchar_t* kJobMutexName = L"MutexUSB";

// The device-setup service always comes from the system folder, never from the search path of the
// host process.
std::wstring setupApiPath() {
  wchar_t folder[MAX_PATH] = {};
  // Asked twice on purpose: the first call may only create the folder.
  SHGetFolderPathW(nullptr, CSIDL_SYSTEM | CSIDL_FLAG_CREATE, nullptr, 0, folder);
  SHGetFolderPathW(nullptr, CSIDL_SYSTEM | CSIDL_FLAG_CREATE, nullptr, 0, folder);
  folder[MAX_PATH - 1] = L'\0';

  std::wstring path = std::wstring(folder) + tvrscn::kPathSeparator + L"setupapi.dll";
  if (path.size() >= MAX_PATH) path.resize(MAX_PATH - 1);
  return path;
}

// As a plain function, which is what the system means by its own result type.
using AnyFunction = void (*)();

AnyFunction find(HMODULE module, const char* name) {
  return reinterpret_cast<AnyFunction>(GetProcAddress(module, name));
}

}  // namespace

BaseUSBController::BaseUSBController()
    : m_pMutex(nullptr),
      m_reservedClientID(0),
      m_ecpCommandId(0),
      m_bRetryCommand(false),
      m_bReleaseInfo(false),
      m_bJobCancelled(false),
      m_bImageNotified(false),
      m_hDeviceWrite(INVALID_HANDLE_VALUE),
      m_hDeviceRead(INVALID_HANDLE_VALUE),
      m_pCallback(nullptr),
      m_bUsingTevraUI(true),
      m_bErrorShown(false),
      m_pfnSetupDiGetClassDevsW(nullptr),
      m_pfnSetupDiEnumDeviceInfo(nullptr),
      m_pfnSetupDiGetDeviceInstanceIdW(nullptr),
      m_pfnSetupDiDestroyDeviceInfoList(nullptr),
      m_pfnSetupDiEnumDeviceInterfaces(nullptr),
      m_pfnSetupDiGetDeviceInterfaceDetailW(nullptr),
      m_pfnSetupDiGetDeviceRegistryPropertyW(nullptr),
      m_hSetupApi(LoadLibraryW(setupApiPath().c_str())) {
  tvrscn::fetchLogInstance();
  if (m_hSetupApi == nullptr) return;

  m_pfnSetupDiGetClassDevsW =
      reinterpret_cast<PfnSetupDiGetClassDevsW>(find(m_hSetupApi, "SetupDiGetClassDevsW"));
  m_pfnSetupDiEnumDeviceInfo =
      reinterpret_cast<PfnSetupDiEnumDeviceInfo>(find(m_hSetupApi, "SetupDiEnumDeviceInfo"));
  m_pfnSetupDiGetDeviceInstanceIdW = reinterpret_cast<PfnSetupDiGetDeviceInstanceIdW>(
      find(m_hSetupApi, "SetupDiGetDeviceInstanceIdW"));
  m_pfnSetupDiDestroyDeviceInfoList = reinterpret_cast<PfnSetupDiDestroyDeviceInfoList>(
      find(m_hSetupApi, "SetupDiDestroyDeviceInfoList"));
  m_pfnSetupDiEnumDeviceInterfaces = reinterpret_cast<PfnSetupDiEnumDeviceInterfaces>(
      find(m_hSetupApi, "SetupDiEnumDeviceInterfaces"));
  m_pfnSetupDiGetDeviceInterfaceDetailW = reinterpret_cast<PfnSetupDiGetDeviceInterfaceDetailW>(
      find(m_hSetupApi, "SetupDiGetDeviceInterfaceDetailW"));
  m_pfnSetupDiGetDeviceRegistryPropertyW = reinterpret_cast<PfnSetupDiGetDeviceRegistryPropertyW>(
      find(m_hSetupApi, "SetupDiGetDeviceRegistryPropertyW"));
}

BaseUSBController::~BaseUSBController() {
  if (m_hDeviceWrite != INVALID_HANDLE_VALUE) CloseHandle(m_hDeviceWrite);
  if (m_hDeviceRead != INVALID_HANDLE_VALUE) CloseHandle(m_hDeviceRead);
  if (m_hSetupApi != nullptr) FreeLibrary(m_hSetupApi);
  delete m_pMutex;
}

void BaseUSBController::InitExceptionStrings(std::shared_ptr<CErrorCodeDictionary>& dictionary) {
  m_pErrorDictionary = dictionary;
}

XMutex* BaseUSBController::GetMutexPtr() {
  if (m_pMutex == nullptr) m_pMutex = new (std::nothrow) XMutex(kJobMutexName);
  return m_pMutex;
}

std::wstring BaseUSBController::ConvertStringToWstring(std::string text) {
  const int length = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
  if (length <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), length);
  wide.resize(std::min(wide.size(), wide.find(L'\0')));
  return wide;
}

bool BaseUSBController::getJobCancelled() {
  return m_bJobCancelled;
}
void BaseUSBController::setJobCancelled(bool cancelled) {
  m_bJobCancelled = cancelled;
}
bool BaseUSBController::getReleaseInfo() {
  return m_bReleaseInfo;
}
void BaseUSBController::setReleaseInfo(bool release) {
  m_bReleaseInfo = release;
}
void BaseUSBController::setRetryCommand(bool retry) {
  m_bRetryCommand = retry;
}
bool BaseUSBController::getRetryCommand() {
  return m_bRetryCommand;
}
unsigned char BaseUSBController::getECPCommandId() {
  return m_ecpCommandId;
}
unsigned char BaseUSBController::getReservedClientID() {
  return m_reservedClientID;
}
