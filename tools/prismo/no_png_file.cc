// PNG files where the program was built without the PNG library.
#include "error.h"
#include "png_file.h"

namespace prismo::tool {

const bool kHasPng = false;

namespace {
constexpr char kNoPng[] = "this prismo was built without PNG; use BMP";
}

Picture ReadPng(const std::filesystem::path& path) { throw FileError(path, kNoPng); }

void WritePng(const Picture&, const std::string&, const std::filesystem::path& name) {
  throw FileError(name, kNoPng);
}

}  // namespace prismo::tool
