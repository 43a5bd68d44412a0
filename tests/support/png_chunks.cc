#include "support/png_chunks.h"

#include <algorithm>
#include <span>

namespace prismo::test {
namespace {

uint32_t Crc(std::span<const uint8_t> bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

uint32_t Adler(std::span<const uint8_t> bytes) {
  uint32_t a = 1, b = 0;
  for (const uint8_t byte : bytes) {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  return b << 16 | a;
}

void StoreBigEndian(uint8_t* out, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) *out++ = static_cast<uint8_t>(value >> shift);
}

void AppendBigEndian(Bytes& out, uint32_t value) {
  out.resize(out.size() + 4);
  StoreBigEndian(&out[out.size() - 4], value);
}

uint32_t LoadBigEndian(const uint8_t* in) {
  return uint32_t{in[0]} << 24 | uint32_t{in[1]} << 16 | uint32_t{in[2]} << 8 | in[3];
}

}  // namespace

void AppendPngChunk(Bytes& file, std::string_view name, const Bytes& content) {
  AppendBigEndian(file, static_cast<uint32_t>(content.size()));
  file.insert(file.end(), name.begin(), name.end());
  file.insert(file.end(), content.begin(), content.end());
  AppendBigEndian(file, Crc(std::span(file).last(name.size() + content.size())));
}

void RepairPngChecksums(Bytes& file) {
  if (!std::ranges::equal(std::span(file).first(std::min(file.size(), kPngSignature.size())), kPngSignature,
                          {}, {}, [](char c) { return static_cast<uint8_t>(c); })) {
    return;
  }
  constexpr size_t kLengthAndName = 8, kChecksum = 4;
  for (size_t at = kPngSignature.size(); file.size() - at >= kLengthAndName + kChecksum;) {
    const uint32_t length = LoadBigEndian(&file[at]);
    if (length > file.size() - at - kLengthAndName - kChecksum) return;
    const size_t end = at + kLengthAndName + length;
    StoreBigEndian(&file[end], Crc(std::span(file).subspan(at + 4, 4 + size_t{length})));
    at = end + kChecksum;
  }
}

Bytes StoredZlibStream(const Bytes& rows) {
  const auto length = static_cast<uint16_t>(rows.size());
  const auto inverse = static_cast<uint16_t>(~length);
  Bytes stream{0x78, 0x01, 0x01};  // a small window, then one last block that is stored
  for (const uint16_t word : {length, inverse}) {
    stream.push_back(static_cast<uint8_t>(word));
    stream.push_back(static_cast<uint8_t>(word >> 8));
  }
  stream.insert(stream.end(), rows.begin(), rows.end());
  AppendBigEndian(stream, Adler(rows));
  return stream;
}

}  // namespace prismo::test
