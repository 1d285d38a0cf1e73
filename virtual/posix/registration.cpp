// The entry is written beside its place and moved there, so that a search never sees half of it.
#include "virtual/posix/registration.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include <unistd.h>

namespace tvrscn::virtual_device {
namespace {

// Class of the driver key that a search reads; the device's name behind it makes the key its own.
constexpr char kDriverClass[] = "{6BDD1FC6-810F-11D0-BEC7-08002BE2092F}";

bool isOneLine(const std::string& text) {
  return !text.empty() && text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos;
}

void check(const Placement& placement) {
  if (!isOneLine(placement.name) || placement.name.find('/') != std::string::npos) {
    throw std::runtime_error("'" + placement.name +
                             "' cannot be a device's name; give a plain file name");
  }
  if (!isOneLine(placement.instanceId) || !isOneLine(placement.socket.string())) {
    throw std::runtime_error("the instance id and the socket's path of the virtual device " +
                             placement.name + " must be single lines of text");
  }
}

}  // namespace

Registration::Registration(const Placement& placement) {
  check(placement);
  std::error_code error;
  std::filesystem::create_directories(placement.deviceFolder, error);
  file_ = placement.deviceFolder / (placement.name + ".device");
  const std::filesystem::path draft =
      placement.deviceFolder / ("." + placement.name + "." + std::to_string(getpid()) + ".draft");
  std::ofstream out(draft, std::ios::binary | std::ios::trunc);
  out << "InstanceId=" << placement.instanceId << '\n'
      << "Driver=" << kDriverClass << '\\' << placement.name << '\n'
      << "CreateFileName=unix:" << placement.socket.string() << '\n';
  out.close();
  if (out) std::filesystem::rename(draft, file_, error);
  if (!out || error) {
    std::error_code ignored;
    std::filesystem::remove(draft, ignored);
    throw std::runtime_error("cannot register the virtual device in the folder " +
                             placement.deviceFolder.string() +
                             "; give a device folder that can be written");
  }
}

Registration::~Registration() {
  std::error_code ignored;
  std::filesystem::remove(file_, ignored);
}

}  // namespace tvrscn::virtual_device
