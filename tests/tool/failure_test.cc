// What users do wrong, and what goes wrong for them.
#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

class FailureTest : public ToolTest {
 protected:
  // A raw frame file with a header of our choice.
  void WriteRwh(uint32_t code, uint32_t width, uint32_t height, uint32_t row_bytes, size_t data_bytes) {
    Bytes file;
    for (const uint32_t field : {code, width, height, row_bytes}) {
      for (int shift = 0; shift < 32; shift += 8) file.push_back(static_cast<uint8_t>(field >> shift));
    }
    file.resize(file.size() + data_bytes);
    WriteFile(Path("h.rwh"), file);
  }
};

TEST_F(FailureTest, InputsThatAreNoFrames) {
  ExpectFailure("convert none.rwh -o x.bmp", {"none.rwh", "no such file"});
  ExpectFailure("info none.rwh", {"none.rwh", "no such file"});
  ExpectFailure("convert . -o x.bmp", {"is a folder"});
  ExpectFailure("convert /dev/zero --size 8x8 --format Mono8 -o x.bmp", {"/dev/zero", "not a regular file"});
  WriteFile(Path("empty.rwh"), {});
  ExpectFailure("convert empty.rwh -o x.bmp", {"empty.rwh", "16 header bytes", "has 0"});
}

TEST_F(FailureTest, FilesOfAnotherLength) {
  WriteFile(Path("d.raw"), Bytes(4131840 / 1000));
  ExpectFailure("convert d.raw --size 1920x1076 --format BayerBG12 -o x.bmp",
                {"d.raw", "BayerBG12 1920x1076", "4131840", "4131", "4127709 too few", "check --size"});
  WriteFile(Path("d.raw"), Bytes(65));
  ExpectFailure("convert d.raw --size 8x8 --format Mono8 -o x.bmp", {"64", "65", "1 too many"});
  WriteRwh(PRISMO_MONO8, 8, 8, 8, 63);
  ExpectFailure("convert h.rwh -o x.bmp", {"80 bytes", "has 79", "1 too few", "write it again"});
  ExpectFailure("info h.rwh", {"1 too few"});
  WriteRwh(PRISMO_MONO8, 8, 8, 8, 65);
  ExpectFailure("convert h.rwh -o x.bmp", {"80 bytes", "has 81", "1 too many"});
}

TEST_F(FailureTest, HostileHeaders) {
  WriteRwh(0x12345678, 8, 8, 8, 64);
  ExpectFailure("convert h.rwh -o x.bmp", {"unknown pixel format 0x12345678"});
  WriteRwh(PRISMO_MONO8, 8, 8, 12, 64);
  ExpectFailure("convert h.rwh -o x.bmp", {"8 bytes", "says 12"});
  WriteRwh(PRISMO_MONO8, 0, 8, 0, 0);
  ExpectFailure("convert h.rwh -o x.bmp", {"0x8", "empty"});
  WriteRwh(PRISMO_MONO8, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0);
  ExpectFailure("convert h.rwh -o x.bmp", {"4294967295x4294967295", "larger"});
  // A 32-bit product of these sizes is 0, and one of these is small.
  WriteRwh(PRISMO_MONO8, 0x10000, 0x10000, 0x10000, 0);
  ExpectFailure("convert h.rwh -o x.bmp", {"65536x65536", "larger"});
  WriteRwh(PRISMO_MONO8, 16384, 16384, 16384, 10);
  ExpectFailure("convert h.rwh -o x.bmp", {"268435472", "has 26"});
}

TEST_F(FailureTest, IncompleteOrContradictoryLayouts) {
  WriteFile(Path("d.raw"), Bytes(64));
  ExpectFailure("convert d.raw -o x.bmp", {"d.raw", "--size and --format"});
  ExpectFailure("convert d.raw -o x.bmp --size 8x8", {"--size and --format"});
  ExpectFailure("convert d.raw -o x.bmp --format Mono8", {"--size and --format"});
  for (const char* size : {"8", "8x", "x8", "8x8x8", "8 x 8", "-8x8", "99999999999x8", "0x8"}) {
    ExpectFailure(std::string("convert d.raw -o x.bmp --format Mono8 --size='") + size + "'", {size});
  }
  MakeFrame("f", PRISMO_MONO8, 8, 8);
  ExpectFailure("convert f.rwh -o x.bmp --size 8x9", {"header says Mono8 8x8"});
  ExpectFailure("convert f.rwh -o x.bmp --format Mono10", {"header says Mono8 8x8"});
}

TEST_F(FailureTest, UnknownNamesGetASuggestion) {
  WriteFile(Path("d.raw"), Bytes(64));
  const auto format = [](const std::string& name) {
    return "convert d.raw -o x.bmp --size 8x8 --format '" + name + "'";
  };
  ExpectFailure(format("BayrBG12"),
                {"unknown pixel format 'BayrBG12'", "did you mean BayerBG12?", "prismo formats"});
  ExpectFailure(format("mono9"), {"did you mean", "Mono8", "prismo formats"});
  ExpectFailure(format("YUV42"), {"YUV422"});
  ExpectFailure(format("0x01100099"), {"unknown pixel format '0x01100099'"});
  ExpectFailure(format("0x"), {"unknown pixel format '0x'"});
  ExpectFailure(format("photograph"), {"unknown pixel format 'photograph' ('prismo formats'"});
  MakeFrame("f", PRISMO_BAYER_RG8, 8, 8);
  ExpectFailure("convert f.rwh -o x.bmp --demosaic fancy", {"bilinear, adaptive or none", "'fancy'"});
  for (const char* threads : {"0", "-1", "all", "2x"}) {
    ExpectFailure(std::string("convert f.rwh -o x.bmp --threads=") + threads, {"--threads", threads});
  }
  ExpectFailure("convert f.rwh -o x.tiff", {"x.tiff", "bmp png jpg"});
  ExpectFailure("convert f.rwh -o x", {"extension", "bmp png jpg"});
  ExpectFailure("convert f.rwh -o x.bmp --as tiff", {"'tiff'", "bmp png jpg"});
}

TEST_F(FailureTest, OutputsThatCannotBeWritten) {
  MakeFrame("f", PRISMO_BAYER_RG8, 64, 64);
  const std::string long_name(300, 'n');
  ExpectFailure("convert f.rwh -o " + long_name + ".bmp", {"prismo: " + long_name, ": File name too long"});
  ExpectFailure("convert f.rwh --planes --as bmp -o -", {"standard output", "three planes"});
  ExpectFailure("convert f.rwh -o none/x.bmp", {"none/x.bmp", "no folder"});
  ExpectFailure("convert f.rwh -o f.rwh/x.bmp", {"no folder"});
  ExpectFailure("convert f.rwh -o /proc/x.bmp", {"prismo: /proc/x.bmp: ", "/proc cannot be written to"});
  ExpectFailure("convert f.rwh -o f.rwh/", {"f.rwh/: is not a folder"});
  ExpectFailure("convert f.rwh -o f.rwh/deeper/", {"f.rwh/deeper/", "Not a directory"});
  for (const char* kind : {"bmp", "png", "jpg", "bgra", "rwh", "raw"}) {
    ExpectFailure(std::string("convert f.rwh -o /dev/full --as ") + kind, {"/dev/full", "No space left"},
                  "TMPDIR=. ");
  }
}

TEST_F(FailureTest, FullDiskLeavesNothing) {
  MakeFrame("f", PRISMO_BAYER_RG8, 128, 128);
  for (const char* kind : {"bmp", "png", "jpg", "bgra", "bgr", "rwh", "raw"}) {
    ExpectFailure(std::string("convert f.rwh -o x.") + kind + " --quality 100", {std::string("x.") + kind},
                  kFullDisk);
  }
  ExpectFailure("convert f.rwh -o x.grey --planes", {"prismo: x_blue.grey: only 1024 of 16384"}, kFullDisk);
  ExpectFailure("mirror f.rwh --vertical -o x.rwh", {"x.rwh", "1024 of 16400"}, kFullDisk);
}

TEST_F(FailureTest, FailureKeepsTheFileThatWasThere) {
  MakeFrame("f", PRISMO_BAYER_RG8, 128, 128);
  WriteText(Path("x.bmp"), "precious");
  ExpectFailure("convert f.rwh -o x.bmp", {"x.bmp"}, kFullDisk);
  EXPECT_EQ(ReadText(Path("x.bmp")), "precious");
  fs::create_directory(Path("d"));
  WriteText(Path("d/x.grey"), "precious");
  ExpectFailure("convert f.rwh -o d/x.grey --demosaic none", {"prismo: d/x.grey: only 1024 of 16384"},
                kFullDisk);
  RunWell("convert f.rwh -o x.bmp");
  EXPECT_EQ(Content("x.bmp").size(), 54u + 3 * 128 * 128);
}

TEST_F(FailureTest, OutputThroughALinkKeepsTheLink) {
  MakeFrame("f", PRISMO_MONO8, 4, 4);
  WriteText(Path("real.bmp"), "old");
  fs::create_symlink("real.bmp", Path("link.bmp"));
  RunWell("convert f.rwh -o link.bmp");
  EXPECT_TRUE(fs::is_symlink(Path("link.bmp")));
  EXPECT_EQ(Content("real.bmp").size(), 54u + 1024 + 16);
}

TEST_F(FailureTest, StandardOutputTakesTheBytesAlone) {
  const Bytes frame = MakeFrame("f", PRISMO_MONO8, 4, 4);
  for (const char* target : {"-", "/dev/stdout"}) {
    const Outcome outcome = Run(std::string("convert f.rwh --as grey -o ") + target);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(Bytes(outcome.out.begin(), outcome.out.end()), frame) << target;
    EXPECT_NE(outcome.err.find("4x4 from Mono8"), std::string::npos) << outcome.err;
  }
  ExpectFailure("convert f.rwh --as grey -o - >/dev/full", {"No space left"});
  ExpectFailure("formats >/dev/full", {"standard output", "writing failed"});
}

TEST_F(FailureTest, InterruptedRunLeavesNothing) {
  // The pipe has no reader, so the tool waits with its temporary file at hand until it is told to end.
  MakeFrame("f", PRISMO_MONO8, 4, 4);
  fs::create_directory(Path("scratch"));
  const Outcome outcome = Run("convert f.rwh --as bmp -o pipe",
                              "mkfifo pipe; (sleep 0.7; ls -A scratch >seen) & "
                              "export TMPDIR=scratch; timeout --signal=TERM 1.5");
  EXPECT_EQ(outcome.exit_code, 124) << outcome.err;
  EXPECT_NE(ReadText(Path("seen")).find(".prismo-"), std::string::npos)
      << "there was no temporary file to remove";
  EXPECT_TRUE(fs::is_empty(Path("scratch")));
}

}  // namespace
}  // namespace prismo::test
