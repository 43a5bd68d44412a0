#include "fuzz/seeds.h"

#include <array>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "PrismoUtl.h"
#include "fuzz/conversion_fuzz.h"
#include "mp/log_file.h"
#include "mp/log_functions.h"
#include "support/generators.h"
#include "support/png_chunks.h"

namespace prismo::test {
namespace {

Bytes BytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes Words(std::initializer_list<uint32_t> words) {
  Bytes bytes;
  for (const uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<uint8_t>(word >> shift));
  }
  return bytes;
}

Bytes Ramp(size_t count) {
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(7 * i);
  return bytes;
}

Bytes RawFrame(uint32_t format, uint32_t width, uint32_t height, uint32_t row_bytes) {
  return Words({format, width, height, row_bytes}) + Ramp(size_t{row_bytes} * height);
}

std::vector<Bytes> RawFrames() {
  return {RawFrame(PRISMO_MONO8, 4, 4, 4),
          RawFrame(PRISMO_BAYER_RG8, 8, 8, 8),
          RawFrame(PRISMO_BAYER_BG12, 4, 4, 8),
          RawFrame(PRISMO_RGB8, 3, 2, 9),
          RawFrame(PRISMO_YUV422, 4, 2, 8),
          RawFrame(PRISMO_BGR8_PADDED, 3, 2, 12),
          Words({PRISMO_MONO8, 0x10000, 0x10000, 0x10000}),  // 2^32 bytes: 0 in 32 bits
          Words({PRISMO_MONO8, 4, 4})};                      // not even a header
}

// The records are those of a submitter and a worker, in the order of a pool that is used as it should be: the
// story of a conversion, of a work that is given up, of one that fails.
Bytes SavedLog(const std::vector<mp::LogRecord>& records, int64_t frequency = 10'000'000) {
  const mp::LogFileHeaderBytes header =
      mp::EncodeLogHeader({.version = {1, 0, 0},
                           .date = {.year = 2030, .month = 1, .day = 2, .hour = 3, .minute = 4, .second = 5},
                           .cores = 2,
                           .frequency = frequency,
                           .base_stamp = 1000,
                           .record_count = static_cast<uint32_t>(records.size())});
  Bytes log(header.begin(), header.end());
  for (const mp::LogRecord& record : records) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
    log.insert(log.end(), bytes, bytes + sizeof(record));
  }
  return log;
}

std::vector<mp::LogRecord> StoryOfAWork(uint32_t work, bool given_up) {
  using enum mp::LogFunction;
  using enum mp::LogKind;
  constexpr uint32_t kSubmitter = 0x111, kWorker = 0x222, kFirstRow = 0, kRows = 64;
  std::vector<mp::LogRecord> records;
  uint64_t stamp = 1000;
  const auto add = [&](uint32_t thread, mp::LogFunction function, mp::LogKind kind, uint32_t id,
                       const std::array<uint32_t, 8>& arguments) {
    records.push_back({.stamp = stamp += 1000,
                       .function = static_cast<uint32_t>(function),
                       .level = kind == kError ? 3u : 1u,
                       .thread_id = thread,
                       .work_id = id,
                       .kind = static_cast<uint32_t>(kind),
                       .arguments = arguments});
  };
  add(kSubmitter, kByrRG8ToBGRA_MP, kStarted, 0, {});
  add(kSubmitter, kManagerExecWork, kStarted, work, {1, 0xABC, kFirstRow, kFirstRow + kRows - 1});
  add(kSubmitter, kManagerAppendWork, kStep1, work, {0xABC, kFirstRow, kFirstRow + kRows - 1, 2});
  add(kWorker, kWorkTryAccess, kFinished, work, {1, 1});
  add(kWorker, kBGGR8ToBGRA_WK, kStarted, work, {1, 64, 64});
  add(kWorker, kWorkGetWork, kStarted, work, {1, 2, 1});
  add(kWorker, kWorkGetWork, kFinished, work, {kFirstRow, kRows / 2, 1, 1});
  if (given_up) add(kSubmitter, kManagerExecWork, kError, work, {1, 0xABC, kFirstRow, kFirstRow + kRows - 1});
  add(kWorker, kWorkGetWork, kStarted, work, {0, 1, 1});
  add(kWorker, kWorkGetWork, kFinished, work, {0, 0, 0, 0});
  add(kSubmitter, kManagerExecWork, kFinished, work, {1, 0xABC, 0, 63, given_up ? 0xC0000002u : 0u});
  if (given_up) add(kWorker, kManagerExecFunc, kStep3, work, {});
  return records;
}

std::vector<Bytes> SavedLogs() {
  std::vector<mp::LogRecord> everything;
  for (uint32_t function = 0; function < 345; ++function) {
    for (uint32_t kind = 0; kind < 8; ++kind) {
      everything.push_back({.stamp = 1000 + everything.size(),
                            .function = function,
                            .level = kind % 5,
                            .thread_id = 1,
                            .kind = kind,
                            .arguments = {1, 2, 3, 4, 5, 6, 7, 8}});
    }
  }
  std::vector<mp::LogRecord> several = StoryOfAWork(1, false);
  for (const mp::LogRecord& record : StoryOfAWork(2, true)) several.push_back(record);
  Bytes lying = SavedLog(StoryOfAWork(1, false));
  lying.resize(lying.size() - 100);
  // The last row of a block beyond 2^31.
  std::vector<mp::LogRecord> far = StoryOfAWork(3, true);
  for (mp::LogRecord& record : far) {
    if (record.arguments[1] == 32) record.arguments = {0x7FFFFFFF, 0x7FFFFFFF, 1, 1};
  }
  return {SavedLog({}),
          SavedLog(StoryOfAWork(1, false)),
          SavedLog(StoryOfAWork(1, true)),
          SavedLog(several),
          SavedLog(far),
          SavedLog(far, 1),
          SavedLog(everything),
          lying};
}

std::vector<Bytes> LogTexts() {
  std::vector<Bytes> seeds;
  for (const uint8_t level : {uint8_t{0}, uint8_t{3}}) {
    for (const Bytes& log : SavedLogs()) seeds.push_back(Bytes{level} + log);
  }
  return seeds;
}

std::vector<Bytes> Configurations() {
  return {BytesOf("PrismoUtl: PATH=/var/log/frames\n"),
          BytesOf("// PrismoUtl: FATAL\nPrismoUtl: SaveOnError, NoTerminationLog, ERROR, Size4, \r\n"),
          BytesOf("PrismoUtl:DEBUG,Size9,PATH=\"C:\\logs\\\"\r\n"),
          BytesOf("PrismoUtl"),
          BytesOf("PrismoUtl:PATH="),
          BytesOf(std::string(254, 'x') + "PrismoUtl: WARN\n"),
          BytesOf("Other: INFO\nPrismoUtl: PATH=" + std::string(300, 'y') + "\nPrismoUtl: INFO")};
}

// Every function with a frame that fills vectors, and with one that does not; the bytes choose the rest.
std::vector<Bytes> Conversions() {
  std::vector<Bytes> seeds;
  Random random(9);
  for (size_t function = 0; function < FuzzConversion::Names().size(); ++function) {
    const auto place = static_cast<uint8_t>(function);
    seeds.push_back(FuzzConversion::StartOf(function, place, 64, 12) + RandomBytes(80, random));
    seeds.push_back(FuzzConversion::StartOf(function, place, 37, 5) + RandomBytes(80, random));
  }
  return seeds;
}

struct BmpKind {
  uint32_t bits = 24;
  uint32_t info_bytes = 40;
  bool top_down = false;
  uint32_t colours = 0;  // stated in the header; 0 stands for all 256
  bool grey = true;
};

Bytes Bmp(uint32_t width, uint32_t height, const BmpKind& kind) {
  const size_t colours = kind.bits == 8 ? (kind.colours ? kind.colours : 256) : 0;
  const size_t row_bytes = (width * kind.bits / 8 + 3) / 4 * 4;
  const auto offset = static_cast<uint32_t>(14 + kind.info_bytes + 4 * colours);
  Bytes info = Words({kind.info_bytes, width, kind.top_down ? 0 - height : height, 1 | kind.bits << 16, 0,
                      static_cast<uint32_t>(row_bytes * height), 2835, 2835, kind.colours, 0});
  info.resize(kind.info_bytes);
  for (uint32_t i = 0; i < colours; ++i) info = info + Words({kind.grey ? i * 0x010101 : i * 0x03050B});
  return BytesOf("BM") + Words({static_cast<uint32_t>(offset + row_bytes * height), 0, offset}) + info +
         Ramp(row_bytes * height);
}

struct PngKind {
  uint8_t depth = 8;
  uint8_t colour_type = 2;
  bool interlaced = false;
};

Bytes Png(uint8_t width, uint8_t height, const PngKind& kind) {
  constexpr uint8_t kPalette = 3;
  const unsigned samples = std::array{1, 0, 3, 1, 2, 0, 4}.at(kind.colour_type);
  const size_t row_bytes = (size_t{width} * samples * kind.depth + 7) / 8;
  Bytes rows;
  for (uint8_t y = 0; y < height; ++y) rows = rows + Bytes{static_cast<uint8_t>(y % 5)} + Ramp(row_bytes);
  // Seven passes have more rows, all of which are black and without a filter here.
  if (kind.interlaced) rows = Bytes(2 * rows.size());
  Bytes file = BytesOf(kPngSignature);
  AppendPngChunk(file, "IHDR",
                 {0, 0, 0, width, 0, 0, 0, height, kind.depth, kind.colour_type, 0, 0, kind.interlaced});
  if (kind.colour_type == kPalette) AppendPngChunk(file, "PLTE", Ramp(3 * (size_t{1} << kind.depth)));
  if (kind.colour_type <= kPalette) AppendPngChunk(file, "tRNS", Bytes(kind.colour_type == 2 ? 6 : 2));
  AppendPngChunk(file, "IDAT", StoredZlibStream(rows));
  AppendPngChunk(file, "IEND", {});
  return file;
}

std::vector<Bytes> Pictures() {
  Bytes short_bmp = Bmp(4, 4, {});
  short_bmp.pop_back();
  Bytes huge_png = BytesOf(kPngSignature);
  AppendPngChunk(huge_png, "IHDR", {0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 8, 2, 0, 0, 0});
  return {Bmp(3, 2, {}),
          Bmp(3, 2, {.bits = 32, .top_down = true}),
          Bmp(3, 2, {.bits = 8}),
          Bmp(3, 2, {.bits = 8, .colours = 16}),
          Bmp(2, 2, {.bits = 8, .colours = 4, .grey = false}),
          Bmp(4, 1, {.info_bytes = 124}),
          short_bmp,
          Png(3, 2, {}),
          Png(5, 3, {.depth = 16}),
          Png(9, 2, {.depth = 1, .colour_type = 0}),
          Png(4, 2, {.depth = 16, .colour_type = 0}),
          Png(5, 2, {.depth = 4, .colour_type = 3}),
          Png(3, 3, {.colour_type = 4}),
          Png(2, 2, {.colour_type = 6}),
          Png(9, 9, {.interlaced = true}),
          huge_png,
          BytesOf(kPngSignature),
          BytesOf("BM")};
}

std::vector<Bytes> ToolFiles() {
  std::vector<Bytes> seeds;
  for (const Bytes& frame : RawFrames()) seeds.push_back(Bytes{0} + frame);
  constexpr uint8_t kBayerRg8 = 5, kBayerBg12 = 15, kYuv422 = 23, kBgr8Padded = 27;
  seeds.push_back(Bytes{1, kBayerRg8, 8, 8} + RawFrame(PRISMO_BAYER_RG8, 8, 8, 8));
  seeds.push_back(Bytes{1, kBayerRg8, 8, 9} + RawFrame(PRISMO_BAYER_RG8, 8, 8, 8));
  seeds.push_back(Bytes{2, kBayerBg12, 8, 8} + Ramp(128));
  seeds.push_back(Bytes{2, kYuv422, 4, 3} + Ramp(24));
  seeds.push_back(Bytes{2, kBgr8Padded, 3, 4} + Ramp(48));
  for (const Bytes& log : SavedLogs()) seeds.push_back(Bytes{3} + log);
  return seeds;
}

std::vector<Bytes> Results() {
  return {BytesOf(R"({"machine": [{"fact": "processor: \"A\u0042\" \\"}], "results": [
  {"name": "mono/Mono8/BGRA/caller/64x64", "over_limit": 1.25e+0, "all_seconds": {"NT": -1e-9}},
  {"name": "", "peer": null, "more": [true, false, [], {}]}
]})"),
          BytesOf("[[[[[[[[[[[[[[[[[[1]"), BytesOf("\"\\u12"), BytesOf(R"({"a" 1})")};
}

// Command lines, a word a line.
std::vector<Bytes> CommandLines() {
  constexpr std::string_view kLines[] = {
      "",
      "--help",
      "--version",
      "convert --help",
      "formats",
      "info f.rwh",
      "info m.raw --size 4x4 --format Mono8",
      "convert f.rwh -o x.bmp",
      "convert f.rwh -o x.png --demosaic adaptive --threads caller",
      "convert f.rwh -o x.jpg --quality 5 --gamma 2.2 --gain auto --black 3 --shift 1",
      "convert f.rwh -o x.bgra --rect 0,0,4,4 --gain 1,2.5,0",
      "convert f.rwh -o x.grey --planes",
      "convert f.rwh -o x --as rwh --threads 2",
      "convert f.rwh b.rwh -o out --as png",
      "convert m.raw --size 4x4 --format Mono8 -o x.bmp",
      "mirror f.rwh --horizontal --vertical -o x.rwh",
      "mosaic p.png --format BayerBG10 -o x.rwh",
      "mosaic p.bmp --format 0x01080009 -o x.raw --as raw",
      "compare p.bmp p.png --border 1",
      "compare p.bmp p.bmp",
      "probe f.rwh -o x.png",
      "probe m.raw",
      "convert f.rwh b.rwh -o out --skip-existing",
      "log l.pxu",
      "log l.pxu --level error -o l.txt",
      "log l.pxu --explain",
      "log l.pxu --trace -o l.json",
      "demo f.rwh -o d --gain 1,1,1",
      "demo --size 3x3",
      "convert f.rwh -o f.rwh",
      "convert f.rwh --gamma=nan -o x.bmp",
      "convert f.rwh --size 99999999999x1 -o x.bmp --format bayerrg8",
      "convert f.rwh --threads=-1 --shift 9 --black 65536 -o x.tiff",
  };
  std::vector<Bytes> seeds;
  for (const std::string_view line : kLines) {
    seeds.push_back(BytesOf(line));
    for (uint8_t& byte : seeds.back()) byte = byte == ' ' ? '\n' : byte;
  }
  return seeds;
}

}  // namespace

std::map<std::string, std::vector<Bytes>> FuzzSeeds() {
  return {{"config_file", Configurations()}, {"conversion", Conversions()}, {"log_text", LogTexts()},
          {"raw_frame", RawFrames()},        {"results", Results()},        {"tool_files", ToolFiles()},
          {"tool_options", CommandLines()},  {"tool_pictures", Pictures()}};
}

std::map<std::string, Bytes> ToolInputs() {
  return {{"f.rwh", RawFrame(PRISMO_BAYER_RG8, 8, 8, 8)},
          {"b.rwh", RawFrame(PRISMO_BGR8, 4, 4, 12)},
          {"m.raw", Ramp(16)},
          {"p.bmp", Bmp(6, 4, {})},
          {"p.png", Png(6, 4, {})},
          {"l.pxu", SavedLog(StoryOfAWork(1, true))}};
}

}  // namespace prismo::test
