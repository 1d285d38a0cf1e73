// The one request of this family that carries a document.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_COMMANDS_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_COMMANDS_H

#include <string>

namespace tvrscn {

// Header and document of a start-scan request, as one write. The protocol counts the bytes of a
// request in 16 bits: of one that is longer only the remainder by 65,536 goes out, under a header
// that still tells the document's full length. REQUIRES: fewer than 65,526 bytes for a request that
// a device can read.
std::string startScanRequest(const std::string& document);

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_COMMANDS_H
