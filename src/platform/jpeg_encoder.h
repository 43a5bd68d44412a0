// The platform's JPEG encoder: a picture, and the encoder context that it lives in.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "core/frame.h"
#include "core/status.h"

namespace prismo::platform {

class JpegEncoder {
 public:
  // For the caller's own pixels: packed rows of kBgr or kBgra, as they are at the time of Save.
  JpegEncoder(const void* pixels, Layout layout, FrameSize size);

  // For a picture of its own, to be filled between Lock and Unlock.
  explicit JpegEncoder(FrameSize size);

  ~JpegEncoder();

  // The picture as packed BGRA rows; null when there is no memory for it. Who still writes to it when the
  // encoder has gone has to share in it.
  std::shared_ptr<void> Lock();
  void Unlock();

  // The picture could not be filled: leaves open what has to stay open then on this platform.
  void Abandon();

  // Writes the file, with the encoder's default quality if none is given.
  Status Save(const char* path, std::optional<uint32_t> quality);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace prismo::platform
