#include "client/fatal_fault.h"

#include <cstdio>
#include <cstdlib>

void tvrscn::endAtFault(const char* message) {
  std::fprintf(stderr, "tvrscn_USBClient: %s\n", message);
  std::abort();
}
