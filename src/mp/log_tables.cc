#include "mp/log_tables.h"

#include <algorithm>
#include <span>

namespace prismo::mp {
namespace {

// clang-format off
constexpr const char* kFunctionNames[] = {
    /*   0 */ "MPManager", "MPManager::SetThreadCount", "MPManager::GetThreadCount",
              "MPManager::CloseAllThreads", "MPManager::SetThreadPriority", "MPManager::GetThreadPriority",
              "MPManager::ExecWork", "MPManager::StartWork", "MPManager::WaitWorkDone",
              "MPManager::AppendWork",
    /*  10 */ "MPManager::RemoveWork", "MPManager::ReleaseWork", "MPManager::ExecFunc",
              "MPManager::UpdateCurrentWork", "MPManager::ThreadExec", "MPWork", "MPWork::TryAccess",
              "MPWork::SetStatus", "MPWork::GetWork", "MPWork::GetWorkLog",
    /*  20 */ "PrepareLUT", "BitPerPixe", "DataDepth", "IsMonochromic", "IsPixelBayer", "SaveRWH",
              "LoadRWH", "SaveBmpARGB", "SaveBmpRGB", "SaveBmpMono",
    /*  30 */ "ReverseImg", "SaveJpegRaw", "SaveJpegRQ", "SaveJpeg", "SaveJpegQ", "SaveBmpARGBStrm",
              "SaveBmpRGBStrm", "SaveBmpMonoStrm", "ConvImage:", "ConvImageEx",
    /*  40 */ "SetBayerConvMode:", "GetBayerConvMode", "SetProcMode", "GetProcMode", "GetBGRAConverter",
              "ConvMono8ToBGRA", "ConvMono10ToBGRA", "ConvMono12ToBGRA", "ConvMono16ToBGRA",
              "ConvMonoNToBGRA",
    /*  50 */ "ConvByrGR8ToBGRA", "ConvByrRG8ToBGRA", "ConvByrGB8ToBGRA", "ConvByrBG8ToBGRA",
              "ConvByrGR10ToBGRA", "ConvByrRG10ToBGRA", "ConvByrGB10ToBGRA", "ConvByrBG10ToBGRA",
              "ConvByrGR12ToBGRA", "ConvByrRG12ToBGRA",
    /*  60 */ "ConvByrGB12ToBGRA", "ConvByrBG12ToBGRA", "ConvByrGRNToBGRA", "ConvByrRGNToBGRA",
              "ConvByrGBNToBGRA", "ConvByrBGNToBGRA", "ConvRGB8PToBGRA", "ConvBGR8PToBGRA",
              "ConvRGB10PToBGRA", "ConvBGR10PToBGRA",
    /*  70 */ "ConvRGB12PToBGRA", "ConvBGR12PToBGRA", "ConvRGBNPToBGRA", "ConvBGRNPToBGRA",
              "ConvYUV411PToBGRA", "ConvYUV422PToBGRA", "ConvYUV444PToBGRA", "ConvByrGR8ToBGRAACPI",
              "ConvByrRG8ToBGRAACPI", "ConvByrGB8ToBGRAACPI",
    /*  80 */ "ConvByrBG8ToBGRAACPI", "GetBGRConverter", "ConvMono8ToBGR", "ConvMono10ToBGR",
              "ConvMono12ToBGR", "ConvMono16ToBGR", "ConvMonoNToBGR", "ConvByrGR8ToBGR", "ConvByrRG8ToBGR",
              "ConvByrGB8ToBGR",
    /*  90 */ "ConvByrBG8ToBGR", "ConvByrGR10ToBGR", "ConvByrRG10ToBGR", "ConvByrGB10ToBGR",
              "ConvByrBG10ToBGR", "ConvByrGR12ToBGR", "ConvByrRG12ToBGR", "ConvByrGB12ToBGR",
              "ConvByrBG12ToBGR", "ConvByrGRNToBGR",
    /* 100 */ "ConvByrRGNToBGR", "ConvByrGBNToBGR", "ConvByrBGNToBGR", "ConvRGB8PToBGR", "ConvBGR8PToBGR",
              "ConvRGB10PToBGR", "ConvBGR10PToBGR", "ConvRGB12PToBGR", "ConvBGR12PToBGR", "ConvRGBNPToBGR",
    /* 110 */ "ConvBGRNPToBGR", "YUV411PToBGR", "ConvYUV422PToBGR", "ConvYUV444PToBGR",
              "ConvByrGR8ToBGRACPI", "ConvByrRG8ToBGRACPI", "ConvByrGB8ToBGRACPI", "ConvByrBG8ToBGRACPI",
              "ConvMono8ToBGRPad", "ConvMono10ToBGRPad",
    /* 120 */ "ConvMono12ToBGRPad", "ConvMono16ToBGRPad", "ConvMonoNToBGRPad", "ConvByrGR8ToBGRPad",
              "ConvByrRG8ToBGRPad", "ConvByrGB8ToBGRPad", "ConvByrBG8ToBGRPad", "ConvByrGR10ToBGRPad",
              "ConvByrRG10ToBGRPad", "ConvByrGB10ToBGRPad",
    /* 130 */ "ConvByrBG10ToBGRPad", "ConvByrGR12ToBGRPad", "ConvByrRG12ToBGRPad", "ConvByrGB12ToBGRPad",
              "ConvByrBG12ToBGRPad", "ConvByrGRNToBGRPad", "ConvByrRGNToBGRPad", "ConvByrGBNToBGRPad",
              "ConvByrBGNToBGRPad", "ConvRGB8PToBGRPad",
    /* 140 */ "ConvBGR8PToBGRPad", "ConvRGB10PToBGRPad", "ConvBGR10PToBGRPad", "ConvRGB12PToBGRPad",
              "ConvBGR12PToBGRPad", "ConvYUV411PToBGRPad", "ConvYUV422PToBGRPad", "ConvYUV444PToBGRPad",
              "ConvByrGR8ToBGRPad_ACPI", "ConvByrRG8ToBGRPad_ACPI",
    /* 150 */ "ConvByrGB8ToBGRPad_ACPI", "ConvByrBG8ToBGRPad_ACPI", "ConvGR8RectToBGRA_ACPI",
              "ConvRG8RectToBGRA_ACPI", "ConvGB8RectToBGRA_ACPI", "ConvBG8RectToBGRA_ACPI",
              "ConvGR8RectToBGR_ACPI", "ConvRG8RectToBGR_ACPI", "ConvGB8RectToBGR_ACPI",
              "ConvBG8RectToBGR_ACPI",
    /* 160 */ "ConvGR8RectToBGRA_MP_ACPI", "ConvRG8RectToBGRA_MP_ACPI", "ConvGB8RectToBGRA_MP_ACPI",
              "ConvBG8RectToBGRA_MP_ACPI", "ConvGR8RectToBGR_MP_ACPI", "ConvRG8RectToBGR_MP_ACPI",
              "ConvGB8RectToBGR_MP_ACPI", "ConvBG8RectToBGR_MP_ACPI", "Mono8ToBGRA_SP", "MonoNToBGRA_SP",
    /* 170 */ "ByrGR8ToBGRA_SP", "ByrRG8ToBGRA_SP", "ByrGB8ToBGRA_SP", "ByrBG8ToBGRA_SP",
              "ByrGR8ToBGRA_SP_ACPI", "ByrRG8ToBGRA_SP_ACPI", "ByrGB8ToBGRA_SP_ACPI",
              "ByrBG8ToBGRA_SP_ACPI", "ByrGRNToBGRA_SP", "ByrRGNToBGRA_SP",
    /* 180 */ "ByrGBNToBGRA_SP", "ByrBGNToBGRA_SP", "RGB8PToBGRA_SP", "BGR8PToBGRA_SP", "RGBNToBGRA_SP",
              "BGRNToBGRA_SP", "YUV411PToBGRA_SP", "YUV422PToBGRA_S", "YUV444PToBGRA_SP", "Mono8ToBGR_SP",
    /* 190 */ "MonoNToBGR_SP", "ByrGR8ToBGR_SP", "ByrRG8ToBGR_SP", "ByrGB8ToBGR_SP", "ByrBG8ToBGR_SP",
              "ByrGR8ToBGR_SP_ACPI", "ByrRG8ToBGR_SP_ACPI", "ByrGB8ToBGR_SP_ACPI", "ByrBG8ToBGR_SP_ACP",
              "ByrGRNToBGR_SP",
    /* 200 */ "ByrRGNToBGR_SP", "ByrGBNToBGR_SP", "ByrBGNToBGR_SP", "RGB8PToBGR_SP", "BGR8PToBGR_S",
              "RGBNToBGR_SP", "BGRNToBGR_SP", "YUV411PToBGR_SP", "YUV422PToBGR_SP", "YUV444PToBGR_SP",
    /* 210 */ "Mono8ToBGRA_MP", "MonoNToBGRA_MP", "ByrGR8ToBGRA_MP", "ByrRG8ToBGRA_MP", "ByrGB8ToBGRA_MP",
              "ByrBG8ToBGRA_MP", "ByrGR8ToBGRA_MP_ACPI", "ByrRG8ToBGRA_MP_ACPI", "ByrGB8ToBGRA_MP_ACPI",
              "ByrBG8ToBGRA_MP_ACPI",
    /* 220 */ "ByrGRNToBGRA_MP", "ByrRGNToBGRA_MP", "ByrGBNToBGRA_MP", "ByrBGNToBGRA_MP", "RGB8PToBGRA_MP",
              "BGR8PToBGRA_MP", "RGBNToBGRA_MP", "BGRNToBGRA_MP", "YUV411PToBGRA_MP", "YUV422PToBGRA_MP",
    /* 230 */ "YUV444PToBGRA_MP", "Mono8ToBGR_MP", "MonoNToBGR_MP", "ByrGR8ToBGR_MP", "ByrRG8ToBGR_MP",
              "ByrGB8ToBGR_MP", "ByrBG8ToBGR_MP", "ByrGR8ToBGR_MP_ACPI", "ByrRG8ToBGR_MP_ACPI",
              "ByrGB8ToBGR_MP_ACPI",
    /* 240 */ "ByrBG8ToBGR_MP_ACPI", "ByrGRNToBGR_MP", "ByrRGNToBGR_MP", "ByrGBNToBGR_MP", "ByrBGNToBGR_MP",
              "RGB8PToBGR_MP", "BGR8PToBGR_MP", "RGBNToBGR_MP", "BGRNToBGR_MP", "YUV411PToBGR_MP",
    /* 250 */ "YUV422PToBGR_MP", "YUV444PToBGR_MP", "RectBG8ToBGRA_MP_ACPI", "RectBG8ToGBRA_MP_ACPI",
              "RectBG8ToGRRA_MP_ACPI", "RectBG8ToRGRA_MP_ACPI", "RectBG8ToBGR_MP_ACPI",
              "RectBG8ToGBR_MP_ACPI", "RectBG8ToGRR_MP_ACPI", "RectBG8ToRGR_MP_ACPI",
    /* 260 */ "RvrsImg_SP", "RvrsImg_MP:", "ToBayer", "ToBayer8to8", "ToBayer8to10", "ToBayer8to12",
              "ToBayer10to8", "ToBayer10to10", "ToBayer10to12", "ToRaw",
    /* 270 */ "MonoNToMono8", "GetPxlFmt", "GetLUTReady", "SetLUTReady", "SetMPCount", "GetMPCount",
              "StartMPThreads", "TerminateMPThreads", "SetMPThreadPriority", "GetMPThreadPriority",
    /* 280 */ "RevMono8_YNWK", "RevMono8_NYWK", "RevMono8_YYWK", "RevMonoN_YNWK", "RevMonoN_NYWK",
              "RevMonoN_YYWK", "RevYUV411_YNWK", "RevYUV411_NYWK", "_RevYUV411_YYWK", "RevYUV422_YNWK",
    /* 290 */ "RevYUV422_NYWK", "RevYUV422_YYWK", "Rev3CMP8_YNWK", "Rev3CMP8_NYWK", "Rev3CMP8_YYWK",
              "Rev3CMPN_YNWK", "Rev3CMPN_NYWK", "Rev3CMPN_YYWK", "BGGR8ToBGRA_WK", "BGGRNToBGRA_WK",
    /* 300 */ "BGGR8ToBGRA_ACPI_G_WK", "BGGR8ToBGRA_ACPI_BR_WK", "GBRG8ToBGRA_WK", "GBRGNToBGRA_WK",
              "GBRG8ToBGRA_ACPI_G_WK", "GBRG8ToBGRA_ACPI_BR_WK", "BGGR8ToBGR_WK", "BGGRNToBGR_WK",
              "BGGR8ToBGR_ACPI_G_WK", "BGGR8ToBGR_ACPI_BR_WK",
    /* 310 */ "GBRG8ToBGR_WK", "GBRGNToBGR_WK", "GBRG8ToBGR_ACPI_G_WK", "GBRG8ToBGR_ACPI_BR_WK",
              "RGB8ToBGRA_WK", "BGR8ToBGRA_WK", "RGBNToBGRA_WK", "BGRNToBGRA_WK", "RGB8ToBGR_WK",
              "BGR8ToBGR_WK",
    /* 320 */ "RGBNToBGR_W", "BGRNToBGR_WK", "Mono8ToBGRA_WK", "MonoNToBGRA_WK", "Mono8ToBGR_WK",
              "MonoNToBGR_WK", "YUV411ToBGRA_WK", "_YUV422ToBGRA_WK", "YUV444ToBGRA_WK", "YUV411ToBGR_WK",
    /* 330 */ "YUV422ToBGR_WK", "YUV444ToBGR_WK", "BGGR8ToBGRFS_WK", "GBRG8ToBGRFS_WK", "BGR8ToBGRFS_WK",
    /* 335 */ "", "", "", "", "", "",
};
// clang-format on
static_assert(std::size(kFunctionNames) == kLogFunctionCount);

constexpr uint32_t kAnyKind = 0xFFFFFFFF;

// What chooses between the two texts of a message.
enum class Choice {
  kNone,
  kArgument1,             // not 0: the first text
  kArgument2,             // not 0: the first text
  kArgument5,             // not 0: the first text
  kArgument2NotNegative,  // the first text
};

struct Functions {
  uint32_t first, last;
};

struct Message {
  std::span<const Functions> functions;
  uint32_t kind;
  const char* text;
  Choice choice = Choice::kNone;
  const char* other_text = nullptr;
};

constexpr Functions kManager[] = {{0, 0}};
constexpr Functions kSetThreadCount[] = {{1, 1}};
constexpr Functions kGetThreadCount[] = {{2, 2}};
constexpr Functions kCloseAllThreads[] = {{3, 3}};
constexpr Functions kSetThreadPriority[] = {{4, 4}};
constexpr Functions kGetThreadPriority[] = {{5, 5}};
constexpr Functions kExecWork[] = {{6, 6}};
constexpr Functions kExecOrStartWork[] = {{6, 7}};
constexpr Functions kExecStartOrWait[] = {{6, 8}};
constexpr Functions kExecOrWait[] = {{6, 6}, {8, 8}};
constexpr Functions kWaitWorkDone[] = {{8, 8}};
constexpr Functions kAppendWork[] = {{9, 9}};
constexpr Functions kRemoveWork[] = {{10, 10}};
constexpr Functions kReleaseWork[] = {{11, 11}};
constexpr Functions kAppendRemoveOrRelease[] = {{9, 11}};
constexpr Functions kExecFunc[] = {{12, 12}};
constexpr Functions kUpdateCurrentWork[] = {{13, 13}};
constexpr Functions kThreadExec[] = {{14, 14}};
constexpr Functions kWork[] = {{15, 15}};
constexpr Functions kTryAccess[] = {{16, 16}};
constexpr Functions kSetStatus[] = {{17, 17}};
constexpr Functions kGetWork[] = {{18, 19}};
constexpr Functions kConversions[] = {{210, 259}};
constexpr Functions kBilinear[] = {{212, 215}, {220, 223}, {233, 236}, {241, 244}};
constexpr Functions kAdaptive[] = {{216, 219}, {237, 240}};
constexpr Functions kBgrToBgr[] = {{246, 246}};
constexpr Functions kAdaptiveRectangle[] = {{252, 259}};
constexpr Functions kWorkers[] = {{280, 334}};
constexpr Functions kPlainWorkers[] = {{280, 297}, {314, 331}, {334, 334}};
constexpr Functions kBgGrWorkers[] = {{298, 301}, {306, 309}};
constexpr Functions kGbRgWorkers[] = {{302, 305}, {310, 313}, {332, 333}};

// No two entries apply to the same function and kind.
constexpr Message kMessages[] = {
    {kManager, 0, "Instance created.\n"},
    {kManager, 4, "Terminater started.\n"},
    {kSetThreadCount, 0, "Started. Argument:%d, thread count:%d, current threads:%d.\n"},
    {kSetThreadCount, 4, "Finished. Argument:%d, thread count:%d, current threads:%d.\n"},
    {kGetThreadCount, kAnyKind, "Called. Returns %d, current threads:%d.\n"},
    {kCloseAllThreads, 0, "Started. Thread count:%d, current threads:%d.\n"},
    {kCloseAllThreads, 4, "Finished. Thread count:%d, current threads:%d.\n"},
    {kSetThreadPriority, 0, "Started. Priority: %d -> %d.\n"},
    {kSetThreadPriority, 4, "Finished. Priority:%d.\n"},
    {kGetThreadPriority, kAnyKind, "Called. Returns %d.\n"},
    {kExecStartOrWait, 0, "Type %d started.              Callback:%08x, FirstY:%4d, LastY:%4d.\n"},
    {kExecWork, 1, "Type %d. Registered MPWork.   Callback:%08x, FirstY:%4d, LastY:%4d.\n"},
    {kExecOrStartWork, 4,
     "Type %d finished in failure.  Callback:%08x, FirstY:%4d, LastY:%4d, status:%08x.\n", Choice::kArgument5,
     "Type %d finished in success.  Callback:%08x, FirstY:%4d, LastY:%4d, status:%08x.\n"},
    {kExecOrWait, 7, "Type %d. MPWork time out.     Callback:%08x, FirstY:%4d, LastY:%4d.\n"},
    {kWaitWorkDone, 4, "Type %d finished in failure. Status:%08x.\n", Choice::kArgument1,
     "Type %d finished in success. Status:%08x.\n"},
    {kAppendRemoveOrRelease, 0, "Started.                     Callback:%08x, FirstY:%4d, LastY:%4d.\n"},
    {kAppendWork, 1, "Registered MPWork.           Callback:%08x, FirstY:%4d, LastY:%4d, WorkToDo:%d.\n"},
    {kAppendWork, 4, "Finished.                    Callback:%08x, FirstY:%4d, LastY:%4d, WorkToDo:%d.\n"},
    {kRemoveWork, 4, "Finished.                    Callback:%8x, FirstY:%4d, LastY:%4d, WorkToDo:%d.\n"},
    {kReleaseWork, 1, "Releases MPWork.             Callback:%08x.\n"},
    {kReleaseWork, 2, "%d threads are accessing. Registers MPWork to timeout list. Callback:%08x.\n"},
    {kExecFunc, 0, "Started. m_PCurrentWork:%08x, m_aoWork.size():%d.\n"},
    {kExecFunc, 1, "Got work.\n"},
    {kExecFunc, 2, "End of while loop.\n"},
    {kExecFunc, 3, "Releases timeout MPWork.\n"},
    {kExecFunc, 7, "Timeout error(%08x).\n"},
    {kUpdateCurrentWork, 0, "Started. ID of finished work:%d, ID of CurrentWork:%d.\n",
     Choice::kArgument2NotNegative, "Started. ID of finished work:%d, CurrentWork is none.\n"},
    {kThreadExec, 2, "Changed Thread priority %d -> %d. \n"},
    {kWork, 0, "Instance created.\n"},
    {kWork, 4, "Terminated.\n"},
    {kTryAccess, 0, "Started. Access counter:%d.\n"},
    {kTryAccess, 4, "Access allowed(%d), access counter:%d.\n", Choice::kArgument1,
     "Access denied. Work already done(%d), access counter:%d.\n"},
    {kSetStatus, kAnyKind, "Called. Status:%08x.\n"},
    {kGetWork, 0, "Started (%d). WorkToDo:%d, access counter:%d.\n", Choice::kArgument1,
     "Re-started with previous work report(%d). WorkToDo:%d, access counter:%d.\n"},
    {kGetWork, 1, "Raised 'Done' event. WorkToDo:%d, access counter:%d.\n"},
    {kGetWork, 4, "Finished acquiring work block. Start:%d, len:%d, WorkToDo:%d, access counter:%d.\n",
     Choice::kArgument2, "Finished (Work already done). Start:%d, len:%d, WorkToDo:%d, access counter:%d.\n"},
    {kConversions, 6, "Skipped due to zero target size. Width:%d, Height:%d.\n"},
    {kBilinear, 1,
     "Finished calculating top and bottom rows. Starts middle row calculation."
     "('Finished' log will not be written.)\n"},
    {kAdaptive, 1, "Finished calculating top and bottom rows. Starts middle row 'G' calculation.\n"},
    {kAdaptive, 2,
     "Finished 'G' calculation. Starts middle row 'R' and 'B' calculation."
     "('Finished' log will not be written.)\n"},
    {kBgrToBgr, 1, "Done single thread memcpy.\n"},
    {kAdaptiveRectangle, 1, "Finished calculating 'G'. Starts 'B' and 'R' calculation.\n"},
    {kAdaptiveRectangle, 2,
     "Finished calculating top and bottom rows 'B' and 'R( values. Starts middle row 'R' and 'B' calculation."
     "('Finished' log will not be written.)\n"},
    {kPlainWorkers, 0, "Started. WidthS:%d, HeightS:%d.\n"},
    {kBgGrWorkers, 0, "Started GR mode(%d). WidthS:%d, HeightS:%d.\n", Choice::kArgument1,
     "Started BG mode(%d). WidthS:%d, HeightS:%d.\n"},
    {kGbRgWorkers, 0, "Started RG mode(%d). WidthS:%d, HeightS:%d.\n", Choice::kArgument1,
     "Started GB mode(%d). WidthS:%d, HeightS:%d.\n"},
    {kWorkers, 1, "Got row range to calculate. Start:%d, len:%d\n"},
    {kWorkers, 2, "Calculated row range. Start:%d, len:%d\n"},
};

const char* DefaultText(uint32_t kind) {
  switch (kind) {
    case 0:
      return "Started.\n";
    case 4:
      return "Finished.\n";
    case 5:
      return "Called.\n";
    case 6:
      return "Warning.\n";
    case 7:
      return "Error. Status:%08x.\n";
    default:
      return "\n";
  }
}

bool Applies(const Message& message, const LogRecord& record) {
  return (message.kind == record.kind || message.kind == kAnyKind) &&
         std::ranges::any_of(message.functions, [&](const Functions& functions) {
           return functions.first <= record.function && record.function <= functions.last;
         });
}

bool FirstTextChosen(Choice choice, const std::array<uint32_t, 8>& arguments) {
  switch (choice) {
    case Choice::kNone:
      return true;
    case Choice::kArgument1:
      return arguments[0] != 0;
    case Choice::kArgument2:
      return arguments[1] != 0;
    case Choice::kArgument5:
      return arguments[4] != 0;
    case Choice::kArgument2NotNegative:
      return static_cast<int32_t>(arguments[1]) >= 0;
  }
  return true;
}

}  // namespace

const char* LogFunctionName(uint32_t function) {
  return function < kLogFunctionCount ? kFunctionNames[function] : "";
}

const char* LogMessageFormat(const LogRecord& record) {
  for (const Message& message : kMessages) {
    if (Applies(message, record)) {
      return FirstTextChosen(message.choice, record.arguments) ? message.text : message.other_text;
    }
  }
  return DefaultText(record.kind);
}

}  // namespace prismo::mp
