// Other libraries that do the same conversions. Which of them there are is settled when the build is
// configured.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "conversions.h"
#include "race.h"

namespace prismo::bench {

struct PeerLibrary {
  const char* name;
  std::string version;
  // The conversion of this name on this job and this many threads; an empty function when the library has
  // none.
  Step (*make)(std::string_view conversion, const Job& job, int threads);
  std::vector<std::string_view> conversions;
};

std::span<const PeerLibrary> PeerLibraries();

// One line: names, versions and what was left out.
std::string DescribePeers();

PeerLibrary OpenCvPeer();
PeerLibrary LibyuvPeer();
PeerLibrary SwscalePeer();
PeerLibrary TurboJpegPeer();

}  // namespace prismo::bench
