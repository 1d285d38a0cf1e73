// What prepareStreams changed, put back.
#ifndef TVRSCN_TOOLS_TVRSCAN_WINDOWS_STREAMS_H
#define TVRSCN_TOOLS_TVRSCAN_WINDOWS_STREAMS_H

namespace tvrscn::cli {

void restoreStreams();

}  // namespace tvrscn::cli

#endif  // TVRSCN_TOOLS_TVRSCAN_WINDOWS_STREAMS_H
