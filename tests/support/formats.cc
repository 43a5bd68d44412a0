#include "support/formats.h"

#include "PrismoUtl.h"

namespace prismo::test {

const std::vector<NamedFormat>& AllFormats() {
  static const std::vector<NamedFormat> formats{
      {"Mono8", PRISMO_MONO8},
      {"Mono10", PRISMO_MONO10},
      {"Mono12", PRISMO_MONO12},
      {"Mono16", PRISMO_MONO16},
      {"BayerGR8", PRISMO_BAYER_GR8},
      {"BayerRG8", PRISMO_BAYER_RG8},
      {"BayerGB8", PRISMO_BAYER_GB8},
      {"BayerBG8", PRISMO_BAYER_BG8},
      {"BayerGR10", PRISMO_BAYER_GR10},
      {"BayerRG10", PRISMO_BAYER_RG10},
      {"BayerGB10", PRISMO_BAYER_GB10},
      {"BayerBG10", PRISMO_BAYER_BG10},
      {"BayerGR12", PRISMO_BAYER_GR12},
      {"BayerRG12", PRISMO_BAYER_RG12},
      {"BayerGB12", PRISMO_BAYER_GB12},
      {"BayerBG12", PRISMO_BAYER_BG12},
      {"RGB8", PRISMO_RGB8},
      {"BGR8", PRISMO_BGR8},
      {"RGB10", PRISMO_RGB10},
      {"BGR10", PRISMO_BGR10},
      {"RGB12", PRISMO_RGB12},
      {"BGR12", PRISMO_BGR12},
      {"YUV411_8_UYYVYY", PRISMO_YUV411},
      {"YUV422_8_UYVY", PRISMO_YUV422},
      {"YUV8_UYV", PRISMO_YUV444},
      {"BGRA8", PRISMO_BGRA8},
      {"BGRA10", PRISMO_BGRA10},
      {"BGR8PadVexo", PRISMO_BGR8_PADDED},
      {"Mono8Pad", PRISMO_MONO8_PADDED},
  };
  return formats;
}

size_t BytesOfRow(uint32_t code, uint32_t width) {
  const size_t bytes = size_t{code >> 16 & 0xFF} * width / 8;
  const bool padded = code == PRISMO_BGR8_PADDED || code == PRISMO_MONO8_PADDED;
  return padded ? (bytes + 3) / 4 * 4 : bytes;
}

}  // namespace prismo::test
