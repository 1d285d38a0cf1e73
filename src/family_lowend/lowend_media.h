// Codes of the scan request that the request and the choice of the media share.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_MEDIA_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_MEDIA_H

namespace tvrscn {

// "scanSource". Whatever is not the feeder is the flatbed.
constexpr int kScanSourceFeeder = 0;
constexpr int kScanSourceFlatbed = 7;

// "mediaSize" of a size in dots.
constexpr unsigned short kCustomMedia = 20;

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_MEDIA_H
