// How finely a JPEG file is quantised, which the system's imaging library does not tell.
#ifndef TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_JPEG_QUALITY_H
#define TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_JPEG_QUALITY_H

#include <string>

namespace tvrscn::imaging {

// The least quality, 75 to 100, at which nothing of the file is quantised more coarsely than it is
// now. 75 for a file without tables, 100 where none is fine enough.
int jpegQuality(const std::wstring& path);

}  // namespace tvrscn::imaging

#endif  // TVRSCN_PLATFORM_TEVRAUTIL_WINDOWS_JPEG_QUALITY_H
