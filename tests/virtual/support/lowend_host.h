// A LowEnd host in memory: its requests, and a plain model of what hosts make of an image stream.
#ifndef TVRSCN_TESTS_VIRTUAL_SUPPORT_LOWEND_HOST_H
#define TVRSCN_TESTS_VIRTUAL_SUPPORT_LOWEND_HOST_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tvrscn::virtual_device::testing {

using TransferBytes = std::vector<std::uint8_t>;

inline const TransferBytes kCapabilityRequest = {0x1B, 0x4E, 0x03, 0x00, 0x00,
                                                 0x00, 0x00, 0x00, 0x80, 0x00};
inline const TransferBytes kStatusRequest = {0x1B, 0x4E, 0x04, 0x00, 0x00,
                                             0x00, 0x00, 0x00, 0x80, 0x00};
inline const TransferBytes kAbortRequest = {0x1B, 0x4E, 0x0F, 0x00, 0x00,
                                            0x00, 0x00, 0x00, 0x80, 0x00};

// Key and value of each field, the value as it stands in JSON.
using Fields = std::map<std::string, std::string>;
// From the flatbed at 75 dpi, in a custom size of 1 by 2 inches: 75 by 150 dots.
Fields colorFields();
Fields bilevelFields();
Fields with(Fields fields, const std::string& key, const std::string& value);
Fields without(Fields fields, const std::string& key);
std::string jsonOf(const Fields& fields);

// The whole request of a scan, header and document.
TransferBytes startRequest(const std::string& document);
TransferBytes startRequest(const Fields& fields);

// The document behind an answer's header.
std::string documentOf(const TransferBytes& answer);

// What a host makes of the transfers of a job. It knows no more than the markers.
class StreamModel {
 public:
  explicit StreamModel(const std::vector<TransferBytes>& transfers);

  bool hasEnded() const { return hasEnded_; }
  bool isCancelled() const { return isCancelled_; }
  const std::vector<std::string>& records() const { return records_; }
  // The image files, freed of all markers.
  std::vector<TransferBytes> files() const;

 private:
  void take(const TransferBytes& transfer);

  std::vector<std::string> records_;
  bool hasEnded_ = false;
  bool isCancelled_ = false;
};

}  // namespace tvrscn::virtual_device::testing

#endif  // TVRSCN_TESTS_VIRTUAL_SUPPORT_LOWEND_HOST_H
