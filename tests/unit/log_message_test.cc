// The vocabulary of the text form: every name, and every message with its arguments filled in.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "mp/log_tables.h"
#include "mp/log_text.h"

namespace prismo::mp {
namespace {

constexpr uint32_t kUnnamedFrom = 335;
constexpr uint32_t kAny = 1000;
constexpr uint32_t kKindsTried[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0x80000000, 0xFFFFFFFF};
constexpr size_t kMessageStart = 66;  // 8 + " ThreadID:" 6 + " WorkID:" 4 + ' ' 28 + ' '

// In the order of their indices from 0.
constexpr const char* kNames =
    "MPManager MPManager::SetThreadCount MPManager::GetThreadCount MPManager::CloseAllThreads "
    "MPManager::SetThreadPriority MPManager::GetThreadPriority MPManager::ExecWork "
    "MPManager::StartWork MPManager::WaitWorkDone MPManager::AppendWork MPManager::RemoveWork "
    "MPManager::ReleaseWork MPManager::ExecFunc MPManager::UpdateCurrentWork MPManager::ThreadExec "
    "MPWork MPWork::TryAccess MPWork::SetStatus MPWork::GetWork MPWork::GetWorkLog PrepareLUT "
    "BitPerPixe DataDepth IsMonochromic IsPixelBayer SaveRWH LoadRWH SaveBmpARGB SaveBmpRGB "
    "SaveBmpMono ReverseImg SaveJpegRaw SaveJpegRQ SaveJpeg SaveJpegQ SaveBmpARGBStrm SaveBmpRGBStrm "
    "SaveBmpMonoStrm ConvImage: ConvImageEx SetBayerConvMode: GetBayerConvMode SetProcMode "
    "GetProcMode GetBGRAConverter ConvMono8ToBGRA ConvMono10ToBGRA ConvMono12ToBGRA ConvMono16ToBGRA "
    "ConvMonoNToBGRA ConvByrGR8ToBGRA ConvByrRG8ToBGRA ConvByrGB8ToBGRA ConvByrBG8ToBGRA "
    "ConvByrGR10ToBGRA ConvByrRG10ToBGRA ConvByrGB10ToBGRA ConvByrBG10ToBGRA ConvByrGR12ToBGRA "
    "ConvByrRG12ToBGRA ConvByrGB12ToBGRA ConvByrBG12ToBGRA ConvByrGRNToBGRA ConvByrRGNToBGRA "
    "ConvByrGBNToBGRA ConvByrBGNToBGRA ConvRGB8PToBGRA ConvBGR8PToBGRA ConvRGB10PToBGRA "
    "ConvBGR10PToBGRA ConvRGB12PToBGRA ConvBGR12PToBGRA ConvRGBNPToBGRA ConvBGRNPToBGRA "
    "ConvYUV411PToBGRA ConvYUV422PToBGRA ConvYUV444PToBGRA ConvByrGR8ToBGRAACPI ConvByrRG8ToBGRAACPI "
    "ConvByrGB8ToBGRAACPI ConvByrBG8ToBGRAACPI GetBGRConverter ConvMono8ToBGR ConvMono10ToBGR "
    "ConvMono12ToBGR ConvMono16ToBGR ConvMonoNToBGR ConvByrGR8ToBGR ConvByrRG8ToBGR ConvByrGB8ToBGR "
    "ConvByrBG8ToBGR ConvByrGR10ToBGR ConvByrRG10ToBGR ConvByrGB10ToBGR ConvByrBG10ToBGR "
    "ConvByrGR12ToBGR ConvByrRG12ToBGR ConvByrGB12ToBGR ConvByrBG12ToBGR ConvByrGRNToBGR "
    "ConvByrRGNToBGR ConvByrGBNToBGR ConvByrBGNToBGR ConvRGB8PToBGR ConvBGR8PToBGR ConvRGB10PToBGR "
    "ConvBGR10PToBGR ConvRGB12PToBGR ConvBGR12PToBGR ConvRGBNPToBGR ConvBGRNPToBGR YUV411PToBGR "
    "ConvYUV422PToBGR ConvYUV444PToBGR ConvByrGR8ToBGRACPI ConvByrRG8ToBGRACPI ConvByrGB8ToBGRACPI "
    "ConvByrBG8ToBGRACPI ConvMono8ToBGRPad ConvMono10ToBGRPad ConvMono12ToBGRPad ConvMono16ToBGRPad "
    "ConvMonoNToBGRPad ConvByrGR8ToBGRPad ConvByrRG8ToBGRPad ConvByrGB8ToBGRPad ConvByrBG8ToBGRPad "
    "ConvByrGR10ToBGRPad ConvByrRG10ToBGRPad ConvByrGB10ToBGRPad ConvByrBG10ToBGRPad "
    "ConvByrGR12ToBGRPad ConvByrRG12ToBGRPad ConvByrGB12ToBGRPad ConvByrBG12ToBGRPad "
    "ConvByrGRNToBGRPad ConvByrRGNToBGRPad ConvByrGBNToBGRPad ConvByrBGNToBGRPad ConvRGB8PToBGRPad "
    "ConvBGR8PToBGRPad ConvRGB10PToBGRPad ConvBGR10PToBGRPad ConvRGB12PToBGRPad ConvBGR12PToBGRPad "
    "ConvYUV411PToBGRPad ConvYUV422PToBGRPad ConvYUV444PToBGRPad ConvByrGR8ToBGRPad_ACPI "
    "ConvByrRG8ToBGRPad_ACPI ConvByrGB8ToBGRPad_ACPI ConvByrBG8ToBGRPad_ACPI ConvGR8RectToBGRA_ACPI "
    "ConvRG8RectToBGRA_ACPI ConvGB8RectToBGRA_ACPI ConvBG8RectToBGRA_ACPI ConvGR8RectToBGR_ACPI "
    "ConvRG8RectToBGR_ACPI ConvGB8RectToBGR_ACPI ConvBG8RectToBGR_ACPI ConvGR8RectToBGRA_MP_ACPI "
    "ConvRG8RectToBGRA_MP_ACPI ConvGB8RectToBGRA_MP_ACPI ConvBG8RectToBGRA_MP_ACPI "
    "ConvGR8RectToBGR_MP_ACPI ConvRG8RectToBGR_MP_ACPI ConvGB8RectToBGR_MP_ACPI "
    "ConvBG8RectToBGR_MP_ACPI Mono8ToBGRA_SP MonoNToBGRA_SP ByrGR8ToBGRA_SP ByrRG8ToBGRA_SP "
    "ByrGB8ToBGRA_SP ByrBG8ToBGRA_SP ByrGR8ToBGRA_SP_ACPI ByrRG8ToBGRA_SP_ACPI ByrGB8ToBGRA_SP_ACPI "
    "ByrBG8ToBGRA_SP_ACPI ByrGRNToBGRA_SP ByrRGNToBGRA_SP ByrGBNToBGRA_SP ByrBGNToBGRA_SP "
    "RGB8PToBGRA_SP BGR8PToBGRA_SP RGBNToBGRA_SP BGRNToBGRA_SP YUV411PToBGRA_SP YUV422PToBGRA_S "
    "YUV444PToBGRA_SP Mono8ToBGR_SP MonoNToBGR_SP ByrGR8ToBGR_SP ByrRG8ToBGR_SP ByrGB8ToBGR_SP "
    "ByrBG8ToBGR_SP ByrGR8ToBGR_SP_ACPI ByrRG8ToBGR_SP_ACPI ByrGB8ToBGR_SP_ACPI ByrBG8ToBGR_SP_ACP "
    "ByrGRNToBGR_SP ByrRGNToBGR_SP ByrGBNToBGR_SP ByrBGNToBGR_SP RGB8PToBGR_SP BGR8PToBGR_S "
    "RGBNToBGR_SP BGRNToBGR_SP YUV411PToBGR_SP YUV422PToBGR_SP YUV444PToBGR_SP Mono8ToBGRA_MP "
    "MonoNToBGRA_MP ByrGR8ToBGRA_MP ByrRG8ToBGRA_MP ByrGB8ToBGRA_MP ByrBG8ToBGRA_MP "
    "ByrGR8ToBGRA_MP_ACPI ByrRG8ToBGRA_MP_ACPI ByrGB8ToBGRA_MP_ACPI ByrBG8ToBGRA_MP_ACPI "
    "ByrGRNToBGRA_MP ByrRGNToBGRA_MP ByrGBNToBGRA_MP ByrBGNToBGRA_MP RGB8PToBGRA_MP BGR8PToBGRA_MP "
    "RGBNToBGRA_MP BGRNToBGRA_MP YUV411PToBGRA_MP YUV422PToBGRA_MP YUV444PToBGRA_MP Mono8ToBGR_MP "
    "MonoNToBGR_MP ByrGR8ToBGR_MP ByrRG8ToBGR_MP ByrGB8ToBGR_MP ByrBG8ToBGR_MP ByrGR8ToBGR_MP_ACPI "
    "ByrRG8ToBGR_MP_ACPI ByrGB8ToBGR_MP_ACPI ByrBG8ToBGR_MP_ACPI ByrGRNToBGR_MP ByrRGNToBGR_MP "
    "ByrGBNToBGR_MP ByrBGNToBGR_MP RGB8PToBGR_MP BGR8PToBGR_MP RGBNToBGR_MP BGRNToBGR_MP "
    "YUV411PToBGR_MP YUV422PToBGR_MP YUV444PToBGR_MP RectBG8ToBGRA_MP_ACPI RectBG8ToGBRA_MP_ACPI "
    "RectBG8ToGRRA_MP_ACPI RectBG8ToRGRA_MP_ACPI RectBG8ToBGR_MP_ACPI RectBG8ToGBR_MP_ACPI "
    "RectBG8ToGRR_MP_ACPI RectBG8ToRGR_MP_ACPI RvrsImg_SP RvrsImg_MP: ToBayer ToBayer8to8 "
    "ToBayer8to10 ToBayer8to12 ToBayer10to8 ToBayer10to10 ToBayer10to12 ToRaw MonoNToMono8 GetPxlFmt "
    "GetLUTReady SetLUTReady SetMPCount GetMPCount StartMPThreads TerminateMPThreads "
    "SetMPThreadPriority GetMPThreadPriority RevMono8_YNWK RevMono8_NYWK RevMono8_YYWK RevMonoN_YNWK "
    "RevMonoN_NYWK RevMonoN_YYWK RevYUV411_YNWK RevYUV411_NYWK _RevYUV411_YYWK RevYUV422_YNWK "
    "RevYUV422_NYWK RevYUV422_YYWK Rev3CMP8_YNWK Rev3CMP8_NYWK Rev3CMP8_YYWK Rev3CMPN_YNWK "
    "Rev3CMPN_NYWK Rev3CMPN_YYWK BGGR8ToBGRA_WK BGGRNToBGRA_WK BGGR8ToBGRA_ACPI_G_WK "
    "BGGR8ToBGRA_ACPI_BR_WK GBRG8ToBGRA_WK GBRGNToBGRA_WK GBRG8ToBGRA_ACPI_G_WK "
    "GBRG8ToBGRA_ACPI_BR_WK BGGR8ToBGR_WK BGGRNToBGR_WK BGGR8ToBGR_ACPI_G_WK BGGR8ToBGR_ACPI_BR_WK "
    "GBRG8ToBGR_WK GBRGNToBGR_WK GBRG8ToBGR_ACPI_G_WK GBRG8ToBGR_ACPI_BR_WK RGB8ToBGRA_WK "
    "BGR8ToBGRA_WK RGBNToBGRA_WK BGRNToBGRA_WK RGB8ToBGR_WK BGR8ToBGR_WK RGBNToBGR_W BGRNToBGR_WK "
    "Mono8ToBGRA_WK MonoNToBGRA_WK Mono8ToBGR_WK MonoNToBGR_WK YUV411ToBGRA_WK _YUV422ToBGRA_WK "
    "YUV444ToBGRA_WK YUV411ToBGR_WK YUV422ToBGR_WK YUV444ToBGR_WK BGGR8ToBGRFS_WK GBRG8ToBGRFS_WK "
    "BGR8ToBGRFS_WK ";

struct Expectation {
  const char* functions;
  uint32_t kind;
  std::array<int64_t, 5> arguments;
  const char* text;
};

constexpr Expectation kExpectations[] = {
    {"0", 0, {11, 42, 33, 44, 55}, "Instance created.\n"},
    {"0", 4, {11, 42, 33, 44, 55}, "Terminater started.\n"},
    {"1", 0, {11, 42, 33, 44, 55}, "Started. Argument:11, thread count:42, current threads:33.\n"},
    {"1",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started. Argument:-1, thread count:-2147483648, current threads:-1000.\n"},
    {"1", 4, {11, 42, 33, 44, 55}, "Finished. Argument:11, thread count:42, current threads:33.\n"},
    {"1",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Finished. Argument:-1, thread count:-2147483648, current threads:-1000.\n"},
    {"2", kAny, {11, 42, 33, 44, 55}, "Called. Returns 11, current threads:42.\n"},
    {"2",
     kAny,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Called. Returns -1, current threads:-2147483648.\n"},
    {"3", 0, {11, 42, 33, 44, 55}, "Started. Thread count:11, current threads:42.\n"},
    {"3",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started. Thread count:-1, current threads:-2147483648.\n"},
    {"3", 4, {11, 42, 33, 44, 55}, "Finished. Thread count:11, current threads:42.\n"},
    {"3",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Finished. Thread count:-1, current threads:-2147483648.\n"},
    {"4", 0, {11, 42, 33, 44, 55}, "Started. Priority: 11 -> 42.\n"},
    {"4", 0, {-1, 0x80000000, -1000, 100000, -1985229329}, "Started. Priority: -1 -> -2147483648.\n"},
    {"4", 4, {11, 42, 33, 44, 55}, "Finished. Priority:11.\n"},
    {"4", 4, {-1, 0x80000000, -1000, 100000, -1985229329}, "Finished. Priority:-1.\n"},
    {"5", kAny, {11, 42, 33, 44, 55}, "Called. Returns 11.\n"},
    {"5", kAny, {-1, 0x80000000, -1000, 100000, -1985229329}, "Called. Returns -1.\n"},
    {"6, 7, 8",
     0,
     {11, 42, 33, 44, 55},
     "Type 11 started.              Callback:0000002a, FirstY:  33, LastY:  44.\n"},
    {"6, 7, 8",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Type -1 started.              Callback:80000000, FirstY:-1000, LastY:100000.\n"},
    {"6",
     1,
     {11, 42, 33, 44, 55},
     "Type 11. Registered MPWork.   Callback:0000002a, FirstY:  33, LastY:  44.\n"},
    {"6",
     1,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Type -1. Registered MPWork.   Callback:80000000, FirstY:-1000, LastY:100000.\n"},
    {"6, 7",
     4,
     {11, 42, 33, 44, 55},
     "Type 11 finished in failure.  Callback:0000002a, FirstY:  33, LastY:  44, status:00000037.\n"},
    {"6, 7",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Type -1 finished in failure.  Callback:80000000, FirstY:-1000, LastY:100000, status:89abcdef.\n"},
    {"6, 7",
     4,
     {21, 22, 23, 24, 0},
     "Type 21 finished in success.  Callback:00000016, FirstY:  23, LastY:  24, status:00000000.\n"},
    {"6, 7",
     4,
     {0, 0, 0, 0, 1},
     "Type 0 finished in failure.  Callback:00000000, FirstY:   0, LastY:   0, status:00000001.\n"},
    {"6, 7",
     4,
     {0, 0, 0, 0, -1},
     "Type 0 finished in failure.  Callback:00000000, FirstY:   0, LastY:   0, status:ffffffff.\n"},
    {"6, 8",
     7,
     {11, 42, 33, 44, 55},
     "Type 11. MPWork time out.     Callback:0000002a, FirstY:  33, LastY:  44.\n"},
    {"6, 8",
     7,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Type -1. MPWork time out.     Callback:80000000, FirstY:-1000, LastY:100000.\n"},
    {"8", 4, {11, 42, 33, 44, 55}, "Type 11 finished in failure. Status:0000002a.\n"},
    {"8", 4, {-1, 0x80000000, -1000, 100000, -1985229329}, "Type -1 finished in failure. Status:80000000.\n"},
    {"8", 4, {0, 22, 23, 24, 25}, "Type 0 finished in success. Status:00000016.\n"},
    {"8", 4, {1, 0, 0, 0, 0}, "Type 1 finished in failure. Status:00000000.\n"},
    {"8", 4, {-1, 0, 0, 0, 0}, "Type -1 finished in failure. Status:00000000.\n"},
    {"9, 10, 11",
     0,
     {11, 42, 33, 44, 55},
     "Started.                     Callback:0000000b, FirstY:  42, LastY:  33.\n"},
    {"9, 10, 11",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started.                     Callback:ffffffff, FirstY:-2147483648, LastY:-1000.\n"},
    {"9",
     1,
     {11, 42, 33, 44, 55},
     "Registered MPWork.           Callback:0000000b, FirstY:  42, LastY:  33, WorkToDo:44.\n"},
    {"9",
     1,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Registered MPWork.           Callback:ffffffff, FirstY:-2147483648, LastY:-1000, WorkToDo:100000.\n"},
    {"9",
     4,
     {11, 42, 33, 44, 55},
     "Finished.                    Callback:0000000b, FirstY:  42, LastY:  33, WorkToDo:44.\n"},
    {"9",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Finished.                    Callback:ffffffff, FirstY:-2147483648, LastY:-1000, WorkToDo:100000.\n"},
    {"10",
     4,
     {11, 42, 33, 44, 55},
     "Finished.                    Callback:       b, FirstY:  42, LastY:  33, WorkToDo:44.\n"},
    {"10",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Finished.                    Callback:ffffffff, FirstY:-2147483648, LastY:-1000, WorkToDo:100000.\n"},
    {"11", 1, {11, 42, 33, 44, 55}, "Releases MPWork.             Callback:0000000b.\n"},
    {"11",
     1,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Releases MPWork.             Callback:ffffffff.\n"},
    {"11",
     2,
     {11, 42, 33, 44, 55},
     "11 threads are accessing. Registers MPWork to timeout list. Callback:0000002a.\n"},
    {"11",
     2,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "-1 threads are accessing. Registers MPWork to timeout list. Callback:80000000.\n"},
    {"12", 0, {11, 42, 33, 44, 55}, "Started. m_PCurrentWork:0000000b, m_aoWork.size():42.\n"},
    {"12",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started. m_PCurrentWork:ffffffff, m_aoWork.size():-2147483648.\n"},
    {"12", 1, {11, 42, 33, 44, 55}, "Got work.\n"},
    {"12", 2, {11, 42, 33, 44, 55}, "End of while loop.\n"},
    {"12", 3, {11, 42, 33, 44, 55}, "Releases timeout MPWork.\n"},
    {"12", 7, {11, 42, 33, 44, 55}, "Timeout error(0000000b).\n"},
    {"12", 7, {-1, 0x80000000, -1000, 100000, -1985229329}, "Timeout error(ffffffff).\n"},
    {"13", 0, {11, 42, 33, 44, 55}, "Started. ID of finished work:11, ID of CurrentWork:42.\n"},
    {"13",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started. ID of finished work:-1, CurrentWork is none.\n"},
    {"13", 0, {21, 0, 23, 24, 25}, "Started. ID of finished work:21, ID of CurrentWork:0.\n"},
    {"13", 0, {0, 1, 0, 0, 0}, "Started. ID of finished work:0, ID of CurrentWork:1.\n"},
    {"13", 0, {0, -1, 0, 0, 0}, "Started. ID of finished work:0, CurrentWork is none.\n"},
    {"14", 2, {11, 42, 33, 44, 55}, "Changed Thread priority 11 -> 42. \n"},
    {"14", 2, {-1, 0x80000000, -1000, 100000, -1985229329}, "Changed Thread priority -1 -> -2147483648. \n"},
    {"15", 0, {11, 42, 33, 44, 55}, "Instance created.\n"},
    {"15", 4, {11, 42, 33, 44, 55}, "Terminated.\n"},
    {"16", 0, {11, 42, 33, 44, 55}, "Started. Access counter:11.\n"},
    {"16", 0, {-1, 0x80000000, -1000, 100000, -1985229329}, "Started. Access counter:-1.\n"},
    {"16", 4, {11, 42, 33, 44, 55}, "Access allowed(11), access counter:42.\n"},
    {"16",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Access allowed(-1), access counter:-2147483648.\n"},
    {"16", 4, {0, 22, 23, 24, 25}, "Access denied. Work already done(0), access counter:22.\n"},
    {"16", 4, {1, 0, 0, 0, 0}, "Access allowed(1), access counter:0.\n"},
    {"16", 4, {-1, 0, 0, 0, 0}, "Access allowed(-1), access counter:0.\n"},
    {"17", kAny, {11, 42, 33, 44, 55}, "Called. Status:0000000b.\n"},
    {"17", kAny, {-1, 0x80000000, -1000, 100000, -1985229329}, "Called. Status:ffffffff.\n"},
    {"18, 19", 0, {11, 42, 33, 44, 55}, "Started (11). WorkToDo:42, access counter:33.\n"},
    {"18, 19",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started (-1). WorkToDo:-2147483648, access counter:-1000.\n"},
    {"18, 19",
     0,
     {0, 22, 23, 24, 25},
     "Re-started with previous work report(0). WorkToDo:22, access counter:23.\n"},
    {"18, 19", 0, {1, 0, 0, 0, 0}, "Started (1). WorkToDo:0, access counter:0.\n"},
    {"18, 19", 0, {-1, 0, 0, 0, 0}, "Started (-1). WorkToDo:0, access counter:0.\n"},
    {"18, 19", 1, {11, 42, 33, 44, 55}, "Raised 'Done' event. WorkToDo:11, access counter:42.\n"},
    {"18, 19",
     1,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Raised 'Done' event. WorkToDo:-1, access counter:-2147483648.\n"},
    {"18, 19",
     4,
     {11, 42, 33, 44, 55},
     "Finished acquiring work block. Start:11, len:42, WorkToDo:33, access counter:44.\n"},
    {"18, 19",
     4,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Finished acquiring work block. Start:-1, len:-2147483648, WorkToDo:-1000, access counter:100000.\n"},
    {"18, 19",
     4,
     {21, 0, 23, 24, 25},
     "Finished (Work already done). Start:21, len:0, WorkToDo:23, access counter:24.\n"},
    {"18, 19",
     4,
     {0, 1, 0, 0, 0},
     "Finished acquiring work block. Start:0, len:1, WorkToDo:0, access counter:0.\n"},
    {"18, 19",
     4,
     {0, -1, 0, 0, 0},
     "Finished acquiring work block. Start:0, len:-1, WorkToDo:0, access counter:0.\n"},
    {"210, 211, 224-232, 245, 247-251",
     6,
     {11, 42, 33, 44, 55},
     "Skipped due to zero target size. Width:11, Height:42.\n"},
    {"210, 211, 224-232, 245, 247-251",
     6,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Skipped due to zero target size. Width:-1, Height:-2147483648.\n"},
    {"212-215, 220-223, 233-236, 241-244",
     1,
     {11, 42, 33, 44, 55},
     "Finished calculating top and bottom rows. Starts middle row calculation.('Finished' log will not be "
     "written.)\n"},
    {"212-215, 220-223, 233-236, 241-244",
     6,
     {11, 42, 33, 44, 55},
     "Skipped due to zero target size. Width:11, Height:42.\n"},
    {"212-215, 220-223, 233-236, 241-244",
     6,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Skipped due to zero target size. Width:-1, Height:-2147483648.\n"},
    {"216-219, 237-240",
     1,
     {11, 42, 33, 44, 55},
     "Finished calculating top and bottom rows. Starts middle row 'G' calculation.\n"},
    {"216-219, 237-240",
     2,
     {11, 42, 33, 44, 55},
     "Finished 'G' calculation. Starts middle row 'R' and 'B' calculation.('Finished' log will not be "
     "written.)\n"},
    {"216-219, 237-240, 246, 252-259",
     6,
     {11, 42, 33, 44, 55},
     "Skipped due to zero target size. Width:11, Height:42.\n"},
    {"216-219, 237-240, 246, 252-259",
     6,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Skipped due to zero target size. Width:-1, Height:-2147483648.\n"},
    {"246", 1, {11, 42, 33, 44, 55}, "Done single thread memcpy.\n"},
    {"252-259", 1, {11, 42, 33, 44, 55}, "Finished calculating 'G'. Starts 'B' and 'R' calculation.\n"},
    {"252-259",
     2,
     {11, 42, 33, 44, 55},
     "Finished calculating top and bottom rows 'B' and 'R( values. Starts middle row 'R' and 'B' "
     "calculation.('Finished' log will not be written.)\n"},
    {"280-297, 314-331, 334", 0, {11, 42, 33, 44, 55}, "Started. WidthS:11, HeightS:42.\n"},
    {"280-297, 314-331, 334",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started. WidthS:-1, HeightS:-2147483648.\n"},
    {"298-301, 306-309", 0, {11, 42, 33, 44, 55}, "Started GR mode(11). WidthS:42, HeightS:33.\n"},
    {"298-301, 306-309",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started GR mode(-1). WidthS:-2147483648, HeightS:-1000.\n"},
    {"298-301, 306-309", 0, {0, 22, 23, 24, 25}, "Started BG mode(0). WidthS:22, HeightS:23.\n"},
    {"298-301, 306-309", 0, {1, 0, 0, 0, 0}, "Started GR mode(1). WidthS:0, HeightS:0.\n"},
    {"298-301, 306-309", 0, {-1, 0, 0, 0, 0}, "Started GR mode(-1). WidthS:0, HeightS:0.\n"},
    {"302-305, 310-313, 332, 333", 0, {11, 42, 33, 44, 55}, "Started RG mode(11). WidthS:42, HeightS:33.\n"},
    {"302-305, 310-313, 332, 333",
     0,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Started RG mode(-1). WidthS:-2147483648, HeightS:-1000.\n"},
    {"302-305, 310-313, 332, 333", 0, {0, 22, 23, 24, 25}, "Started GB mode(0). WidthS:22, HeightS:23.\n"},
    {"302-305, 310-313, 332, 333", 0, {1, 0, 0, 0, 0}, "Started RG mode(1). WidthS:0, HeightS:0.\n"},
    {"302-305, 310-313, 332, 333", 0, {-1, 0, 0, 0, 0}, "Started RG mode(-1). WidthS:0, HeightS:0.\n"},
    {"280-334", 1, {11, 42, 33, 44, 55}, "Got row range to calculate. Start:11, len:42\n"},
    {"280-334",
     1,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Got row range to calculate. Start:-1, len:-2147483648\n"},
    {"280-334", 2, {11, 42, 33, 44, 55}, "Calculated row range. Start:11, len:42\n"},
    {"280-334",
     2,
     {-1, 0x80000000, -1000, 100000, -1985229329},
     "Calculated row range. Start:-1, len:-2147483648\n"},
};

std::vector<uint32_t> FunctionsIn(const std::string& list) {
  std::vector<uint32_t> functions;
  std::istringstream parts(list);
  for (std::string part; std::getline(parts, part, ',');) {
    unsigned first = 0;
    unsigned last = 0;
    if (std::sscanf(part.c_str(), " %u-%u", &first, &last) < 2) last = first;
    for (unsigned function = first; function <= last; ++function) functions.push_back(function);
  }
  return functions;
}

std::vector<uint32_t> KindsOf(const Expectation& expectation) {
  if (expectation.kind == kAny) return {std::begin(kKindsTried), std::end(kKindsTried)};
  return {expectation.kind};
}

std::string MessageOf(const LogRecord& record) {
  const std::string line = LogLine(record, 0);
  return line.size() < kMessageStart ? line : line.substr(kMessageStart);
}

std::vector<std::string> Names() {
  std::vector<std::string> names;
  std::istringstream words(kNames);
  for (std::string word; words >> word;) names.push_back(word);
  return names;
}

TEST(LogNames, EveryIndexHasItsName) {
  const std::vector<std::string> names = Names();
  ASSERT_EQ(names.size(), kUnnamedFrom);
  for (uint32_t function = 0; function < kUnnamedFrom; ++function) {
    EXPECT_EQ(LogFunctionName(function), names[function]) << function;
  }
}

TEST(LogNames, OddSpellingsStay) {
  EXPECT_STREQ(LogFunctionName(21), "BitPerPixe");
  EXPECT_STREQ(LogFunctionName(38), "ConvImage:");
  EXPECT_STREQ(LogFunctionName(40), "SetBayerConvMode:");
  EXPECT_STREQ(LogFunctionName(187), "YUV422PToBGRA_S");
  EXPECT_STREQ(LogFunctionName(198), "ByrBG8ToBGR_SP_ACP");
  EXPECT_STREQ(LogFunctionName(204), "BGR8PToBGR_S");
  EXPECT_STREQ(LogFunctionName(261), "RvrsImg_MP:");
  EXPECT_STREQ(LogFunctionName(288), "_RevYUV411_YYWK");
  EXPECT_STREQ(LogFunctionName(320), "RGBNToBGR_W");
  EXPECT_STREQ(LogFunctionName(327), "_YUV422ToBGRA_WK");
}

TEST(LogNames, IndicesWithoutANameGiveNoLine) {
  for (uint32_t function :
       {335u, 336u, 337u, 338u, 339u, 340u, 341u, 342u, 100000u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_STREQ(LogFunctionName(function), "");
    for (uint32_t kind : kKindsTried) EXPECT_EQ(LogLine({.function = function, .kind = kind}, 0), "");
  }
}

TEST(LogMessages, OwnMessagesOfEachFunction) {
  for (const Expectation& expectation : kExpectations) {
    LogRecord record;
    for (size_t i = 0; i < expectation.arguments.size(); ++i) {
      record.arguments[i] = static_cast<uint32_t>(expectation.arguments[i]);
    }
    for (uint32_t function : FunctionsIn(expectation.functions)) {
      for (uint32_t kind : KindsOf(expectation)) {
        record.function = function;
        record.kind = kind;
        EXPECT_EQ(MessageOf(record), expectation.text) << "function " << function << " kind " << kind;
      }
    }
  }
}

TEST(LogMessages, AllOtherEventsHaveTheMessageOfTheirKind) {
  std::set<std::pair<uint32_t, uint32_t>> own;
  for (const Expectation& expectation : kExpectations) {
    for (uint32_t function : FunctionsIn(expectation.functions)) {
      for (uint32_t kind : KindsOf(expectation)) own.emplace(function, kind);
    }
  }
  for (uint32_t function = 0; function < kUnnamedFrom; ++function) {
    for (uint32_t kind : kKindsTried) {
      if (own.contains({function, kind})) continue;
      const char* expected = kind == 0   ? "Started.\n"
                             : kind == 4 ? "Finished.\n"
                             : kind == 5 ? "Called.\n"
                             : kind == 6 ? "Warning.\n"
                             : kind == 7 ? "Error. Status:0000001f.\n"
                                         : "\n";
      EXPECT_EQ(MessageOf({.function = function, .kind = kind, .arguments = {31, 2, 3, 4, 5}}), expected)
          << "function " << function << " kind " << kind;
    }
  }
}

TEST(LogMessages, LineBeginsWithStampThreadWorkAndName) {
  EXPECT_EQ(LogLine({.stamp = 1500, .function = 21, .thread_id = 0x2B, .work_id = 7}, 500),
            "00001000 ThreadID:00002b WorkID:0007 BitPerPixe                   Started.\n");
  EXPECT_EQ(
      LogLine({.stamp = 0x2'0000'0000, .function = 13, .thread_id = 0xFEDCBA98, .work_id = 123456, .kind = 4},
              0x1'0000'0001),
      "4294967295 ThreadID:fedcba98 WorkID:123456 MPManager::UpdateCurrentWork Finished.\n");
}

TEST(LogMessages, StampsCountModulo32Bits) {
  const auto stamp_of = [](uint64_t stamp, uint64_t base) {
    const std::string line = LogLine({.stamp = stamp}, base);
    return line.substr(0, line.find(' '));
  };
  EXPECT_EQ(stamp_of(0x1'0000'0005, 0xFFFF'FFFF), "00000006");
  EXPECT_EQ(stamp_of(0xABCD'0000'0005, 5), "00000000");
  EXPECT_EQ(stamp_of(4, 0x7'0000'0005), "4294967295");
}

TEST(LogMessages, ExtremeArgumentsStayBelowTheBufferOfALine) {
  for (uint32_t extreme : {0x80000000u, 0xFFFFFFFFu, 0u, 0x7FFFFFFFu}) {
    LogRecord record{.stamp = extreme, .thread_id = extreme, .work_id = extreme};
    record.arguments.fill(extreme);
    for (record.function = 0; record.function < kUnnamedFrom; ++record.function) {
      for (record.kind = 0; record.kind < 9; ++record.kind) {
        const std::string line = LogLine(record, 0);
        EXPECT_LT(line.size(), 300u);
        EXPECT_EQ(line.back(), '\n');
      }
    }
  }
}

TEST(LogHeader, TextOfTheHeader) {
  LogFileHeader header;
  header.version = {1, 2, 255};
  header.date = {.year = 2031, .month = 4, .day = 9, .hour = 7, .minute = 5, .second = 59};
  header.cores = 12;
  header.frequency = 10'000'000;
  EXPECT_EQ(LogHeaderText(header),
            "\n\n=============================================================\n\n"
            "Log date: 2031/4/9 7:5:59\n\n"
            "Performance frequency: 10000000\n\n"
            "CPU core number: 12\r\n"
            "Log data version: Ver1.2.255\r\n");
}

TEST(LogHeader, FieldsOfTheFileAreUnsignedButTheFrequency) {
  LogFileHeaderBytes bytes;
  bytes.fill(0xFF);
  EXPECT_EQ(LogHeaderText(DecodeLogHeader(bytes)),
            "\n\n=============================================================\n\n"
            "Log date: 65535/255/255 255:255:255\n\n"
            "Performance frequency: -1\n\n"
            "CPU core number: 255\r\n"
            "Log data version: Ver255.255.255\r\n");
}

TEST(LogHeader, EveryFieldHasItsPlace) {
  LogFileHeaderBytes bytes;
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i);
  const LogFileHeader header = DecodeLogHeader(bytes);
  EXPECT_EQ(header.version, (std::array<uint8_t, 3>{8, 9, 10}));
  EXPECT_EQ(header.date.year, 0x1514);
  EXPECT_EQ(header.date.month, 22);
  EXPECT_EQ(header.date.day, 23);
  EXPECT_EQ(header.date.hour, 24);
  EXPECT_EQ(header.date.minute, 25);
  EXPECT_EQ(header.date.second, 26);
  EXPECT_EQ(header.cores, 27);
  EXPECT_EQ(header.frequency, 0x232221201F1E1D1C);
  EXPECT_EQ(header.base_stamp, 0x2B2A292827262524u);
  EXPECT_EQ(header.record_count, 0x2F2E2D2Cu);
}

TEST(LogHeader, EncodedHeadersCarryTheMarkAndZeros) {
  LogFileHeader header;
  header.version = {1, 0, 0};
  header.date = {.year = 0x07EF, .month = 2, .day = 3, .hour = 4, .minute = 5, .second = 6};
  header.cores = 7;
  header.frequency = 0x1122334455667788;
  header.base_stamp = 0x99AABBCCDDEEFF00;
  header.record_count = 0x01020304;
  const LogFileHeaderBytes expected = {
      'P',  'R',  'I',  'S',  'M',  'O',  'L',  'G',  1,    0,    0,    0,    0,    0,    0,    0,
      0,    0,    0,    0,    0xEF, 0x07, 2,    3,    4,    5,    6,    7,    0x88, 0x77, 0x66, 0x55,
      0x44, 0x33, 0x22, 0x11, 0x00, 0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x04, 0x03, 0x02, 0x01};
  EXPECT_EQ(EncodeLogHeader(header), expected);
}

}  // namespace
}  // namespace prismo::mp
