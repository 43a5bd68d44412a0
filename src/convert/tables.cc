#include "convert/tables.h"

#include <algorithm>
#include <atomic>
#include <iterator>

namespace prismo {

constinit Tables tables{};

namespace {

constinit std::atomic<bool> tables_built{false};

uint8_t ToByte(int32_t value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

void FillGrey() {
  uint32_t word = 0xFFFFFFFF;
  for (size_t i = std::size(tables.grey); i-- > 0; word -= 0x010101) tables.grey[i] = word;
}

void FillGreenOffset() {
  int32_t* entry = tables.green_offset;
  for (int32_t a = -128; a < 128; ++a) {
    for (int32_t b = -128; b < 128; ++b) *entry++ = GreenOffset(a, b);
  }
}

void FillRedAndBlue() {
  size_t i = 0;
  for (int32_t chroma = -128; chroma < 128; ++chroma) {
    for (int32_t y = 0; y < 256; ++y, ++i) {
      tables.red_bytes[i] = ToByte(static_cast<int32_t>(1.402 * chroma + y + 0.5));
      tables.red_bgra[i] = static_cast<uint32_t>(tables.red_bytes[i]) << 16 | 0xFF000000;
      tables.blue_bytes[i] = ToByte(static_cast<int32_t>(1.772 * chroma + y + 0.5));
    }
  }
}

void FillGreenClamp() {
  size_t i = 0;
  for (int32_t offset = 0; offset < static_cast<int32_t>(kGreenOffsets); ++offset) {
    for (int32_t y = 0; y < 256; ++y, ++i) {
      tables.green_clamp_bytes[i] = ToByte(256 - offset + y);
      tables.green_clamp_bgra[i] = static_cast<uint32_t>(tables.green_clamp_bytes[i]) << 8;
    }
  }
}

bool FillTables() {
  FillGrey();
  FillGreenOffset();
  FillRedAndBlue();
  FillGreenClamp();
  return true;
}

}  // namespace

// The values never change, so a call that finds them built leaves them alone: conversions on other threads
// may be reading them.
Status PrepareTables() {
  static const bool filled = FillTables();
  tables_built.store(filled, std::memory_order_release);
  settings.lut_ready.store(1, std::memory_order_relaxed);
  return Status::kSuccess;
}

bool TablesBuilt() { return tables_built.load(std::memory_order_acquire); }

}  // namespace prismo
