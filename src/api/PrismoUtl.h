/**
 * @file PrismoUtl.h
 * Image utilities for industrial cameras: conversion of raw frames to 8-bit pictures, image files,
 * mirrors, synthesis of camera frames, and the worker pool that all of it can run on.
 *
 * Conventions that hold throughout:
 *
 * - Every function that reports success or failure returns one of the UTL_STS_ codes.
 * - Destination first, source second. The caller owns every buffer (LoadRWH alone allocates one) and
 *   promises that it is large enough; sizes are never checked. Source and destination must not overlap.
 * - An image is one contiguous block, top row first, without a stride: the length of a row follows from
 *   the width and the layout. Samples of more than 8 bits are 16-bit little-endian words with the value
 *   in the low bits.
 * - Output layouts: BGRA (B, G, R, 255), BGR (B, G, R), Pad (BGR whose rows are followed by zero bytes up
 *   to a multiple of 4 bytes) and separate planes.
 * - N-bit samples become 8 bits by a right shift (2 for 10 bits, 4 for 12, 8 for 16) that keeps the low
 *   8 bits: no rounding, no saturation.
 * - A null buffer gives UTL_STS_INVALID_PARAMETER; a frame whose width x height (a 32-bit product) is 0
 *   gives UTL_STS_SUCCESS and nothing is written, unless a family says otherwise.
 * - _SP routines run on the caller's thread; _MP routines run on the worker pool and wait for it.
 *
 * When an _MP call returns UTL_STS_TIMEOUT the workers finish the block that they are in. Until they
 * have, they go on reading the source and WRITING TO THE DESTINATION: do not free or reuse either before
 * TerminateMPThreads has returned or enough time has passed. Frames of few rows always end that way on the
 * pool, after the full time-out: those with fewer rows than twice the number of worker threads, and Bayer
 * frames with up to four rows more. Use the _SP form for such frames.
 */
#ifndef PRISMOUTL_H_
#define PRISMOUTL_H_

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(PRISMO_BUILDING)
#define PRISMO_API __declspec(dllexport)
#else
#define PRISMO_API __declspec(dllimport)
#endif
#else
#define PRISMO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define PRISMO_NOEXCEPT noexcept
extern "C" {
#else
#define PRISMO_NOEXCEPT
#endif

/* ---------------------------------------------------------------------------------------------- */
/* Status codes */

/** Done; also an empty frame, for which nothing is written. */
#define UTL_STS_SUCCESS 0u
/** A null pointer, an unsupported format, output type or mode, or a rectangle out of bounds. */
#define UTL_STS_INVALID_PARAMETER 13u
/** Work on the pool did not finish within the engine's time-out. */
#define UTL_STS_TIMEOUT 18u
/** A file could not be opened. */
#define UTL_STS_FILE_OPEN_ERROR 0x2001u
/** Writing a file failed with an exception. */
#define UTL_STS_FILE_WRITE_ERROR 0x2002u
/** Reading a file, or allocating memory for it, failed. */
#define UTL_STS_FILE_READ_ERROR 0x2003u
/** The image encoder found no such folder. */
#define UTL_STS_FILE_NOT_FOUND 0x2004u
/** An exception in a work callback or routine, or an encoder error without a code of its own. */
#define UTL_STS_FAILURE 0xFFFFFFFFu

/* ---------------------------------------------------------------------------------------------- */
/* Pixel formats: GigE Vision / GenICam PFNC codes */

#define PRISMO_MONO8 0x01080001u
#define PRISMO_MONO10 0x01100003u
#define PRISMO_MONO12 0x01100005u
#define PRISMO_MONO16 0x01100007u
#define PRISMO_BAYER_GR8 0x01080008u
#define PRISMO_BAYER_RG8 0x01080009u
#define PRISMO_BAYER_GB8 0x0108000Au
#define PRISMO_BAYER_BG8 0x0108000Bu
#define PRISMO_BAYER_GR10 0x0110000Cu
#define PRISMO_BAYER_RG10 0x0110000Du
#define PRISMO_BAYER_GB10 0x0110000Eu
#define PRISMO_BAYER_BG10 0x0110000Fu
#define PRISMO_BAYER_GR12 0x01100010u
#define PRISMO_BAYER_RG12 0x01100011u
#define PRISMO_BAYER_GB12 0x01100012u
#define PRISMO_BAYER_BG12 0x01100013u
#define PRISMO_RGB8 0x02180014u
#define PRISMO_BGR8 0x02180015u
#define PRISMO_RGB10 0x02300018u
#define PRISMO_BGR10 0x02300019u
#define PRISMO_RGB12 0x0230001Au
#define PRISMO_BGR12 0x0230001Bu
#define PRISMO_YUV411 0x020C001Eu
#define PRISMO_YUV422 0x0210001Fu
#define PRISMO_YUV444 0x02180020u
#define PRISMO_BGRA8 0x02200017u
#define PRISMO_BGRA10 0x0240004Cu
/** BGR8 whose rows are padded to a multiple of 4 bytes; the library's own code. */
#define PRISMO_BGR8_PADDED 0x021800FFu
/** Mono8 whose rows are padded to a multiple of 4 bytes; the library's own code. */
#define PRISMO_MONO8_PADDED 0x010800FFu

/**
 * Builds a pixel-format code from a colour-coding number and a bit count.
 *
 * colourCoding 0 is monochrome (bits 8, 10, 12, 16); 34 RGB and 42 BGR (bits 24, 30, 36: the effective
 * bits of all three channels); 64 or 66 YUV 4:1:1 (12); 72 or 74 YUV 4:2:2 (16); 82 YUV 4:4:4 (24);
 * 96, 99, 102 and 105 Bayer GR, RG, GB and BG (8, 10, 12). Any other pair gives 0.
 */
PRISMO_API uint32_t GetPxlFmt(uint32_t colourCoding, int32_t bits) PRISMO_NOEXCEPT;

/**
 * Bits that one pixel occupies in a buffer: bits 16 to 23 of the code, whether the code is known or not.
 */
PRISMO_API uint8_t BitPerPixel(uint32_t pixelFormat) PRISMO_NOEXCEPT;

/**
 * Significant bits of a sample; 0 for an unknown code.
 */
PRISMO_API uint8_t DataDepth(uint32_t pixelFormat) PRISMO_NOEXCEPT;

/**
 * True for monochrome formats and, by design, for every unknown code.
 */
PRISMO_API bool IsMonochromic(uint32_t pixelFormat) PRISMO_NOEXCEPT;

/**
 * True for Bayer formats; false for an unknown code.
 */
PRISMO_API bool IsPixelBayer(uint32_t pixelFormat) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Settings: process-wide, unlocked, to be set before conversions start */

/**
 * Processing mode: 1 (the default) makes the Conv* converters run on the worker pool; with any other value
 * they run on the caller's thread. Stored unchecked. ConvImage with output type 2 or a padded format, the
 * JPEG writers for padded formats, ConvBayerRect_ACPI, ConvByrGR8ToBGRPad_ACPI, ConvByrRG8ToBGRACPI and
 * ConvByrRG8ToBGRPad_ACPI use the pool with every mode but 0.
 */
PRISMO_API uint32_t SetProcMode(int32_t mode) PRISMO_NOEXCEPT;
PRISMO_API int32_t GetProcMode(void) PRISMO_NOEXCEPT;

/**
 * Bayer conversion mode: 1 makes ConvImage, the converter getters and the JPEG writers choose the adaptive
 * demosaic for 8-bit Bayer formats; any other value (0 by default) the bilinear one, except that 8 means grey
 * to ConvImage with output type 2. Stored unchecked.
 */
PRISMO_API uint32_t SetBayerConvMode(int32_t mode) PRISMO_NOEXCEPT;
PRISMO_API int32_t GetBayerConvMode(void) PRISMO_NOEXCEPT;

/**
 * The flag that says whether the lookup tables have been built. While it is 0, every conversion that uses
 * the tables builds them first, except the pooled YUV to BGR conversions. Setting it to 1 before the
 * tables were built makes conversions look up zeros; setting it to 0 does not clear them.
 */
PRISMO_API void SetLUTReady(uint8_t ready) PRISMO_NOEXCEPT;
PRISMO_API uint8_t GetLUTReady(void) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Generic converters */

/**
 * A converter: fills the image at dst from the frame at src. All Conv* functions without further arguments
 * have this type, so what the getters return compares equal to them.
 */
typedef uint32_t (*PrismoConverter)(void* dst, const void* src, uint32_t width, uint32_t height);

/**
 * Converts a frame of any supported format.
 *
 * outputType: 1 BGR; 2 Pad; any other value BGRA (8 to 15 are refused for the two padded formats).
 * demosaic: 0 shows a Bayer frame as grey; otherwise it is demosaiced by the Bayer conversion mode. Output
 * type 2 takes that mode for ConvImageEx's method, so that mode 8 gives grey there.
 * Returns UTL_STS_INVALID_PARAMETER for a format that has no converter; output type 1 has none for
 * PRISMO_MONO8_PADDED, type 2 none for PRISMO_BGRA8. The padded formats look at the size before the buffers;
 * PRISMO_BGR8_PADDED to BGR copies nothing from or to null and succeeds.
 */
PRISMO_API uint32_t ConvImage(uint32_t outputType, uint32_t pixelFormat, uint8_t demosaic, void* dst,
                              const void* src, uint32_t width, uint32_t height) PRISMO_NOEXCEPT;

/**
 * As ConvImage, with the demosaic method (1 adaptive, 8 none, any other bilinear; 10- and 12-bit Bayer has
 * no adaptive form) and the choice of threads (multiThread non-zero: the pool) given by the caller. Output
 * types 8 to 15 give UTL_STS_INVALID_PARAMETER, and so do PRISMO_BGRA8 and PRISMO_BGRA10.
 */
PRISMO_API uint32_t ConvImageEx(uint32_t outputType, uint32_t pixelFormat, void* dst, const void* src,
                                uint32_t width, uint32_t height, uint32_t method,
                                uint8_t multiThread) PRISMO_NOEXCEPT;

/**
 * ConvImageEx with BGRA output; reserved is ignored. Monochrome frames are converted on the caller's thread.
 */
PRISMO_API uint32_t ToBGRA(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                           uint32_t method, uint8_t multiThread, uint8_t reserved) PRISMO_NOEXCEPT;

/**
 * ConvImageEx with BGR output, or Pad output when pad is not 0.
 */
PRISMO_API uint32_t ToBGR(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                          uint32_t method, uint8_t multiThread, uint8_t pad) PRISMO_NOEXCEPT;

/**
 * The converter for a format and the current Bayer conversion mode; null where there is none, as for the two
 * padded formats.
 */
PRISMO_API PrismoConverter GetBGRAConverter(uint32_t pixelFormat, uint8_t demosaic) PRISMO_NOEXCEPT;
PRISMO_API PrismoConverter GetBGRConverter(uint32_t pixelFormat, uint8_t demosaic) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Lookup tables and reduction of depth */

/**
 * Builds the lookup tables of the grey and YUV conversions and sets the LUT-ready flag. Always succeeds.
 */
PRISMO_API uint32_t PrepareLUT(void) PRISMO_NOEXCEPT;

/**
 * Reduces PRISMO_MONO10, PRISMO_MONO12 or PRISMO_MONO16 frames to 8 bits by a right shift of 2, 4 or 8.
 * With pad set every row of a width that is no multiple of 4 is followed by zero bytes up to one.
 * Any other format gives UTL_STS_INVALID_PARAMETER.
 */
PRISMO_API uint32_t MonoNToMono8(void* dst, const void* src, uint32_t pixelFormat, int32_t width,
                                 int32_t height, uint8_t pad) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Monochrome */

/**
 * Monochrome frames of 8 bits, or of N bits with the right shift that reduces a sample to 8 bits, to BGRA
 * (through the grey table) or BGR (rows padded when pad is not 0). The pooled N-bit to BGRA form does not
 * mask the shifted sample to 8 bits: words must lie within the format's depth. The block split of the pool
 * is for even heights: it can leave the last row of an odd height unconverted.
 */
PRISMO_API uint32_t Mono8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t MonoNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t Mono8ToBGR_SP(void* dst, const void* src, uint32_t width, int32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t MonoNToBGR_SP(void* dst, const void* src, int32_t width, int32_t height, uint8_t shift,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t Mono8ToBGRA_MP(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t MonoNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t Mono8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t MonoNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Converters to BGRA. They always run on the caller's thread, whatever the processing mode.
 */
PRISMO_API uint32_t ConvMono8ToBGRA(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono10ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono12ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono16ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMonoNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;

/**
 * Converters to BGR and Pad.
 */
PRISMO_API uint32_t ConvMono8ToBGR(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono10ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono12ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono16ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono8ToBGRPad(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono10ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono12ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvMono16ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Packed colour */

/**
 * RGB or BGR of 8 bits, or of N bits a channel in 16-bit words with the right shift that reduces a channel to
 * 8 bits, to BGRA or BGR (rows padded when pad is not 0). In the pooled N-bit to BGRA forms the bits of a
 * word beyond the format's depth spill into the next channels. reserved is ignored. BGR8PToBGR_MP uses the
 * pool only where it pads.
 */
PRISMO_API uint32_t RGB8PToBGRA_SP(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGB8PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGRA_SP(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGBNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGBNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t reserved) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGB8PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGB8PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGBNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGBNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRA8ToBGRA_SP(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGRA8ToBGR_SP(void* dst, const void* src, int32_t width, int32_t height,
                                  uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Converters. ConvBGR8PToBGR is a plain copy and always runs on the caller's thread.
 */
PRISMO_API uint32_t ConvRGB8PToBGRA(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR8PToBGRA(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB10PToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR10PToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB12PToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR12PToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB8PToBGR(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR8PToBGR(void* dst, const void* src, uint32_t width,
                                   uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB10PToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR10PToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB12PToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR12PToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB8PToBGRPad(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR8PToBGRPad(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB10PToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR10PToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRGB12PToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBGR12PToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* YUV: 4:1:1 (U Y Y V Y Y), 4:2:2 (U Y V Y) and 4:4:4 (U Y V) */

/**
 * BT.601 full range, by lookup tables. The width must be a multiple of 4 (4:1:1) or 2 (4:2:2). The BGRA forms
 * and all _SP forms build the tables when the LUT-ready flag is 0; the pooled BGR forms do not: call
 * PrepareLUT first, or they look up zeros.
 */
PRISMO_API uint32_t YUV411PToBGRA_SP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV422PToBGRA_SP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV444PToBGRA_SP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV411PToBGRA_MP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV422PToBGRA_MP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV444PToBGRA_MP(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV411PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV422PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV444PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV411PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV422PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t YUV444PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Converters. ConvYUV444PToBGRPad is a second name of ConvYUV444PToBGR: it writes unpadded rows.
 */
PRISMO_API uint32_t ConvYUV411PToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV422PToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV444PToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV411PToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV422PToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV444PToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV411PToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV422PToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvYUV444PToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Planar output */

/**
 * Splits an RGB8 or BGR8 frame, or demosaics an 8-bit Bayer frame, into three planes of width bytes a row.
 * Any other format gives UTL_STS_INVALID_PARAMETER. ConvImagePlanar uses the pool in processing mode 1.
 * With pad set, rows of a width that is no multiple of 4 are followed by zero bytes up to one; the pooled
 * Bayer forms write those bytes only in the first and the last row.
 */
PRISMO_API uint32_t ConvImagePlanar(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR, const void* src,
                                    uint32_t width, uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvImagePlanarEx(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR,
                                      const void* src, uint32_t width, uint32_t height, uint8_t multiThread,
                                      uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGB8PToBGRPlanar_SP(void* dstB, void* dstG, void* dstR, const void* src, int32_t width,
                                        int32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RGB8PToBGRPlanar_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                        uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGRPlanar_SP(void* dstB, void* dstG, void* dstR, const void* src, int32_t width,
                                        int32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t BGR8PToBGRPlanar_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                        uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Bilinear demosaic of 8-bit Bayer frames into planes; ConvertBayerFS picks the phase by the format. Meant
 * for even sizes: of an odd width, column width - 2 is left unwritten between the first and the last row, and
 * of an odd height the pooled forms leave row height - 2. A side of 1 gives UTL_STS_INVALID_PARAMETER.
 */
PRISMO_API uint32_t ByrBG8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRFS_SP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRFS_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                     uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvertBayerFS(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR, const void* src,
                                   uint32_t width, uint32_t height) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Bayer: bilinear demosaic */

/**
 * The phase (BG, GB, GR, RG) names the colours of the first two samples of the top row. Width and height must
 * be even: odd sizes give UTL_STS_INVALID_PARAMETER. All averages truncate. N-bit forms take the right shift
 * that reduces a sample to 8 bits, modulo 32.
 */
PRISMO_API uint32_t ByrBG8ToBGRA_SP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRA_SP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRA_SP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRA_SP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBGNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGBNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGRNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRGNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBGNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGBNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGRNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRGNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGRA_MP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRA_MP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRA_MP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRA_MP(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBGNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGBNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGRNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRGNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBGNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGBNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGRNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRGNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Converters.
 */
PRISMO_API uint32_t ConvByrBG8ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGRA(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG8ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGR(void* dst, const void* src, uint32_t width,
                                    uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG8ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGRPad(void* dst, const void* src, uint32_t width,
                                       uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG10ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB10ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR10ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG10ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG10ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB10ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR10ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG10ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG10ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG12ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB12ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR12ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG12ToBGRA(void* dst, const void* src, uint32_t width,
                                      uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG12ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB12ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR12ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG12ToBGR(void* dst, const void* src, uint32_t width,
                                     uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG12ToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBGNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGBNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGRNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRGNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                     uint8_t shift) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Bayer: adaptive colour plane demosaic (8 bits) */

/**
 * Adaptive colour plane interpolation (J. F. Hamilton and J. E. Adams, 1997): green along the direction of
 * the smaller gradient, red and blue as differences to green. The two outermost rows and columns are
 * bilinear. Sizes as for the bilinear demosaic.
 */
PRISMO_API uint32_t ByrBG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrBG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGB8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrGR8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ByrRG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t width, uint32_t height,
                                        uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Converters. ConvByrGR8ToBGRPad_ACPI, ConvByrRG8ToBGRACPI and ConvByrRG8ToBGRPad_ACPI use the pool with
 * every processing mode but 0, the others with mode 1 only.
 */
PRISMO_API uint32_t ConvByrBG8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGRAACPI(void* dst, const void* src, uint32_t width,
                                         uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGRACPI(void* dst, const void* src, uint32_t width,
                                        uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrBG8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGB8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrGR8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvByrRG8ToBGRPad_ACPI(void* dst, const void* src, uint32_t width,
                                            uint32_t height) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Bayer: adaptive demosaic of a rectangle (8 bits) */

/**
 * Demosaics the rectangle at (left, top) of a frame into an image of dstWidth x dstHeight pixels, at
 * (dstLeft, dstTop). Nothing but the rectangle's pixels is written, pad bytes neither. A frame with a side of
 * 0 gives 0.
 *
 * UTL_STS_INVALID_PARAMETER: a null pointer; an odd size of frame or rectangle; a rectangle that is nearer
 * than two pixels to an edge of the frame, or that does not fit into the destination.
 *
 * The phase routines take the phase of the rectangle's own top-left pixel; the Conv*Rect* converters take the
 * phase of the frame and a thread choice (multiThread non-zero: the pool).
 */
PRISMO_API uint32_t RectBG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGB8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGR8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectRG8ToBGRA_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectBG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGB8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGR8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectRG8ToBGR_SP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectBG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGB8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGR8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectRG8ToBGRA_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectBG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGB8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectGR8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RectRG8ToBGR_MP_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBG8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop,
                                           uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvGB8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop,
                                           uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvGR8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop,
                                           uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRG8RectToBGRA_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                           uint32_t left, uint32_t top, uint32_t rectWidth,
                                           uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                           uint32_t dstLeft, uint32_t dstTop,
                                           uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBG8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvGB8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvGR8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvRG8RectToBGR_ACPI(void* dst, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                          uint32_t left, uint32_t top, uint32_t rectWidth,
                                          uint32_t rectHeight, uint32_t dstWidth, uint32_t dstHeight,
                                          uint32_t dstLeft, uint32_t dstTop, uint8_t pad,
                                          uint8_t multiThread) PRISMO_NOEXCEPT;

/**
 * outputKind: 1 BGR; 2 Pad; any other value BGRA. pixelFormat: one of the four 8-bit Bayer formats.
 * ConvBayerRect_ACPI uses the pool with every processing mode but 0.
 */
PRISMO_API uint32_t ConvBayerRect_ACPI(uint32_t outputKind, uint32_t pixelFormat, void* dst, const void* src,
                                       uint32_t srcWidth, uint32_t srcHeight, uint32_t left, uint32_t top,
                                       uint32_t rectWidth, uint32_t rectHeight, uint32_t dstWidth,
                                       uint32_t dstHeight, uint32_t dstLeft, uint32_t dstTop) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ConvBayerRectEx_ACPI(uint32_t outputKind, uint32_t pixelFormat, void* dst,
                                         const void* src, uint32_t srcWidth, uint32_t srcHeight,
                                         uint32_t left, uint32_t top, uint32_t rectWidth, uint32_t rectHeight,
                                         uint32_t dstWidth, uint32_t dstHeight, uint32_t dstLeft,
                                         uint32_t dstTop, uint8_t multiThread) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Mirrors */

/**
 * Mirrors a frame left-right (horizontal non-zero), top-bottom (vertical non-zero) or both, in its own
 * format. UTL_STS_FAILURE for a format without a mirror. YUV 4:1:1 needs a width that is a multiple of 4, YUV
 * 4:2:2 an even one. A mirrored Bayer frame has another phase. ReverseImg uses the pool in processing mode 1
 * when horizontal is set.
 *
 * RvrsImg_MP, and ReverseImg when it uses the pool, return 0 whatever the pool reports. So a time-out does
 * not show: the mirror is incomplete, and workers may still be WRITING TO THE DESTINATION as after a call
 * that returns UTL_STS_TIMEOUT (see the top of this file). A mirror of fewer rows than there are worker
 * threads, a height of 0 included, always waits for the whole time-out there; RvrsImg_SP does not.
 */
PRISMO_API uint32_t ReverseImg(void* dst, const void* src, uint32_t pixelFormat, uint32_t width,
                               uint32_t height, uint8_t horizontal, uint8_t vertical) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RvrsImg_SP(void* dst, const void* src, uint32_t pixelFormat, uint32_t width,
                               uint32_t height, uint8_t horizontal, uint8_t vertical) PRISMO_NOEXCEPT;
PRISMO_API uint32_t RvrsImg_MP(void* dst, const void* src, uint32_t pixelFormat, uint32_t width,
                               uint32_t height, uint8_t horizontal, uint8_t vertical) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Image files */

/**
 * Uncompressed BMP files, rows bottom-up. The plain forms read packed rows, the Pad forms rows padded to a
 * multiple of 4 bytes, the Strm forms rows at the given stride in bytes.
 *
 * UTL_STS_INVALID_PARAMETER: null image or empty frame. UTL_STS_FILE_OPEN_ERROR: no such folder, or no
 * permission. A disk that fills up is not noticed. SaveBmpRGB pads its rows by (-width mod 4) bytes, which
 * other programs read correctly for even widths only; SaveBmpRGBStrm pads as the format asks.
 */
PRISMO_API uint32_t SaveBmpARGB(const void* image, uint32_t width, uint32_t height,
                                const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpRGB(const void* image, uint32_t width, uint32_t height,
                               const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpRGBPad(const void* image, uint32_t width, uint32_t height,
                                  const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpMono(const void* image, uint32_t width, uint32_t height,
                                const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpMonoPad(const void* image, uint32_t width, uint32_t height,
                                   const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpARGBStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                                    const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpRGBStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                                   const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveBmpMonoStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                                    const char* path) PRISMO_NOEXCEPT;

/**
 * JPEG files. SaveJpeg and SaveJpegQ encode BGR (layout 1) or BGRA (any other layout) images, SaveJpegRaw and
 * SaveJpegRQ camera frames of any supported format. Quality 0 to 100; the forms without it use the encoder's
 * default. On Windows the encoder takes BGR rows of a multiple of 4 bytes only: widths that are no
 * multiple of 4 go there as BGRA.
 *
 * UTL_STS_INVALID_PARAMETER: null pointer, empty frame, unsupported format, quality out of range, a Bayer
 * frame of odd width or height. UTL_STS_TIMEOUT: SaveJpegRaw and SaveJpegRQ convert the frame on the pool in
 * the processing modes in which the converter of its format does; there is no file then.
 * UTL_STS_FILE_NOT_FOUND: no such folder. UTL_STS_FAILURE: any other failure of the encoder, for example a
 * side that is too long for it (beyond 65500 pixels with TurboJPEG).
 */
PRISMO_API uint32_t SaveJpeg(const void* image, uint32_t layout, uint32_t width, uint32_t height,
                             const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveJpegQ(const void* image, uint32_t layout, uint32_t quality, uint32_t width,
                              uint32_t height, const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveJpegRaw(const void* image, uint32_t pixelFormat, uint32_t width, uint32_t height,
                                const char* path) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SaveJpegRQ(const void* image, uint32_t pixelFormat, uint32_t quality, uint32_t width,
                               uint32_t height, const char* path) PRISMO_NOEXCEPT;

/**
 * Raw frame files: a header of four little-endian 32-bit words (pixel format, width, height, bytes per row)
 * and the frame as it is. A row is (bits per pixel x width) >> 3 bytes, rounded up to a multiple of 4 for the
 * two padded formats.
 *
 * UTL_STS_INVALID_PARAMETER: null image, empty frame, or a row of 0 bytes (the file is left empty then).
 * UTL_STS_FILE_OPEN_ERROR: null path, no such folder, or no permission. A disk that fills up is not noticed.
 */
PRISMO_API uint32_t SaveRWH(const void* image, uint32_t pixelFormat, uint32_t width, uint32_t height,
                            const char* path) PRISMO_NOEXCEPT;

/**
 * Loads a raw frame file. The four outputs may each be null. When *buffer is null, memory of rowSize x height
 * bytes is allocated for the frame: the caller owns it and releases it with FreeRWH. Otherwise the frame is
 * read to where *buffer points. A file that is shorter than its header says is not noticed, nor is reading
 * that fails: bytes of the frame that could not be had are left as they were, those of the header count as 0.
 *
 * UTL_STS_FILE_OPEN_ERROR: null path, no such file, or no permission. UTL_STS_INVALID_PARAMETER: null buffer;
 * the four outputs are filled all the same. UTL_STS_FILE_READ_ERROR: *buffer is null, and there is no memory
 * or the frame has 0 bytes.
 */
PRISMO_API uint32_t LoadRWH(const char* path, uint8_t** buffer, uint32_t* pixelFormat, uint32_t* width,
                            uint32_t* height, uint32_t* rowSize) PRISMO_NOEXCEPT;

/**
 * Releases a frame that LoadRWH allocated; null is ignored.
 */
PRISMO_API void FreeRWH(void* buffer) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Synthesis of camera frames */

/**
 * Makes a Bayer frame of a colour image by keeping one sample of each pixel.
 *
 * siteChannels holds four channel indices: of the top-left, bottom-left, top-right and bottom-right pixel of
 * each 2 x 2 tile, in this order. samplesPerPixel is 3 for BGR, 4 for BGRA. With pad set, source rows occupy
 * a multiple of 4 bytes. `10` stands for 16-bit words that hold 10 (or 12) bits. Null pointers, odd sizes and
 * empty frames give UTL_STS_INVALID_PARAMETER. ToBayer itself does nothing and returns
 * UTL_STS_INVALID_PARAMETER.
 */
PRISMO_API uint32_t ToBayer(void) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer8to8(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer8to10(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                 uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer8to12(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                 uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer10to8(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                 uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer10to10(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                  uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;
PRISMO_API uint32_t ToBayer10to12(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                                  uint32_t height, int32_t samplesPerPixel, uint8_t pad) PRISMO_NOEXCEPT;

/**
 * Turns a PRISMO_BGR8 or PRISMO_BGRA8 image into a camera frame: monochrome, RGB or BGR of 8, 10 or 12 bits,
 * or YUV. With pad set, source rows occupy a multiple of 4 bytes. Bayer targets are accepted and nothing is
 * written. UTL_STS_INVALID_PARAMETER: null pointer, empty frame, any other format, a width that YUV cannot
 * hold.
 */
PRISMO_API uint32_t ToRaw(void* dst, const void* src, uint32_t targetFormat, uint32_t sourceFormat,
                          uint32_t width, uint32_t height, uint8_t pad) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Worker pool */

/**
 * A unit of work on the pool: one callback, run by all worker threads at once over blocks of rows.
 *
 * Callbacks read the fields that describe the images; the rest belongs to the engine. The record lives until
 * the submitting call has returned and the last worker has left the callback.
 */
typedef struct MPWork MPWork;

/** Converts blocks of rows until MPWorkTakeBlock hands out no more. */
typedef void (*MPWorkCallback)(MPWork* work);

struct MPWork {
  uint32_t WorkID; /**< 1 for the first work of a pool, counting up */
  MPWorkCallback Callback;
  int32_t Type; /**< how rows are split: 0 equal, 1 shrinking, 2 shrinking and even */
  const uint8_t* Src;
  uint32_t SrcWidth;
  uint32_t SrcHeight;
  uint32_t SrcStride;
  uint32_t SrcBytesPerPixel;
  uint8_t* Dst;
  uint32_t DstWidth;
  uint32_t DstHeight;
  uint32_t DstStride;
  uint32_t DstBytesPerPixel;
  uint32_t Param; /**< free for the callback */
  int32_t FirstY; /**< first and last row, inclusive */
  int32_t LastY;
  int32_t FirstX; /**< first and last column, inclusive */
  int32_t LastX;
  int32_t DstX;
  int32_t DstY;
  int32_t CurrentY;      /**< next row to hand out */
  int32_t WorkToDo;      /**< blocks not yet finished */
  int32_t AccessCounter; /**< threads inside the callback */
  uint32_t Status;       /**< 0, UTL_STS_TIMEOUT, UTL_STS_FAILURE, or what a callback stored */
  int32_t* BlockList;    /**< row counts, handed out from the last to the first */
  int32_t NextBlock;     /**< index of the next block, -1 when none is left */
  void* Lock;            /**< guards CurrentY, WorkToDo, AccessCounter, Status and NextBlock */
  void* DoneEvent;       /**< raised by the last thread to leave */
};

/**
 * Takes the next block of rows for a callback. first is 1 on the callback's first call for this work and 0
 * after it; every later call reports the previous block as finished. Returns 1 while there is a block with
 * rows: convert rows *firstRow to *firstRow + *rowCount - 1, then call again. Returns 0 when the callback has
 * to return.
 */
PRISMO_API int32_t MPWorkTakeBlock(MPWork* work, int32_t first, int32_t* firstRow,
                                   int32_t* rowCount) PRISMO_NOEXCEPT;

/**
 * Starts the pool with count threads (below 1: the default, processors - 1 but at least 1 and at most 16), at
 * most as many as there are processors. Always returns 0.
 */
PRISMO_API uint32_t StartMPThreads(int32_t count) PRISMO_NOEXCEPT;

/**
 * Ends all worker threads, waits for them, and destroys the pool with its queued works. Must not run beside a
 * conversion on the pool. The next call that needs a pool makes a new one with default settings. Returns 0;
 * 0xFFFFFFFF, and ends nothing, from a callback on the pool, which cannot wait for itself.
 */
PRISMO_API uint32_t TerminateMPThreads(void) PRISMO_NOEXCEPT;

/**
 * As StartMPThreads; a count below 1 means processors - 1, at least 1.
 */
PRISMO_API uint32_t SetMPCount(int32_t count) PRISMO_NOEXCEPT;

/**
 * The number of worker threads wanted. Makes a pool if there is none, without starting it.
 */
PRISMO_API int32_t GetMPCount(void) PRISMO_NOEXCEPT;

/**
 * True while there is no pool.
 */
PRISMO_API bool IsMPMngrNULL(void) PRISMO_NOEXCEPT;

/**
 * Priority of the worker threads on the scale -2 (lowest), 0 (normal, the default) to 2 (highest). Stored
 * unchecked; workers apply it as far as the system lets them.
 */
PRISMO_API uint32_t SetMPThreadPriority(int32_t priority) PRISMO_NOEXCEPT;
PRISMO_API int32_t GetMPThreadPriority(void) PRISMO_NOEXCEPT;

/**
 * How long a submitting call waits, in milliseconds: 1000 by default, 0 polls, 0xFFFFFFFF waits for ever.
 */
PRISMO_API uint32_t SetMPTimeout_msec(uint32_t msec) PRISMO_NOEXCEPT;
PRISMO_API uint32_t GetMPTimeout_msec(void) PRISMO_NOEXCEPT;

/**
 * Runs a callback of the application's own on the pool and waits for it: 0, UTL_STS_TIMEOUT, UTL_STS_FAILURE
 * when the callback threw, or the status that the callback stored in the work. Arguments are not checked.
 *
 * blockRows is the number of rows of a block in type 0 (below 1: rows / threads). A work that ends up with a
 * block of no rows (type 1: fewer rows than threads, type 2: fewer rows than twice the threads, type 0:
 * blockRows above the number of rows), or of an unknown type, ends with UTL_STS_TIMEOUT after the full
 * time-out.
 */
PRISMO_API uint32_t ExecWork0(MPWorkCallback callback, uint32_t firstX, uint32_t lastX, uint32_t firstY,
                              uint32_t lastY, uint32_t dstX, uint32_t dstY, const void* src,
                              uint32_t srcWidth, uint32_t srcHeight, uint32_t srcBytesPerPixel,
                              uint32_t srcStride, void* dst, uint32_t dstWidth, uint32_t dstHeight,
                              uint32_t dstBytesPerPixel, uint32_t dstStride, uint32_t param,
                              uint32_t blockRows, uint32_t type) PRISMO_NOEXCEPT;

/**
 * ExecWork0 over the whole width, source and destination of the same size.
 */
PRISMO_API uint32_t ExecWork1(MPWorkCallback callback, uint32_t firstY, uint32_t lastY, const void* src,
                              uint32_t width, uint32_t height, uint32_t srcBytesPerPixel, uint32_t srcStride,
                              void* dst, uint32_t dstBytesPerPixel, uint32_t dstStride, uint32_t param,
                              uint32_t blockRows, uint32_t type) PRISMO_NOEXCEPT;

/**
 * ExecWork1 with the same pixel size and stride on both sides.
 */
PRISMO_API uint32_t ExecWork2(MPWorkCallback callback, uint32_t firstY, uint32_t lastY, const void* src,
                              uint32_t width, uint32_t height, uint32_t bytesPerPixel, uint32_t stride,
                              void* dst, uint32_t param, uint32_t blockRows, uint32_t type) PRISMO_NOEXCEPT;

/**
 * ExecWork0 without waiting; the handle is for WaitWorkDone, which must be called once for it. Rows come
 * before columns here, unlike in ExecWork0. Returns 0; UTL_STS_INVALID_PARAMETER without a place for the
 * handle.
 */
PRISMO_API uint32_t StartWork(MPWork** work, MPWorkCallback callback, uint32_t firstY, uint32_t lastY,
                              uint32_t firstX, uint32_t lastX, uint32_t dstX, uint32_t dstY, const void* src,
                              uint32_t srcWidth, uint32_t srcHeight, uint32_t srcBytesPerPixel,
                              uint32_t srcStride, void* dst, uint32_t dstWidth, uint32_t dstHeight,
                              uint32_t dstBytesPerPixel, uint32_t dstStride, uint32_t param,
                              uint32_t blockRows, uint32_t type) PRISMO_NOEXCEPT;

/**
 * Waits for a started work, releases it and returns its status. The handle is invalid afterwards.
 */
PRISMO_API uint32_t WaitWorkDone(MPWork* work) PRISMO_NOEXCEPT;

/* ---------------------------------------------------------------------------------------------- */
/* Diagnostic log of the pool */

/**
 * Level of the records that are kept: 0 DEBUG, 1 INFO, 2 WARN, 3 ERROR, 4 FATAL; above 4
 * UTL_STS_INVALID_PARAMETER. The two flags make the pool save its log after an error and when it ends.
 */
PRISMO_API uint32_t SetMPLogLevel(uint32_t level) PRISMO_NOEXCEPT;
PRISMO_API uint32_t GetMPLogLevel(void) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SetMPLogSaveOnError(int32_t on) PRISMO_NOEXCEPT;
PRISMO_API int32_t GetMPLogSaveOnError(void) PRISMO_NOEXCEPT;
PRISMO_API uint32_t SetMPLogTerminationLog(int32_t on) PRISMO_NOEXCEPT;
PRISMO_API int32_t GetMPLogTerminationLog(void) PRISMO_NOEXCEPT;

/**
 * Renders a saved log as text, leaving out records below the given level. UTL_STS_FILE_OPEN_ERROR or
 * UTL_STS_FILE_READ_ERROR on failure.
 */
PRISMO_API uint32_t ConvLogPXU(const char* logPath, const char* textPath, uint32_t level) PRISMO_NOEXCEPT;

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* PRISMOUTL_H_ */
