// The vector RGB565 rows against the formulas and the vector kernels against
// the lookup kernels, at every instruction-set level this CPU offers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "imageproc/color_tables.h"
#include "imageproc/cpu_features.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "rgb16_ref.h"

using namespace rgb16test;

namespace {

// An instance's tables, built as the image processor builds them.
struct Built {
  alignas(8) uint8_t block[256 * 18];
  ImgPrcContext ctx{};
  Built(uint32_t matrix, uint32_t range, int b, int c, int s) {
    ctx.rangeTableY = reinterpret_cast<uint16_t*>(block);
    ctx.rangeTableCb = reinterpret_cast<int64_t*>(block + IMGPRC_RANGE_CB_OFFSET);
    ctx.rangeTableCr = reinterpret_cast<int64_t*>(block + IMGPRC_RANGE_CR_OFFSET);
    UpdateColorMatrix(&ctx, matrix, range);
    ImgPrcBuildRangeTables(&ctx, b, c, s);
  }
};

std::vector<CpuLevel> VectorLevels() {
  std::vector<CpuLevel> levels;
  for (unsigned l = CPU_SSE41; l <= CPU_NEON; ++l)
    if (cpu_set_cap(CpuLevel(l)) == CpuLevel(l)) levels.push_back(CpuLevel(l));
  cpu_set_cap(CPU_NEON);
  return levels;
}

// Blocks of one row pair through the row the tables chose (RGB565, or keyed
// RGB555 when `key` is given), each pixel against the formulas; `quad` gives
// the four luma samples of block m.
template <class Quad>
void ExpectRowMatches(const Built& t, const std::vector<uint8_t>& cb, const std::vector<uint8_t>& cr,
                      Quad quad, const uint32_t* key = nullptr) {
  const size_t n = cb.size();
  std::vector<uint8_t> y0(2 * n), y1(2 * n);
  for (size_t m = 0; m < n; ++m) quad(m, &y0[2 * m], &y1[2 * m]);
  std::vector<uint16_t> d0(2 * n), d1(2 * n);
  uint8_t* out[2] = {reinterpret_cast<uint8_t*>(d0.data()), reinterpret_cast<uint8_t*>(d1.data())};
  const Rgb565RowPair rp{y0.data(), y1.data(), cb.data(), cr.data(), out[0], out[1], &t.ctx, key ? *key : 0};
  const Rgb565Row* row = key ? Rgb555KeyRowOf(&t.ctx) : Rgb565RowOf(&t.ctx);
  ASSERT_NE(row, nullptr) << "tables not reproduced";
  run_row(*row, 0, n, &rp);
  const Tables ref(t.ctx);
  auto want = [&](uint8_t y, uint8_t b, uint8_t r) {
    return key ? Ref555(ref, y, b, r, *key) : Ref565(ref, y, b, r);
  };
  for (size_t i = 0; i < 2 * n; ++i) {
    ASSERT_EQ(d0[i], want(y0[i], cb[i / 2], cr[i / 2]))
        << "Y " << int(y0[i]) << " Cb " << int(cb[i / 2]) << " Cr " << int(cr[i / 2]);
    ASSERT_EQ(d1[i], want(y1[i], cb[i / 2], cr[i / 2]))
        << "Y " << int(y1[i]) << " Cb " << int(cb[i / 2]) << " Cr " << int(cr[i / 2]);
  }
}

TEST(Rgb565VectorRow, EveryTripleOfTheNeutralTables) {
  std::vector<uint8_t> cb(65536), cr(65536);
  for (size_t m = 0; m < 65536; ++m) cb[m] = uint8_t(m), cr[m] = uint8_t(m >> 8);
  for (CpuLevel level : VectorLevels()) {
    cpu_set_cap(level);
    for (uint32_t matrix = 0; matrix < 4; ++matrix)
      for (uint32_t range = 0; range < 2; ++range) {
        SCOPED_TRACE(testing::Message()
                     << cpu_level_name(level) << " matrix " << matrix << " range " << range);
        const Built t(matrix, range, 128, 128, 128);
        for (uint8_t q = 0; q < 64; ++q)
          ExpectRowMatches(t, cb, cr, [q](size_t, uint8_t* a, uint8_t* b) {
            a[0] = 4 * q, a[1] = 4 * q + 1, b[0] = 4 * q + 2, b[1] = 4 * q + 3;
          });
      }
  }
  cpu_set_cap(CPU_NEON);
}

TEST(Rgb565VectorRow, AdjustedTablesOnRandomTriples) {
  const int values[] = {-5, 0, 64, 128, 200, 255, 300};  // and the clamps beyond
  std::mt19937 rng(5);
  std::vector<uint8_t> cb(1031), cr(1031);
  for (CpuLevel level : VectorLevels()) {
    cpu_set_cap(level);
    for (uint32_t mr = 0; mr < 8; ++mr)
      for (int b : values)
        for (int c : values)
          for (int s : values) {
            SCOPED_TRACE(testing::Message() << cpu_level_name(level) << " matrix/range " << mr << " adjust "
                                            << b << " " << c << " " << s);
            const Built t(mr / 2, mr % 2, b, c, s);
            for (size_t m = 0; m < cb.size(); ++m) cb[m] = uint8_t(rng()), cr[m] = uint8_t(rng());
            auto quad = [&](size_t, uint8_t* a, uint8_t* d) {
              a[0] = uint8_t(rng()), a[1] = uint8_t(rng()), d[0] = uint8_t(rng()), d[1] = uint8_t(rng());
            };
            ExpectRowMatches(t, cb, cr, quad);
            // Keyed RGB555: the key is a triple of the row (its sample 100 is
            // 0x40 on the top row) or, one time in eight, beyond 24 bits.
            const uint32_t key = (b == 300 ? 0x1000000u : 0x400000u) | uint32_t(cb[50]) << 8 | cr[50];
            ExpectRowMatches(
                t, cb, cr,
                [&](size_t m, uint8_t* a, uint8_t* d) { quad(m, a, d), a[0] = m == 50 ? 0x40 : a[0]; }, &key);
            if (HasFatalFailure()) return;
          }
  }
  cpu_set_cap(CPU_NEON);
}

TEST(Rgb565VectorRow, TablesThatAreNotAffineKeepTheLookups) {
  Tables random(3, true);
  EXPECT_FALSE(
      ImgPrcFitAffineTables(random.y.data(), random.cb.data(), random.cr.data(), &random.ctx.affine));
  EXPECT_EQ(Rgb565RowOf(&random.ctx), nullptr);
}

// Random pictures of every width up to past two AVX2 steps, odd heights,
// padded and odd strides, planes cut to the bytes the kernel may read,
// destinations with guard bytes around: plain, through each rotation and
// keyed RGB555 (rotation -2), against the same tables with the lookup walk.
TEST(Rgb565VectorKernel, MatchesTheLookupKernelOnRandomPictures) {
  std::mt19937 rng(11);
  for (CpuLevel level : VectorLevels()) {
    cpu_set_cap(level);
    Built vec(1, 0, 150, 170, 190);
    Built look = vec;
    look.ctx.rangeTableY = reinterpret_cast<uint16_t*>(look.block);
    look.ctx.rangeTableCb = reinterpret_cast<int64_t*>(look.block + IMGPRC_RANGE_CB_OFFSET);
    look.ctx.rangeTableCr = reinterpret_cast<int64_t*>(look.block + IMGPRC_RANGE_CR_OFFSET);
    look.ctx.affine.rgb565Row = nullptr;
    ASSERT_NE(Rgb565RowOf(&vec.ctx), nullptr);
    for (int32_t w = 1; w <= 70; ++w)
      for (int rotation = -2; rotation <= 5; ++rotation) {
        const int32_t h = 1 + 2 * int32_t(rng() % 3) + (w % 2), blocks = (w + 1) / 2, pairs = (h + 1) / 2;
        const uint32_t strides[3] = {uint32_t(2 * blocks + rng() % 5), uint32_t(blocks + rng() % 4), 0};
        std::vector<uint8_t> planes[3];
        planes[0].resize(strides[0] * (2 * pairs - 1) + 2 * blocks);
        planes[1].resize(strides[1] * (pairs - 1) + blocks);
        planes[2].resize(planes[1].size());
        for (auto& p : planes)
          for (auto& v : p) v = uint8_t(rng());
        const uint8_t* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
        const int64_t guard = 64, pw = 2 * blocks, ph = 2 * pairs;
        const int64_t stride = (rotation == 1 || rotation == 2 ? 2 * ph : 2 * pw) + int64_t(rng() % 3);
        std::vector<uint8_t> want(size_t(2 * guard + stride * (QuarterTurn(rotation) ? pw : ph)), 0x5A);
        std::vector<uint8_t> got = want;
        SCOPED_TRACE(testing::Message()
                     << cpu_level_name(level) << " " << w << "x" << h << " rotation " << rotation);
        if (rotation == -2) {
          const uint32_t key = uint32_t(src[0][1]) << 16 | uint32_t(src[1][0]) << 8 | src[2][0];
          _ORUYCbCr420ToRGB555(&look.ctx, src, strides, w, h, want.data() + guard, int32_t(stride), key);
          _ORUYCbCr420ToRGB555(&vec.ctx, src, strides, w, h, got.data() + guard, int32_t(stride), key);
        } else if (rotation < 0) {
          _ORUYCbCr420ToRGB565(&look.ctx, src, strides, w, h, want.data() + guard, int32_t(stride));
          _ORUYCbCr420ToRGB565(&vec.ctx, src, strides, w, h, got.data() + guard, int32_t(stride));
        } else {
          const RecordOffsets o = MakeOffsets(rotation, pw, ph, stride);
          ImgPrcRotationRecord rw = MakeRecord(o, want.data() + guard),
                               rg = MakeRecord(o, got.data() + guard);
          look.ctx.rotationRecord = &rw;
          vec.ctx.rotationRecord = &rg;
          _ORUYCbCr420ToRGB565Rot(&look.ctx, src, strides, w, h);
          _ORUYCbCr420ToRGB565Rot(&vec.ctx, src, strides, w, h);
        }
        ASSERT_EQ(got, want);
      }
  }
  cpu_set_cap(CPU_NEON);
}

// The bilinear enlargement (its conversion, blend and stretch in vector rows) against the same
// kernel capped to scalar: even source widths as set-up gives them, odd
// heights and destination sizes, padded strides, line buffers of exactly the
// entries the kernel may use, destination guards.
TEST(Rgb565VectorKernel, EnlargementMatchesTheScalarKernel) {
  std::mt19937 rng(12);
  Built t(1, 0, 128, 128, 128);
  ASSERT_NE(Rgb565RowOf(&t.ctx), nullptr);  // the spread lines take the vector rows too
  for (CpuLevel level : VectorLevels())
    for (int round = 0; round < 60; ++round) {
      const int32_t sw = 2 + 2 * int32_t(rng() % 40), sh = 1 + int32_t(rng() % 30);
      const int32_t dw = sw + 1 + int32_t(rng() % (2 * sw + 8)), dh = sh + 1 + int32_t(rng() % 40);
      const uint32_t strides[3] = {uint32_t(sw + rng() % 5), uint32_t(sw / 2 + rng() % 4), 0};
      std::vector<uint8_t> planes[3];
      planes[0].resize(strides[0] * (sh + 1) + sw);  // rows one past the last: the walk may read them
      planes[1].resize(strides[1] * (sh / 2 + 1) + sw / 2);
      planes[2].resize(planes[1].size());
      for (auto& p : planes)
        for (auto& v : p) v = uint8_t(rng());
      const uint8_t* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
      const int32_t pitch = 4 * (dw / 2 + 1) + int32_t(rng() % 4);
      const size_t guard = 64, bytes = size_t((pitch >> 2) * 8) * (dh - 1) + 8 * (dw / 2);
      std::vector<uint8_t> out[2];
      for (int cap = 0; cap < 2; ++cap) {
        std::vector<std::vector<uint64_t>> lines(4, std::vector<uint64_t>(size_t(std::max(sw + 1, 4))));
        uint8_t* lb[4];
        for (int i = 0; i < 4; ++i) lb[i] = reinterpret_cast<uint8_t*>(lines[i].data());
        cpu_set_cap(cap ? level : CPU_SCALAR);
        out[cap].assign(bytes + 2 * guard, 0x5A);
        _ORUYCbCr420ToRGB565RszUp(&t.ctx, lb, src, strides, sw, sh, out[cap].data() + guard, pitch, dw, dh);
      }
      SCOPED_TRACE(testing::Message()
                   << cpu_level_name(level) << " " << sw << "x" << sh << " to " << dw << "x" << dh);
      ASSERT_EQ(out[1], out[0]);
      for (size_t i = 0; i < guard; ++i) ASSERT_TRUE(out[0][i] == 0x5A && out[0][guard + bytes + i] == 0x5A);
    }
  cpu_set_cap(CPU_NEON);
}

}  // namespace
