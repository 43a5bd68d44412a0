// The converter of each pixel format, as applications get it.
#pragma once

#include "PrismoUtl.h"
#include "core/pixel_format.h"

namespace prismo {

// Null for a format without converter. With `demosaic` the Bayer mode chooses between the demosaics of 8-bit
// Bayer formats; without it Bayer frames are shown as grey.
PrismoConverter BgraConverter(PixelFormat format, bool demosaic);
PrismoConverter BgrConverter(PixelFormat format, bool demosaic);

}  // namespace prismo
