// Paths as the system's own narrow functions take them: in its code page for file names, with spaces, either
// separator, and letters beyond ASCII.
#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

class FileNames : public testing::Test {
 protected:
  // Empty where the code page lacks a letter.
  static std::string Narrow(const std::wstring& wide) {
    char narrow[MAX_PATH] = {};
    BOOL lacks_letter = FALSE;
    const bool utf8 = GetACP() == CP_UTF8;
    WideCharToMultiByte(CP_ACP, utf8 ? 0 : WC_NO_BEST_FIT_CHARS, wide.c_str(), -1, narrow, MAX_PATH, nullptr,
                        utf8 ? nullptr : &lacks_letter);
    return lacks_letter ? "" : narrow;
  }

  static bool Exists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
  }

  std::wstring Wide(const std::wstring& name) const {
    const std::string folder = folder_ / "";
    return std::wstring(folder.begin(), folder.end()) + name;
  }

  // Each writer makes the file of that name, and raw frames are read from it.
  void ExpectFiles(const std::wstring& name) {
    const std::vector<uint8_t> pixels(4 * 8 * 8, 77);
    const std::vector<std::function<uint32_t(const char*)>> writers = {
        [&](const char* path) { return SaveBmpARGB(pixels.data(), 8, 8, path); },
        [&](const char* path) { return SaveJpeg(pixels.data(), 0, 8, 8, path); },
        [&](const char* path) { return SaveJpegRQ(pixels.data(), PRISMO_MONO8, 90, 8, 8, path); },
        [&](const char* path) { return SaveRWH(pixels.data(), PRISMO_MONO8, 8, 8, path); }};
    for (size_t i = 0; i < writers.size(); ++i) {
      const std::wstring wide = Wide(name + static_cast<wchar_t>(L'0' + i));
      const std::string path = Narrow(wide);
      if (path.empty()) GTEST_SKIP() << "code page " << GetACP() << " lacks a letter";
      ASSERT_EQ(writers[i](path.c_str()), UTL_STS_SUCCESS) << path;
      ASSERT_TRUE(Exists(wide)) << path;
    }
    uint8_t* frame = nullptr;
    ASSERT_EQ(LoadRWH(Narrow(Wide(name + L'3')).c_str(), &frame, nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(frame[63], 77);
    FreeRWH(frame);
  }

  const TempFolder folder_;
};

TEST_F(FileNames, WithSpaces) { ExpectFiles(L"a picture of mine "); }

TEST_F(FileNames, WithLettersBeyondAscii) { ExpectFiles(L"Gr\u00FC\u00DFe \u00E9"); }

TEST_F(FileNames, WithEitherSeparator) {
  CreateDirectoryW(Wide(L"sub").c_str(), nullptr);
  ExpectFiles(L"sub/x");
  ExpectFiles(L"sub\\y");
}

}  // namespace
}  // namespace prismo::test
