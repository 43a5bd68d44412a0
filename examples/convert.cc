// Converts a raw frame file to a BMP picture: convert_cpp FRAME.rwh PICTURE.bmp
#include <iostream>
#include <prismoutl.hpp>
#include <stdexcept>

using namespace prismoutl;

int main(int argc, char** argv) try {
  if (argc != 3) throw std::invalid_argument("usage: convert_cpp FRAME.rwh PICTURE.bmp");
  const LoadedFrame frame = LoadedFrame::Load(argv[1]);
  std::vector<std::byte> bgr(PictureBytes(Layout::kBgr, frame.Width(), frame.Height()));
  Convert(frame, Layout::kBgr, bgr).OrThrow();
  SaveBmp({Layout::kBgr, frame.Width(), frame.Height(), bgr}, argv[2]).OrThrow();
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
