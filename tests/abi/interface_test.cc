// The interface as programs meet it: the header, functions, the layout of the work record.
#include "PrismoUtl.h"

#include <gtest/gtest.h>

#include <cstddef>

extern "C" int PrismoFromC(void);

namespace {

TEST(Abi, TheHeaderServesC) { EXPECT_EQ(PrismoFromC(), 0); }

TEST(Abi, OneFunctionHasTwoNames) { EXPECT_EQ(&ConvYUV444PToBGRPad, &ConvYUV444PToBGR); }

TEST(Abi, ConvertersAreTheExportedFunctions) {
  EXPECT_EQ(GetBGRAConverter(PRISMO_BAYER_GR8, 1), &ConvByrGR8ToBGRA);
  EXPECT_EQ(GetBGRConverter(PRISMO_YUV444, 0), &ConvYUV444PToBGR);
  EXPECT_EQ(GetBGRConverter(PRISMO_YUV444, 0), &ConvYUV444PToBGRPad);
}

TEST(Abi, LayoutOfTheWorkRecord) {
  static_assert(sizeof(void*) == 8 && sizeof(MPWork) == 152);
  static_assert(offsetof(MPWork, WorkID) == 0);
  static_assert(offsetof(MPWork, Callback) == 8);
  static_assert(offsetof(MPWork, Type) == 16);
  static_assert(offsetof(MPWork, Src) == 24);
  static_assert(offsetof(MPWork, SrcWidth) == 32);
  static_assert(offsetof(MPWork, SrcHeight) == 36);
  static_assert(offsetof(MPWork, SrcStride) == 40);
  static_assert(offsetof(MPWork, SrcBytesPerPixel) == 44);
  static_assert(offsetof(MPWork, Dst) == 48);
  static_assert(offsetof(MPWork, DstWidth) == 56);
  static_assert(offsetof(MPWork, DstHeight) == 60);
  static_assert(offsetof(MPWork, DstStride) == 64);
  static_assert(offsetof(MPWork, DstBytesPerPixel) == 68);
  static_assert(offsetof(MPWork, Param) == 72);
  static_assert(offsetof(MPWork, FirstY) == 76);
  static_assert(offsetof(MPWork, LastY) == 80);
  static_assert(offsetof(MPWork, FirstX) == 84);
  static_assert(offsetof(MPWork, LastX) == 88);
  static_assert(offsetof(MPWork, DstX) == 92);
  static_assert(offsetof(MPWork, DstY) == 96);
  static_assert(offsetof(MPWork, CurrentY) == 100);
  static_assert(offsetof(MPWork, WorkToDo) == 104);
  static_assert(offsetof(MPWork, AccessCounter) == 108);
  static_assert(offsetof(MPWork, Status) == 112);
  static_assert(offsetof(MPWork, BlockList) == 120);
  static_assert(offsetof(MPWork, NextBlock) == 128);
  static_assert(offsetof(MPWork, Lock) == 136);
  static_assert(offsetof(MPWork, DoneEvent) == 144);
}

}  // namespace
