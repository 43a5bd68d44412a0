#include <functional>
#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "peers.h"

namespace prismo::bench {
namespace {

using Maker = std::function<Step(const Job&)>;

cv::Mat SourceOf(const Job& job, int type) {
  return {static_cast<int>(job.size.height), static_cast<int>(job.size.width), type,
          const_cast<uint8_t*>(job.source)};
}

cv::Mat TargetOf(const Job& job, int type) {
  return {static_cast<int>(job.size.height), static_cast<int>(job.size.width), type, job.target,
          job.target_pitch};
}

// OpenCV quietly allocates a result of its own when the one that it is given does not fit.
void ExpectInPlace(const cv::Mat& target, const Job& job) {
  if (target.data != job.target) throw std::logic_error("OpenCV did not write to the target");
}

Maker Colour(int from, int to, int code) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, from), target = TargetOf(job, to)]() mutable {
      cv::cvtColor(source, target, code);
      ExpectInPlace(target, job);
    };
  };
}

Maker Depth(int from, int to, double scale) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, from), target = TargetOf(job, to)]() mutable {
      source.convertTo(target, CV_MAT_DEPTH(to), scale);
      ExpectInPlace(target, job);
    };
  };
}

// Words to bytes first, then the colours: fewer bytes in the second pass than the other way round.
Maker DepthThenColour(int from, int between, double scale, int to, int code) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, from), bytes = cv::Mat(), target = TargetOf(job, to)]() mutable {
      source.convertTo(bytes, CV_MAT_DEPTH(between), scale);
      cv::cvtColor(bytes, target, code);
      ExpectInPlace(target, job);
    };
  };
}

Maker ColourThenDepth(int from, int code, int to, double scale) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, from), grey = cv::Mat(), target = TargetOf(job, to)]() mutable {
      cv::cvtColor(source, grey, code);
      grey.convertTo(target, CV_MAT_DEPTH(to), scale);
      ExpectInPlace(target, job);
    };
  };
}

Maker ColourTwice(int from, int first, int to, int second) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, from), between = cv::Mat(), target = TargetOf(job, to)]() mutable {
      cv::cvtColor(source, between, first);
      cv::cvtColor(between, target, second);
      ExpectInPlace(target, job);
    };
  };
}

std::vector<cv::Mat> PlanesOf(const Job& job, bool red_first) {
  std::vector<cv::Mat> planes;
  for (size_t i = 0; i < 3; ++i) {
    planes.emplace_back(static_cast<int>(job.size.height), static_cast<int>(job.size.width), CV_8UC1,
                        job.target + (red_first ? 2 - i : i) * job.size.Pixels());
  }
  return planes;
}

Maker Split(bool red_first) {
  return [=](const Job& job) -> Step {
    return [source = SourceOf(job, CV_8UC3), planes = PlanesOf(job, red_first)]() mutable {
      cv::split(source, planes.data());
    };
  };
}

Maker DemosaicThenSplit(int code) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, CV_8UC1), bgr = cv::Mat(), planes = PlanesOf(job, false)]() mutable {
      cv::cvtColor(source, bgr, code);
      cv::split(bgr, planes.data());
    };
  };
}

Maker Flip(int type, int direction) {
  return [=](const Job& job) -> Step {
    return [=, source = SourceOf(job, type), target = TargetOf(job, type)]() mutable {
      cv::flip(source, target, direction);
      ExpectInPlace(target, job);
    };
  };
}

// A parallel loop over as many empty rows, on OpenCV's own pool; with one thread it would not use it.
Step EmptyRows(const Job& job) {
  if (cv::getNumThreads() < 2) return {};
  return [rows = cv::Range(0, static_cast<int>(job.size.height))] {
    cv::parallel_for_(rows, [](const cv::Range&) {});
  };
}

// OpenCV names a mosaic by its second row and column: its BayerBG begins with red and green. Its edge-aware
// demosaic cannot write padded rows.
const std::map<std::string_view, Maker>& Makers() {
  constexpr int kRg2Bgra = cv::COLOR_BayerBG2BGRA;
  constexpr int kRg2Bgr = cv::COLOR_BayerBG2BGR;
  constexpr int kRg2BgrEdgeAware = cv::COLOR_BayerBG2BGR_EA;
  constexpr double k10 = 1 / 4.0, k12 = 1 / 16.0, k16 = 1 / 256.0;
  static const std::map<std::string_view, Maker> makers = {
      {"mono/Mono8/BGRA", Colour(CV_8UC1, CV_8UC4, cv::COLOR_GRAY2BGRA)},
      {"mono/Mono8/BGR", Colour(CV_8UC1, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono8/Pad", Colour(CV_8UC1, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono10/BGRA", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC4, cv::COLOR_GRAY2BGRA)},
      {"mono/Mono10/BGR", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono10/Pad", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono12/BGRA", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC4, cv::COLOR_GRAY2BGRA)},
      {"mono/Mono12/BGR", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono12/Pad", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono16/BGRA", DepthThenColour(CV_16UC1, CV_8U, k16, CV_8UC4, cv::COLOR_GRAY2BGRA)},
      {"mono/Mono16/BGR", DepthThenColour(CV_16UC1, CV_8U, k16, CV_8UC3, cv::COLOR_GRAY2BGR)},
      {"mono/Mono16/Pad", DepthThenColour(CV_16UC1, CV_8U, k16, CV_8UC3, cv::COLOR_GRAY2BGR)},

      {"bilinear/RG8/BGRA", Colour(CV_8UC1, CV_8UC4, kRg2Bgra)},
      {"bilinear/RG8/BGR", Colour(CV_8UC1, CV_8UC3, kRg2Bgr)},
      {"bilinear/RG8/Pad", Colour(CV_8UC1, CV_8UC3, kRg2Bgr)},
      {"bilinear/RG10/BGRA", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC4, kRg2Bgra)},
      {"bilinear/RG10/BGR", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC3, kRg2Bgr)},
      {"bilinear/RG10/Pad", DepthThenColour(CV_16UC1, CV_8U, k10, CV_8UC3, kRg2Bgr)},
      {"bilinear/RG12/BGRA", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC4, kRg2Bgra)},
      {"bilinear/RG12/BGR", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC3, kRg2Bgr)},
      {"bilinear/RG12/Pad", DepthThenColour(CV_16UC1, CV_8U, k12, CV_8UC3, kRg2Bgr)},

      {"adaptive/RG8/BGRA", ColourTwice(CV_8UC1, kRg2BgrEdgeAware, CV_8UC4, cv::COLOR_BGR2BGRA)},
      {"adaptive/RG8/BGR", Colour(CV_8UC1, CV_8UC3, kRg2BgrEdgeAware)},

      {"planes/RG8/planes", DemosaicThenSplit(kRg2Bgr)},
      {"planes/RGB8/planes", Split(true)},
      {"planes/BGR8/planes", Split(false)},

      {"packed/RGB8/BGRA", Colour(CV_8UC3, CV_8UC4, cv::COLOR_RGB2BGRA)},
      {"packed/RGB8/BGR", Colour(CV_8UC3, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/RGB8/Pad", Colour(CV_8UC3, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/RGB10/BGRA", DepthThenColour(CV_16UC3, CV_8U, k10, CV_8UC4, cv::COLOR_RGB2BGRA)},
      {"packed/RGB10/BGR", DepthThenColour(CV_16UC3, CV_8U, k10, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/RGB10/Pad", DepthThenColour(CV_16UC3, CV_8U, k10, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/RGB12/BGRA", DepthThenColour(CV_16UC3, CV_8U, k12, CV_8UC4, cv::COLOR_RGB2BGRA)},
      {"packed/RGB12/BGR", DepthThenColour(CV_16UC3, CV_8U, k12, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/RGB12/Pad", DepthThenColour(CV_16UC3, CV_8U, k12, CV_8UC3, cv::COLOR_RGB2BGR)},
      {"packed/BGR8/BGRA", Colour(CV_8UC3, CV_8UC4, cv::COLOR_BGR2BGRA)},
      {"packed/BGR10/BGRA", DepthThenColour(CV_16UC3, CV_8U, k10, CV_8UC4, cv::COLOR_BGR2BGRA)},
      {"packed/BGR10/BGR", Depth(CV_16UC3, CV_8UC3, k10)},
      {"packed/BGR10/Pad", Depth(CV_16UC3, CV_8UC3, k10)},
      {"packed/BGR12/BGRA", DepthThenColour(CV_16UC3, CV_8U, k12, CV_8UC4, cv::COLOR_BGR2BGRA)},
      {"packed/BGR12/BGR", Depth(CV_16UC3, CV_8UC3, k12)},
      {"packed/BGR12/Pad", Depth(CV_16UC3, CV_8UC3, k12)},
      {"packed/BGRA8/BGR", Colour(CV_8UC4, CV_8UC3, cv::COLOR_BGRA2BGR)},
      {"packed/BGRA8/Pad", Colour(CV_8UC4, CV_8UC3, cv::COLOR_BGRA2BGR)},

      {"yuv/YUV422/BGRA", Colour(CV_8UC2, CV_8UC4, cv::COLOR_YUV2BGRA_UYVY)},
      {"yuv/YUV422/BGR", Colour(CV_8UC2, CV_8UC3, cv::COLOR_YUV2BGR_UYVY)},
      {"yuv/YUV422/Pad", Colour(CV_8UC2, CV_8UC3, cv::COLOR_YUV2BGR_UYVY)},

      {"reduce/Mono10/Mono8", Depth(CV_16UC1, CV_8UC1, k10)},
      {"reduce/Mono12/Mono8", Depth(CV_16UC1, CV_8UC1, k12)},
      {"reduce/Mono16/Mono8", Depth(CV_16UC1, CV_8UC1, k16)},

      {"mirror/Mono8/left-right", Flip(CV_8UC1, 1)},
      {"mirror/Mono8/top-bottom", Flip(CV_8UC1, 0)},
      {"mirror/Mono8/both", Flip(CV_8UC1, -1)},
      {"mirror/Mono12/left-right", Flip(CV_16UC1, 1)},
      {"mirror/Mono12/top-bottom", Flip(CV_16UC1, 0)},
      {"mirror/Mono12/both", Flip(CV_16UC1, -1)},
      {"mirror/RGB8/left-right", Flip(CV_8UC3, 1)},
      {"mirror/RGB8/top-bottom", Flip(CV_8UC3, 0)},
      {"mirror/RGB8/both", Flip(CV_8UC3, -1)},
      {"mirror/RGB12/left-right", Flip(CV_16UC3, 1)},
      {"mirror/RGB12/top-bottom", Flip(CV_16UC3, 0)},
      {"mirror/RGB12/both", Flip(CV_16UC3, -1)},
      {"mirror/YUV422/top-bottom", Flip(CV_8UC2, 0)},

      {"raw/BGR8/Mono8", Colour(CV_8UC3, CV_8UC1, cv::COLOR_BGR2GRAY)},
      {"raw/BGRA8/Mono8", Colour(CV_8UC4, CV_8UC1, cv::COLOR_BGRA2GRAY)},
      {"raw/BGR8/Mono12", ColourThenDepth(CV_8UC3, cv::COLOR_BGR2GRAY, CV_16UC1, 16)},
      {"raw/BGRA8/Mono12", ColourThenDepth(CV_8UC4, cv::COLOR_BGRA2GRAY, CV_16UC1, 16)},
      {"raw/BGR8/RGB8", Colour(CV_8UC3, CV_8UC3, cv::COLOR_BGR2RGB)},
      {"raw/BGRA8/RGB8", Colour(CV_8UC4, CV_8UC3, cv::COLOR_BGRA2RGB)},
      {"raw/BGR8/RGB12", ColourThenDepth(CV_8UC3, cv::COLOR_BGR2RGB, CV_16UC3, 16)},
      {"raw/BGRA8/RGB12", ColourThenDepth(CV_8UC4, cv::COLOR_BGRA2RGB, CV_16UC3, 16)},

      {"engine/rows/none", EmptyRows},
  };
  return makers;
}

Step Make(std::string_view conversion, const Job& job, int threads) {
  const auto maker = Makers().find(conversion);
  if (maker == Makers().end()) return {};
  cv::setNumThreads(threads);
  return maker->second(job);
}

}  // namespace

PeerLibrary OpenCvPeer() {
  PeerLibrary library{"OpenCV", CV_VERSION, Make, {}};
  for (const auto& [conversion, maker] : Makers()) library.conversions.push_back(conversion);
  return library;
}

}  // namespace prismo::bench
