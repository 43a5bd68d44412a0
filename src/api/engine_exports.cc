#include "PrismoUtl.h"
#include "mp/controls.h"

using namespace prismo;

extern "C" {

int32_t MPWorkTakeBlock(MPWork* work, int32_t first, int32_t* firstRow, int32_t* rowCount) noexcept {
  return mp::TakeBlock(work, first != 0, firstRow, rowCount);
}

uint32_t StartMPThreads(int32_t count) noexcept { return Code(mp::StartThreads(count)); }

uint32_t TerminateMPThreads() noexcept { return Code(mp::TerminateThreads()); }

uint32_t SetMPCount(int32_t count) noexcept { return Code(mp::SetCount(count)); }

int32_t GetMPCount() noexcept { return mp::Count(); }

bool IsMPMngrNULL() noexcept { return !mp::HasPool(); }

uint32_t SetMPThreadPriority(int32_t priority) noexcept { return Code(mp::SetPriority(priority)); }

int32_t GetMPThreadPriority() noexcept { return mp::Priority(); }

uint32_t SetMPTimeout_msec(uint32_t msec) noexcept { return Code(mp::SetTimeout(msec)); }

uint32_t GetMPTimeout_msec() noexcept { return mp::Timeout(); }

uint32_t ExecWork0(MPWorkCallback callback, uint32_t firstX, uint32_t lastX, uint32_t firstY, uint32_t lastY,
                   uint32_t dstX, uint32_t dstY, const void* src, uint32_t srcWidth, uint32_t srcHeight,
                   uint32_t srcBytesPerPixel, uint32_t srcStride, void* dst, uint32_t dstWidth,
                   uint32_t dstHeight, uint32_t dstBytesPerPixel, uint32_t dstStride, uint32_t param,
                   uint32_t blockRows, uint32_t type) noexcept {
  return Code(mp::ExecCallback(
      callback, {firstX, lastX, firstY, lastY, dstX, dstY, src, srcWidth, srcHeight, srcBytesPerPixel,
                 srcStride, dst, dstWidth, dstHeight, dstBytesPerPixel, dstStride, param, blockRows, type}));
}

uint32_t ExecWork1(MPWorkCallback callback, uint32_t firstY, uint32_t lastY, const void* src, uint32_t width,
                   uint32_t height, uint32_t srcBytesPerPixel, uint32_t srcStride, void* dst,
                   uint32_t dstBytesPerPixel, uint32_t dstStride, uint32_t param, uint32_t blockRows,
                   uint32_t type) noexcept {
  return Code(mp::ExecCallback(
      callback, mp::WholeWidth(firstY, lastY, src, width, height, srcBytesPerPixel, srcStride, dst,
                               dstBytesPerPixel, dstStride, param, blockRows, type)));
}

uint32_t ExecWork2(MPWorkCallback callback, uint32_t firstY, uint32_t lastY, const void* src, uint32_t width,
                   uint32_t height, uint32_t bytesPerPixel, uint32_t stride, void* dst, uint32_t param,
                   uint32_t blockRows, uint32_t type) noexcept {
  return Code(
      mp::ExecCallback(callback, mp::WholeWidth(firstY, lastY, src, width, height, bytesPerPixel, stride, dst,
                                                bytesPerPixel, stride, param, blockRows, type)));
}

uint32_t StartWork(MPWork** work, MPWorkCallback callback, uint32_t firstY, uint32_t lastY, uint32_t firstX,
                   uint32_t lastX, uint32_t dstX, uint32_t dstY, const void* src, uint32_t srcWidth,
                   uint32_t srcHeight, uint32_t srcBytesPerPixel, uint32_t srcStride, void* dst,
                   uint32_t dstWidth, uint32_t dstHeight, uint32_t dstBytesPerPixel, uint32_t dstStride,
                   uint32_t param, uint32_t blockRows, uint32_t type) noexcept {
  return Code(mp::StartCallback(
      work, callback,
      {firstX, lastX, firstY, lastY, dstX, dstY, src, srcWidth, srcHeight, srcBytesPerPixel, srcStride, dst,
       dstWidth, dstHeight, dstBytesPerPixel, dstStride, param, blockRows, type}));
}

uint32_t WaitWorkDone(MPWork* work) noexcept { return Code(mp::WaitCallback(work)); }

uint32_t SetMPLogLevel(uint32_t level) noexcept { return Code(mp::SetLogLevel(level)); }

uint32_t GetMPLogLevel() noexcept { return mp::LogLevelInForce(); }

uint32_t SetMPLogSaveOnError(int32_t on) noexcept { return Code(mp::SetLogSaveOnError(on != 0)); }

int32_t GetMPLogSaveOnError() noexcept { return mp::LogSaveOnError(); }

uint32_t SetMPLogTerminationLog(int32_t on) noexcept { return Code(mp::SetLogTerminationLog(on != 0)); }

int32_t GetMPLogTerminationLog() noexcept { return mp::LogTerminationLog(); }

uint32_t ConvLogPXU(const char* logPath, const char* textPath, uint32_t level) noexcept {
  return Code(mp::ConvertSavedLog(logPath, textPath, level));
}

}  // extern "C"
