// A test scene as a camera would see it, for demonstrations without a camera.
#pragma once

#include "frame.h"

namespace prismo::tool {

constexpr uint32_t kSceneWidth = 1280;
constexpr uint32_t kSceneHeight = 960;
constexpr uint32_t kSceneBlackLevel = 64;

// Colour patches, a zone plate, a star, lines and text in linear light under a warm-less lamp that makes raw
// frames greenish; 12-bit BayerRG with a black level, shot noise and read noise. Always the same frame.
Frame RenderScene();

}  // namespace prismo::tool
