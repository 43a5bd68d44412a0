#include "peers.h"

namespace prismo::bench {

std::span<const PeerLibrary> PeerLibraries() {
  static const std::vector<PeerLibrary> libraries = {
#if PRISMO_BENCH_OPENCV
    OpenCvPeer(),
#endif
#if PRISMO_BENCH_LIBYUV
    LibyuvPeer(),
#endif
#if PRISMO_BENCH_SWSCALE
    SwscalePeer(),
#endif
    TurboJpegPeer(),
  };
  return libraries;
}

std::string DescribePeers() {
  std::string text;
  for (const PeerLibrary& library : PeerLibraries()) {
    text += (text.empty() ? "" : ", ") + std::string(library.name) + ' ' + library.version;
  }
  if (text.empty()) text = "none";
  const std::string left_out = PRISMO_BENCH_MISSING_PEERS;
  return left_out.empty() ? text : text + "; not there when this was built: " + left_out;
}

}  // namespace prismo::bench
