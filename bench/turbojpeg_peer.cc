// The encoder that the library's JPEG files come from on this system, without the library.
#include <turbojpeg.h>

#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "PrismoUtl.h"
#include "files.h"
#include "peers.h"

namespace prismo::bench {
namespace {

const std::map<std::string_view, TJPF>& LayoutsOf() {
  static const std::map<std::string_view, TJPF> layouts = {{"file/BGRA8/jpeg90", TJPF_BGRX},
                                                           {"file/BGR8/jpeg90", TJPF_BGR}};
  return layouts;
}

// Into memory and from there into the file, 4:2:0.
Step Make(std::string_view conversion, const Job& job, int) {
  const auto found = LayoutsOf().find(conversion);
  if (found == LayoutsOf().end()) return {};
  const auto width = static_cast<int>(job.size.width);
  const auto height = static_cast<int>(job.size.height);
  const auto jpeg = std::make_shared<std::vector<uint8_t>>(tjBufSize(width, height, TJSAMP_420));
  const std::shared_ptr<void> encoder(tjInitCompress(), tjDestroy);
  return [=, layout = found->second, source = job.source, path = job.path] {
    uint8_t* out = jpeg->data();
    unsigned long bytes = jpeg->size();
    if (tjCompress2(encoder.get(), source, width, 0, height, layout, &out, &bytes, TJSAMP_420,
                    static_cast<int>(kJpegQuality), TJFLAG_NOREALLOC) != 0) {
      throw std::runtime_error(tjGetErrorStr2(encoder.get()));
    }
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(out), static_cast<std::streamsize>(bytes));
  };
}

}  // namespace

PeerLibrary TurboJpegPeer() {
  PeerLibrary library{"TurboJPEG", PRISMO_BENCH_TURBOJPEG_VERSION, Make, {}};
  for (const auto& [conversion, layout] : LayoutsOf()) library.conversions.push_back(conversion);
  return library;
}

}  // namespace prismo::bench
