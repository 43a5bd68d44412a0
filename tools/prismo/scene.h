// A test scene as a camera would see it, for demonstrations without a camera.
#pragma once

#include "frame.h"

namespace prismo::tool {

constexpr uint32_t kSceneWidth = 1280;
constexpr uint32_t kSceneHeight = 960;
constexpr uint32_t kSceneBlackLevel = 64;

// Colour patches, a zone plate, a star, lines and text in linear light. Always the same.
struct Scene {
  // Under a lamp that makes raw frames greenish; 12-bit BayerRG with a black level, shot noise and read
  // noise.
  Frame frame;
  // With all colours at every pixel, for a screen, and without noise: what a demosaic would ideally find.
  Picture picture;
};
Scene RenderScene();

}  // namespace prismo::tool
