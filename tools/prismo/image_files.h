// Picture files, and the kinds of output that a file name can ask for.
#pragma once

#include <filesystem>
#include <string>

#include "frame.h"
#include "output_file.h"

namespace prismo::tool {

enum class FileKind {
  kBmp,
  kPng,
  kJpeg,
  kBgr,  // bytes of the picture without a header
  kBgra,
  kGrey,
  kRwh,  // the frame in its own format, with a header
  kRaw,  // the same without a header
};

constexpr unsigned kDefaultJpegQuality = 90;

// By the name of a kind ("png") if there is one, else by the extension of the path.
FileKind KindOfOutput(const std::filesystem::path& path, const std::string& kind_name);
std::string ExtensionOf(FileKind kind);
inline bool HoldsFrame(FileKind kind) { return kind == FileKind::kRwh || kind == FileKind::kRaw; }

// These fill an output file, which remains to be committed.
void WritePicture(const Picture& picture, FileKind kind, unsigned jpeg_quality, const OutputFile& file);
void WriteFrame(const Frame& frame, FileKind kind, const OutputFile& file);

void WriteFrame(const Frame& frame, FileKind kind, const std::filesystem::path& path);

// BMP and PNG, told apart by their first bytes; grey or B, G, R. Opacity is dropped.
Picture ReadPicture(const std::filesystem::path& path);

// A grey picture as B, G, R; any other as it is.
Picture WithColourChannels(Picture picture);

}  // namespace prismo::tool
