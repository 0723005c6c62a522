// Coefficients, range and adjustment tables, the colour key: against a small
// double-precision reference with its own copy of the coefficients.
#include <gtest/gtest.h>
#include <math.h>
#include <stdint.h>

#include <array>
#include <vector>

#include "imageproc/color_tables.h"
#include "imageproc_test_util.h"

namespace {

// The listed four-decimal coefficients: matrix-major, then block, then rows.
const double kListed[4 * 4 * 12] = {
    // BT.601
    1.1644, 0, 1.596, -222.9216, 1.1644, -0.3918, -0.813, 135.5753, 1.1644, 2.0172, 0, -276.8359,  //
    1, 0, 1.402, 0, 1, -0.3441, -0.7141, 0, 1, 1.772, 0, 0,                                        //
    0.2568, 0.5041, 0.0979, 16, -0.1482, -0.291, 0.4392, 128, 0.4392, -0.3678, -0.0714, 128,       //
    0.299, 0.587, 0.114, 0, -0.1687, -0.3313, 0.5, 0, 0.5, -0.4187, -0.0813, 0,                    //
    // BT.709
    1.1644, 0, 1.7927, -248.101, 1.1644, -0.2132, -0.5329, 76.8781, 1.1644, 2.1124, 0, -289.0176,  //
    1, 0, 1.5748, 0, 1, -0.1876, -0.4681, 0, 1, 1.8556, 0, 0,                                      //
    0.1826, 0.6142, 0.062, 16, -0.1006, -0.3386, 0.4392, 128, 0.4392, -0.3989, -0.0403, 128,       //
    0.2126, 0.7152, 0.0722, 0, -0.1146, -0.3854, 0.5, 0, 0.5, -0.4542, -0.0458, 0,                 //
    // SMPTE 240M
    1.1644, 0, 1.7941, -248.2759, 1.1644, -0.258, -0.5426, 83.8426, 1.1644, 2.0787, 0, -284.7044,  //
    1, 0, 1.576, 0, 1, -0.2266, -0.4766, 0, 1, 1.826, 0, 0,                                        //
    0.1821, 0.602, 0.0747, 16, -0.102, -0.3372, 0.4392, 128, 0.4392, -0.3907, -0.0485, 128,        //
    0.212, 0.701, 0.087, 0, -0.1161, -0.3839, 0.5, 0, 0.5, -0.4448, -0.0552, 0,                    //
    // FCC
    1.1644, 0, 1.5938, -222.6307, 1.1644, -0.3778, -0.8104, 133.4561, 1.1644, 2.0263, 0, -278.0016,  //
    1, 0, 1.4, 0, 1, -0.3319, -0.7119, 0, 1, 1.78, 0, 0,                                             //
    0.2576, 0.5067, 0.0945, 16, -0.1481, -0.2912, 0.4392, 128, 0.4392, -0.3702, -0.069, 128,         //
    0.3, 0.59, 0.11, 0, -0.1685, -0.3315, 0.5, 0, 0.5, -0.4214, -0.0786, 0,                          //
};

double Single(double listed) { return static_cast<double>(static_cast<float>(listed)); }

struct RangeTables {
  uint16_t y[256];
  int64_t cb[256], cr[256];
};

long RoundTruncClamp(double v, long lo, long hi) {
  long t = static_cast<long>(trunc(v + 0.5));
  return t < lo ? lo : t > hi ? hi : t;
}

double Factor(int v) { return v < 0 ? 0.0 : v < 256 ? v / 128.0 : 1.9921875; }

int64_t Pack(long high, long low) {
  uint32_t w = (static_cast<uint32_t>(high) << 16) | (static_cast<uint32_t>(low) & 0xFFFF);
  return static_cast<int32_t>(w);
}

RangeTables ReferenceRange(int matrix, bool full, int b, int c, int s) {
  const double* k = kListed + matrix * 48 + (full ? 12 : 0);
  const double ygain = Single(k[0]), rcr = Single(k[2]), gcb = Single(k[5]), gcr = Single(k[6]),
               bcb = Single(k[9]);
  float bo = 2.0f * (static_cast<float>(b) - 128.0f);
  bo = bo < -255.0f ? -255.0f : bo > 255.0f ? 255.0f : bo;
  const double cf = Factor(c), sf = Factor(s);
  RangeTables t;
  for (int i = 0; i < 256; ++i) {
    const int level = full ? i : i - 16;
    const int d = full ? i : i - 128;
    t.y[i] = static_cast<uint16_t>(RoundTruncClamp((level * cf + bo) * ygain * 128, 0, 65535));
    auto term = [&](double w) { return RoundTruncClamp(d * w * sf * 64, -32768, 32767); };
    t.cb[i] = Pack(term(bcb), term(gcb));
    t.cr[i] = Pack(term(rcr), term(gcr));
  }
  return t;
}

int16_t High(int64_t entry) { return static_cast<int16_t>(static_cast<uint32_t>(entry) >> 16); }
int16_t Low(int64_t entry) { return static_cast<int16_t>(entry & 0xFFFF); }

TEST(CscCoef, EveryValueIsTheListedValueInSinglePrecision) {
  for (int i = 0; i < 192; ++i) EXPECT_EQ(csc_coef[i], Single(kListed[i])) << "value " << i;
}

void ReferenceAdjust(int b, int c, int s, uint8_t luma[256], uint8_t chroma[256]) {
  const int offset = b < 0 ? -256 : b >= 256 ? 254 : 2 * (b - 128);
  const int slope = c < 0 ? 0 : c >= 256 ? 506 : c > 128 ? (((c - 128) * (c - 128) * 3) >> 7) + 128 : c;
  const double f = s < 0      ? 0.0
                   : s >= 256 ? 7.890625
                   : s > 128  ? ((((s - 128) * (s - 128) * 7) >> 7) + 128) / 128.0
                              : s / 128.0;
  for (int i = 0; i < 256; ++i) {
    int l = offset + ((i * slope) >> 7);
    luma[i] = static_cast<uint8_t>(l < 0 ? 0 : l > 255 ? 255 : l);
    int ch = static_cast<int>((i - 128) * f + 128);
    chroma[i] = static_cast<uint8_t>(ch < 0 ? 0 : ch > 255 ? 255 : ch);
  }
}

// Every setting of a grid on BT.601 in both ranges, a sample of it on the
// other matrices; neutral first, so that the tables creation built are checked.
TEST(AdjustedTables, MatchTheReferences) {
  const int grid[] = {-40, -1, 0, 1, 64, 127, 129, 150, 200, 255, 256, 400};
  std::vector<std::array<int, 3>> settings = {{128, 128, 128}};
  for (int b : grid) {
    for (int c : grid) {
      for (int s : grid) settings.push_back({b, c, s});
    }
  }
  for (uint32_t m = 0; m < 4; ++m) {
    for (uint32_t r = 0; r < 2; ++r) {
      Instance inst({0x000, 16, 8, 16, 8, 0, 1, m, r});
      const ImgPrcContext* ctx = inst.ctx();
      for (size_t n = 0; n < settings.size(); n += m ? 37 : 1) {
        const int b = settings[n][0], c = settings[n][1], s = settings[n][2];
        SCOPED_TRACE(testing::Message()
                     << "matrix " << m << " range " << r << " adjust " << b << ", " << c << ", " << s);
        ASSERT_EQ(SetAdjust(inst, b, c, s), IMGPRC_OK);
        const RangeTables want = ReferenceRange(m, r == 1, b, c, s);
        uint8_t luma[256], chroma[256];
        ReferenceAdjust(b, c, s, luma, chroma);
        for (int i = 0; i < 256; ++i) {
          ASSERT_EQ(ctx->rangeTableY[i], want.y[i]) << "Y entry " << i;
          ASSERT_EQ(ctx->rangeTableCb[i], want.cb[i]) << "Cb entry " << i;
          ASSERT_EQ(ctx->rangeTableCr[i], want.cr[i]) << "Cr entry " << i;
          ASSERT_TRUE(n == 0 ||
                      (ctx->lumaAdjustTable[i] == luma[i] && ctx->chromaAdjustTable[i] == chroma[i]))
              << "adjust entry " << i;
        }
      }
    }
  }
}

// RGB565 of a YCbCr key, worked as the keys clients hold were made: BT.601
// video range, red and blue chroma terms undoubled, negative results read as
// large unsigned values.
uint32_t ReferenceKey(uint32_t key) {
  static const RangeTables t = ReferenceRange(0, false, 128, 128, 128);
  const int y = (key >> 16) & 0xFF, cb = (key >> 8) & 0xFF, cr = key & 0xFF;
  auto clampU = [](long v, uint32_t top) {
    return static_cast<uint32_t>(v) > top ? top : static_cast<uint32_t>(v);
  };
  const uint32_t r = clampU((t.y[y] + High(t.cr[cr])) >> 10, 31);
  const uint32_t g = clampU((t.y[y] + 2 * (Low(t.cb[cb]) + Low(t.cr[cr]))) >> 9, 63);
  const uint32_t b = clampU((t.y[y] + High(t.cb[cb])) >> 10, 31);
  return r << 11 | g << 5 | b;
}

TEST(TranslateColorKey, MatchesTheReferenceOverAGrid) {
  for (uint32_t y = 0; y < 256; y += 5) {
    for (uint32_t cb = 0; cb < 256; cb += 15) {
      for (uint32_t cr = 0; cr < 256; cr += 15) {
        const uint32_t key = y << 16 | cb << 8 | cr;
        uint32_t out = 0;
        ASSERT_EQ(ORU_TranslateColorKey(3, key, &out), IMGPRC_OK);
        ASSERT_EQ(out, ReferenceKey(key)) << std::hex << key;
      }
    }
  }
  uint32_t out = 0;  // worked by hand; bits above 23 play no part
  EXPECT_EQ(ORU_TranslateColorKey(3, 0xFF10F080, &out) + out, IMGPRC_OK + 0x07EEu);
}

TEST(TranslateColorKey, RejectsOtherKindsAndNullOut) {
  uint32_t out = 0x1234;
  EXPECT_EQ(ORU_TranslateColorKey(2, 0x00808080, &out), IMGPRC_E_FAIL);
  EXPECT_EQ(ORU_TranslateColorKey(10, 0x00808080, &out), IMGPRC_E_FAIL);
  EXPECT_EQ(out, 0x1234u);
  EXPECT_EQ(ORU_TranslateColorKey(3, 0x00808080, nullptr), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_TranslateColorKey(2, 0x00808080, nullptr), IMGPRC_E_INVALIDARG);
}

}  // namespace
