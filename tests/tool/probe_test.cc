// The probe command: what the samples prove about the phase, what a dump's name and length say.
#include <algorithm>
#include <cmath>
#include <random>

#include "PrismoUtl.h"
#include "samples/sample_files.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kWidth = 320, kHeight = 240;

class ProbeTest : public ToolTest {
 protected:
  // A photograph of patches in random colours, or greys.
  void MakePhoto(const std::string& name, bool coloured, uint32_t patch = 20) {
    std::mt19937 random(Seed());
    Bytes patches(kWidth / patch * kHeight / patch * 3);
    for (size_t i = 0; i < patches.size(); ++i) {
      patches[i] = !coloured && i % 3 ? patches[i - 1] : static_cast<uint8_t>(30 + random() % 200);
    }
    Bytes photo(size_t{kWidth} * kHeight * 3);
    for (size_t i = 0; i < photo.size(); ++i) {
      const size_t x = i / 3 % kWidth / patch, y = i / 3 / kWidth / patch;
      const int noisy = patches[(y * (kWidth / patch) + x) * 3 + i % 3] + static_cast<int>(random() % 7) - 3;
      photo[i] = static_cast<uint8_t>(noisy);
    }
    ASSERT_EQ(SaveBmpRGB(photo.data(), kWidth, kHeight, Path(name).c_str()), 0u);
  }

  // A dump of normally distributed samples around a level for each site of a quad.
  void MakeFlat(const std::string& name, const std::array<double, 4>& levels, double noise) {
    std::mt19937 random(Seed());
    std::normal_distribution<double> normal;
    Bytes frame(size_t{kWidth} * kHeight);
    for (size_t i = 0; i < frame.size(); ++i) {
      const double level = levels[i / kWidth % 2 * 2 + i % 2];
      frame[i] =
          static_cast<uint8_t>(std::clamp(level + noise * std::sqrt(level) * normal(random), 0.0, 255.0));
    }
    WriteFile(Path(name), frame);
  }

  std::string Probe(const std::string& arguments) { return RunWell("probe " + arguments); }
};

std::string PairOf(const std::string& phase, const std::string& depth) {
  const bool falling = phase[0] == 'G';
  return falling ? "upper left to lower right: BayerGR" + depth + " or BayerGB" + depth
                 : "upper right to lower left: BayerRG" + depth + " or BayerBG" + depth;
}

void ExpectWords(const std::string& text, const std::vector<std::string>& words) {
  for (const std::string& word : words)
    EXPECT_NE(text.find(word), std::string::npos) << word << "\nin\n" << text;
}

TEST_F(ProbeTest, ProvesTheGreenDiagonalInEveryPhaseAndDepth) {
  MakePhoto("photo.bmp", true);
  for (const std::string depth : {"8", "10", "12"}) {
    for (const std::string phase : {"GR", "RG", "GB", "BG"}) {
      const std::string format = "Bayer" + phase + depth;
      SCOPED_TRACE(format);
      RunWell("mosaic photo.bmp --format " + format + " -o f.rwh");
      const std::string text = Probe("f.rwh -o f.bmp");
      ExpectWords(text, {"f.rwh: " + format + " 320x240\n", PairOf(phase, depth), format + " may be right",
                         "red      cannot be told from blue"});

      RunWell("convert f.rwh -o f.raw");
      const std::string other = phase[0] == 'G' ? "RG" : "GR";
      ExpectWords(Probe("f.raw --size 320x240 --format Bayer" + other + depth),
                  {PairOf(phase, depth), "Bayer" + other + depth + " is wrong"});
    }
  }
}

TEST_F(ProbeTest, ThePictureShowsFourLabelledPanels) {
  MakePhoto("photo.bmp", true);
  RunWell("mosaic photo.bmp --format BayerGB8 -o f.rwh");
  Probe("f.rwh -o f.bmp");
  const std::string info = RunWell("compare f.bmp f.bmp");  // reads it
  constexpr uint32_t kSheetWidth = 2 * (kWidth + 8) + 8, kCell = kHeight + 20 + 8,
                     kSheetHeight = 2 * kCell + 8;
  const Bytes bmp = Content("f.bmp");
  ASSERT_EQ(bmp.size(), 54 + size_t{kSheetWidth} * kSheetHeight * 3);
  const auto pixel = [&](uint32_t x, uint32_t y) {
    return &bmp[54 + ((kSheetHeight - 1 - y) * kSheetWidth + x) * 3];
  };
  std::array<unsigned, 4> ink{};
  for (size_t panel = 0; panel < ink.size(); ++panel) {
    for (uint32_t y = 0; y < 14; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const auto* at = pixel(static_cast<uint32_t>(8 + panel % 2 * (kWidth + 8)) + x,
                               static_cast<uint32_t>(8 + panel / 2 * kCell) + y);
        ink[panel] += at[0] == 255 && at[1] == 255 && at[2] == 255;
      }
    }
  }
  // GR and GB above, RG and BG, which are wrong and say so, below: a score of 0 and one more word.
  EXPECT_GT(ink[0], 500u);
  EXPECT_GT(ink[2], ink[0] + 100);
  EXPECT_GT(ink[3], ink[1] + 100);

  // The panel of the frame's own phase is the frame, converted and made presentable.
  RunWell("convert f.rwh --gain auto --gamma 2.2 -o own.bmp");
  const Bytes own = Content("own.bmp");
  for (uint32_t y = 0; y < kHeight; ++y) {
    ASSERT_TRUE(std::equal(&own[54 + (kHeight - 1 - y) * kWidth * 3],
                           &own[54 + (kHeight - y) * kWidth * 3 - 1], pixel(8 + kWidth + 8, 8 + 20 + y)))
        << y;
  }
}

TEST_F(ProbeTest, NamesThePhasesAsOthersDo) {
  MakeFrame("f", PRISMO_BAYER_RG12, 320, 240);
  ExpectWords(Probe("f.rwh -o f.png"),
              {"BayerGR12  GRBG         -  COLOR_BayerGB2BGR    V4L2_PIX_FMT_SGRBG12   grbg12le\n",
               "BayerGB12  GBRG         -  COLOR_BayerGR2BGR    V4L2_PIX_FMT_SGBRG12   gbrg12le\n",
               "BayerRG12  RGGB         -  COLOR_BayerBG2BGR    V4L2_PIX_FMT_SRGGB12   rggb12le\n",
               "BayerBG12  BGGR         -  COLOR_BayerRG2BGR    V4L2_PIX_FMT_SBGGR12   bggr12le\n"});
  MakeFrame("g", PRISMO_BAYER_RG8, 320, 240);
  ExpectWords(Probe("g.rwh -o g.png"), {"COLOR_BayerBG2BGR    V4L2_PIX_FMT_SRGGB8    rggb\n"});
}

TEST_F(ProbeTest, CannotTellOnFlatScenes) {
  MakeFlat("constant_320x240_rggb8.raw", {100, 100, 100, 100}, 0);
  MakeFlat("tint_320x240_rggb8.raw", {60, 150, 150, 40}, 0);
  MakeFlat("grey_320x240_rggb8.raw", {100, 100, 100, 100}, 1);
  MakeFlat("noisy_320x240_rggb8.raw", {60, 150, 150, 40}, 1);
  for (const char* name : {"constant", "tint", "grey", "noisy"}) {
    const std::string text = Probe(std::string(name) + "_320x240_rggb8.raw");
    ExpectWords(text, {"green    cannot tell"});
    EXPECT_EQ(text.find("verdict"), std::string::npos) << text;
    EXPECT_TRUE(fs::exists(Path(std::string(name) + "_320x240_rggb8-phases.png")));
  }
}

TEST_F(ProbeTest, CannotTellOfGreyScenes) {
  MakePhoto("photo.bmp", false);
  for (const char* format : {"Mono8", "Mono12", "BayerRG8", "BayerGB10"}) {
    RunWell(std::string("mosaic photo.bmp --format ") + format + " -o f.rwh");
    ExpectWords(Probe("f.rwh -o f.png"), {"green    cannot tell"});
  }
}

TEST_F(ProbeTest, GreenSitesThatAreNotQuiteAlikeAreNoColour) {
  MakePhoto("photo.bmp", false, 80);
  RunWell("mosaic photo.bmp --format BayerRG12 -o f.raw --as raw");
  Bytes frame = Content("f.raw");
  for (size_t i = 0; i < frame.size(); i += 2) {
    const size_t x = i / 2 % kWidth, y = i / 2 / kWidth;
    if (x % 2 == 0 || y % 2 == 1) continue;
    const auto sample = static_cast<unsigned>((frame[i] | frame[i + 1] << 8) * 1.03);
    frame[i] = static_cast<uint8_t>(sample);
    frame[i + 1] = static_cast<uint8_t>(sample >> 8);
  }
  WriteFile(Path("f.raw"), frame);
  ExpectWords(Probe("f.raw --size 320x240 --format BayerRG12"), {"green    cannot tell"});
}

// Lines of two pixels, as in the demo's scene, look alike on both diagonals, wherever they lie.
TEST_F(ProbeTest, FineLinesDoNotDrownTheEvidence) {
  RunWell("demo -o demo");
  ExpectWords(Probe("demo/frame.rwh -o p.bmp"), {PairOf("RG", "12"), "may be right"});
}

TEST_F(ProbeTest, AMonochromeFrameMayHaveAMosaic) {
  MakePhoto("photo.bmp", true);
  RunWell("mosaic photo.bmp --format BayerBG12 -o f.raw");
  ExpectWords(Probe("f.raw --size 320x240 --format Mono12"), {PairOf("BG", "12"), "Mono12 is wrong"});
}

TEST_F(ProbeTest, CannotTellOfTinyFrames) {
  MakeFrame("f", PRISMO_BAYER_RG12, 48, 32);
  ExpectWords(Probe("f.rwh -o f.png"), {"cannot tell: the frame is too small, with 12 places"});
  MakeFrame("g", PRISMO_BAYER_RG8, 2, 2);
  ExpectWords(Probe("g.rwh -o g.png"), {"cannot tell"});
}

TEST_F(ProbeTest, RefusesWhatHasNoMosaic) {
  for (const uint32_t code : {PRISMO_RGB8, PRISMO_YUV422, PRISMO_MONO16, PRISMO_MONO8_PADDED}) {
    MakeFrame("f", code, 64, 48);
    ExpectFailure("probe f.rwh -o f.png", {"no Bayer mosaic"});
  }
  MakeFrame("odd", PRISMO_MONO8, 33, 20);
  ExpectFailure("probe odd.rwh -o f.png", {"multiple of 2", "33x20"});
  MakeFrame("good", PRISMO_BAYER_RG8, 64, 48);
  ExpectFailure("probe good.rwh -o f.rwh", {"f.rwh", ".png, .bmp or .jpg"});
  ExpectFailure("probe good.rwh -o f.bgra", {"f.bgra", ".png, .bmp or .jpg"});
  ExpectFailure("probe good.rwh -o f.xyz", {"f.xyz", "extension"});
  ExpectFailure("probe good.rwh -o f.png --gain x", {"--gain", "'x'"});
  ExpectFailure("probe none.raw", {"none.raw", "no such file"});
  ExpectFailure("probe none_640x480_BayerRG8.raw", {"none_640x480_BayerRG8.raw", "no such file"});
}

class GuessTest : public ProbeTest {
 protected:
  void MakeDump(const std::string& name, size_t bytes, uint8_t high_byte = 0) {
    Bytes dump(bytes);
    for (size_t i = 1; i < bytes; i += 2) dump[i] = high_byte;
    WriteFile(Path(name), dump);
  }

  void ExpectGuess(const std::string& name, const std::string& guess, const std::string& options = "") {
    ExpectWords(Probe(name + " " + options + " -o p.png"), {name + ": " + guess + " (a guess"});
  }
};

TEST_F(GuessTest, ByTheNameAlone) {
  const size_t words = 64 * 48 * 2, bytes = 64 * 48;
  const struct {
    const char* name;
    size_t length;
    const char* guess;
  } kCases[] = {
      {"foo_64x48_BayerRG12.raw", words, "BayerRG12 64x48"},
      {"foo-bayerbg10-64X48.bin", words, "BayerBG10 64x48"},
      {"GRBG_12bit_64x48.raw", words, "BayerGR12 64x48"},
      {"rggb8.64x48", bytes, "BayerRG8 64x48"},
      {"SGBRG10_64x48_0001.raw", words, "BayerGB10 64x48"},
      {"64x48_bggr.raw", bytes, "BayerBG8 64x48"},
      {"64x48_raw10.raw", words, "Bayer, 10 bits 64x48"},
      {"64x48_12bits.raw", words, "Bayer, 12 bits 64x48"},
      {"frame_64x48.raw", bytes, "Bayer, 8 bits 64x48"},
      {"frame_64x48_Mono10.raw", words, "Mono10 64x48"},
      {"crop_32x24_of_64x48_rggb8.raw", bytes, "BayerRG8 64x48"},
  };
  for (const auto& [name, length, guess] : kCases) {
    MakeDump(name, length);
    ExpectGuess(name, guess);
  }
}

TEST_F(GuessTest, ByLengthWhereTheNameSaysNothing) {
  MakeDump("a.raw", 640 * 480);
  ExpectGuess("a.raw", "Bayer, 8 bits 640x480");
  MakeDump("b.raw", 1920 * 1080 * 2, 8);  // samples of 2048 do not fit into 10 bits
  ExpectGuess("b.raw", "Bayer, 12 bits 1920x1080");
}

TEST_F(GuessTest, CompletesWhatIsSaid) {
  MakeDump("a_64x48.raw", 64 * 48 * 2);
  ExpectGuess("a_64x48.raw", "BayerGB12 64x48", "--format BayerGB12");
  MakeDump("b_rggb12.raw", 60 * 48 * 2);
  ExpectGuess("b_rggb12.raw", "BayerRG12 60x48", "--size 60x48");
  ExpectFailure("probe b_rggb12.raw --size 64x48 -o p.png",
                {"b_rggb12.raw", "64x48", "BayerRG12", "5760 bytes"});
}

TEST_F(GuessTest, RefusesWhereTwoFitAndNamesThem) {
  MakeDump("a_64x48.raw", 64 * 48 * 2);
  ExpectFailure("probe a_64x48.raw -o p.png",
                {"a_64x48.raw", "may be Bayer..10 64x48, Bayer..12 64x48", "--size", "--format"});
  MakeDump("b_64x48_rggb8_32x96.raw", 64 * 48);
  ExpectFailure("probe b_64x48_rggb8_32x96.raw -o p.png", {"BayerRG8 64x48, BayerRG8 32x96"});
  MakeDump("c_64x48_of_128x48.raw", 64 * 48 * 2, 8);
  ExpectFailure("probe c_64x48_of_128x48.raw -o p.png", {"Bayer..8 128x48, Bayer..12 64x48"});
}

TEST_F(GuessTest, RefusesWhatFitsNothing) {
  MakeDump("a_64x48_rggb8.raw", 64 * 48 + 1);
  ExpectFailure("probe a_64x48_rggb8.raw -o p.png", {"64x48", "BayerRG8", "3073 bytes", "--size"});
  MakeDump("b.raw", 12345);
  ExpectFailure("probe b.raw -o p.png", {"b.raw", "common", "12345 bytes", "--size", "--format"});
  MakeDump("c_64x48_rggb14.raw", 64 * 48 * 2);
  ExpectFailure("probe c_64x48_rggb14.raw -o p.png", {"14 bits", "--shift"});
  MakeDump("d_64x48_BayerRG12p.raw", 64 * 48 * 3 / 2);
  ExpectFailure("probe d_64x48_BayerRG12p.raw -o p.png", {"BAYERRG12P", "unpack"});
  MakeDump("e_64x48.raw", 64 * 48 * 2, 32);
  ExpectFailure("probe e_64x48.raw -o p.png", {"samples reach 8192", "--shift"});
  MakeDump("f_0x0.raw", 0);
  ExpectFailure("probe f_0x0.raw -o p.png", {"f_0x0.raw", "empty"});
}

TEST_F(ProbeTest, RealFrames) {
  const struct {
    const char* name;
    const char* options;
    const char* words;
  } kFrames[] = {
      {"raw/colorchecker_bayerbg12_1920x1076.raw", "", "BayerRG12 or BayerBG12"},
      {"raw/swing_bayergr8_2592x1536.raw", "", "BayerGR8 or BayerGB8"},
      {"raw/rose_bayerrg14_768x512.raw", "--format BayerRG12 --shift 2", "BayerRG12 or BayerBG12"},
  };
  for (const auto& [name, options, words] : kFrames) {
    PRISMO_NEEDS_SAMPLE(name);
    ExpectWords(Probe("'" + SampleFile(name).string() + "' -o p.png " + options), {words, "may be right"});
  }
}

}  // namespace
}  // namespace prismo::test
