// Nearest-neighbour enlargement (_Nearest, _NearLinear) against a reference:
// output row j shows source row floor(j * sh / dh) sampled at columns
// floor(k * lineWidth / dw); a row showing the same source row as the one
// before is a copy of that row's first dw * 2 bytes.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

struct Case {
  int32_t sw, sh, dw, dh;
};

void CheckNearest(bool doubled, const Case c, int32_t pitch, const Tables& t) {
  Picture pic(c.sw, c.sh, 3, c.sw * 3 + c.dh + doubled);
  Canvas cv(WideRow(pitch) * c.dh + 8 * c.dw + 16);
  RenderNearest(cv, t, pic, c.sw, c.sh, c.dw, c.dh, pitch, doubled);
  pic.Cut();
  auto dst = cv.Target();
  LineSet lines(std::max(c.sw, 2) * (doubled ? 8 : 2));
  Tables tt(t);
  const uint32_t got =
      doubled ? _ORUYCbCr420ToRGB565RszUp_NearLinear(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw,
                                                     c.sh, dst.data(), pitch, c.dw, c.dh)
              : _ORUYCbCr420ToRGB565RszUp_Nearest(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, c.sh,
                                                  dst.data(), pitch, c.dw, c.dh);
  EXPECT_EQ(got, 0u);
  SCOPED_TRACE(testing::Message() << (doubled ? "NearLinear " : "Nearest ") << c.sw << "x" << c.sh << " -> "
                                  << c.dw << "x" << c.dh << " pitch " << pitch);
  cv.ExpectEqual(dst);
}

const Case kCases[] = {
    {4, 4, 8, 8}, {6, 4, 9, 7}, {8, 6, 16, 12},   {10, 8, 10, 17}, {2, 2, 3, 5},
    {8, 8, 1, 1}, {6, 6, 7, 1}, {12, 10, 30, 21}, {16, 12, 6, 4},  // a smaller destination skips whole pairs
    {14, 9, 7, 3}};

TEST(Rgb565Nearest, MatchesReferenceAndCopiesRepeatedRows) {
  for (bool wide : {false, true}) {
    const Tables t(1100 + wide, wide);
    for (const Case c : kCases)
      for (int32_t pitch : {2 * c.dw, 2 * c.dw + 5}) CheckNearest(false, c, pitch, t);
  }
}

TEST(Rgb565NearLinear, SamplesLinesDoubledByAveraging) {
  for (bool wide : {false, true}) {
    const Tables t(1200 + wide, wide);
    for (const Case c : kCases)
      for (int32_t pitch : {2 * c.dw, 2 * c.dw + 5}) CheckNearest(true, c, pitch, t);
  }
}

TEST(Rgb565Nearest, RepeatedRowCopiesOnlyHalfOfTheWideRow) {
  // 2 rows to 4: rows 1 and 3 repeat rows 0 and 2; the copy is dw * 2 bytes of
  // a row that holds dw * 4, so the second half of a repeated row is left as it was.
  Tables t(1300, false);
  Picture pic(4, 2, 0, 9);
  pic.Y(3, 1), pic.Cb(1, 0), pic.Cr(1, 0);
  pic.Cut();
  const int32_t pitch = 8;  // rows 16 bytes apart
  std::vector<uint8_t> dst(16 * 4, 0xAB);
  LineSet lines(8);
  _ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, lines.ptr, pic.planes(), pic.strides(), 4, 2, dst.data(), pitch,
                                    4, 4);
  for (int row : {1, 3}) {
    EXPECT_TRUE(std::equal(dst.begin() + 16 * row, dst.begin() + 16 * row + 8, dst.begin() + 16 * (row - 1)));
    EXPECT_EQ(std::vector<uint8_t>(dst.begin() + 16 * row + 8, dst.begin() + 16 * row + 16),
              std::vector<uint8_t>(8, 0xAB));
  }
}

TEST(Rgb565Nearest, MissingLinesRefusedAndEmptyDestinationsIgnored) {
  Tables t(1301, false);
  const uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  uint8_t* none[4] = {nullptr, nullptr, nullptr, nullptr};
  uint8_t dst[8];
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 8, 8),
            0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_NearLinear(&t.ctx, nullptr, planes, strides, 4, 4, dst, 8, 8, 8),
            0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 8, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 0, 8), 0u);
}

}  // namespace
