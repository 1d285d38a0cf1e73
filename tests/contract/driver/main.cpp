// A driver as others write it: compiled apart from the libraries, from the installed package alone.
// It makes each exported class and calls each public operation while no device is there.
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>

#include "check.h"

namespace {

int checked = 0;
int failed = 0;

}  // namespace

const char* const kAbsentDevice = "VID_0000&PID_FFFF&MI_00";

void check(bool holds, const char* condition, const char* file, int line) {
  ++checked;
  if (holds) return;
  ++failed;
  std::printf("%s:%d: does not hold: %s\n", file, line, condition);
}

std::wstring wide(const std::string& path) {
  return {path.begin(), path.end()};
}

std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TevraScanUIData smallJob() {
  TevraScanUIData job;
  job.mediaSize = "ISO_A6SEF";
  job.pageWidth = 105;
  job.pageHeight = 148;
  job.sides = "OneSided";
  job.resolution = "75x75";
  job.colorMode = "FullColor";
  job.brightness = L"0";
  job.contrast = L"0";
  job.backgroundRemoval = L"Off";
  return job;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::printf("usage: contract_driver FOLDER\n");
    return 2;
  }
  try {
    const std::string folder = argv[1];
    checkLayout();
    checkClients(folder);
    checkControllers();
    checkExceptions();
    checkSettingsSources(folder);
    checkSiblings(folder);
    checkQZClient(folder);
  } catch (const std::exception& error) {
    std::printf("an exception came out of an operation that throws none: %s\n", error.what());
    ++failed;
  }
  std::printf("%d checked, %d failed\n", checked, failed);
  return failed == 0 ? 0 : 1;
}
