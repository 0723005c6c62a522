// The vector RGB565 rows against the formulas and the vector kernels against
// the lookup kernels, at every instruction-set level this CPU offers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "imageproc/color_tables.h"
#include "imageproc/cpu_features.h"
#include "kernel_ref.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb565_rows.h"

using namespace kref;

namespace {

// An instance's tables, built as the image processor builds them.
struct Built {
  alignas(8) uint8_t block[256 * 18];
  ImgPrcContext ctx{};
  Built(uint32_t matrix, uint32_t range, int b, int c, int s) {
    Attach();
    UpdateColorMatrix(&ctx, matrix, range);
    ImgPrcBuildRangeTables(&ctx, b, c, s);
  }
  Built(const Built& o) : ctx(o.ctx) {
    memcpy(block, o.block, sizeof block);
    Attach();
  }
  void Attach() {
    ctx.rangeTableY = reinterpret_cast<uint16_t*>(block);
    ctx.rangeTableCb = reinterpret_cast<int64_t*>(block + IMGPRC_RANGE_CB_OFFSET);
    ctx.rangeTableCr = reinterpret_cast<int64_t*>(block + IMGPRC_RANGE_CR_OFFSET);
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
  std::vector<uint8_t> y[2] = {std::vector<uint8_t>(2 * n), std::vector<uint8_t>(2 * n)};
  for (size_t m = 0; m < n; ++m) quad(m, &y[0][2 * m], &y[1][2 * m]);
  std::vector<uint16_t> d[2] = {std::vector<uint16_t>(2 * n), std::vector<uint16_t>(2 * n)};
  const Rgb565RowPair rp{y[0].data(),
                         y[1].data(),
                         cb.data(),
                         cr.data(),
                         reinterpret_cast<uint8_t*>(d[0].data()),
                         reinterpret_cast<uint8_t*>(d[1].data()),
                         &t.ctx,
                         key ? *key : 0};
  const Rgb565Row* row = key ? Rgb555KeyRowOf(&t.ctx) : Rgb565RowOf(&t.ctx);
  ASSERT_NE(row, nullptr) << "tables not reproduced";
  run_row(*row, 0, n, &rp);
  const Tables ref(t.ctx);
  for (int r = 0; r < 2; ++r)
    for (size_t i = 0; i < 2 * n; ++i) {
      const uint8_t yv = y[r][i], b = cb[i / 2], c = cr[i / 2];
      ASSERT_EQ(d[r][i], key ? Ref555(ref, yv, b, c, *key) : Ref565(ref, yv, b, c))
          << "Y " << int(yv) << " Cb " << int(b) << " Cr " << int(c);
    }
}

// Every triple of the neutral tables of each matrix and range; random triples
// (and keyed RGB555) of the tables adjusted in brightness, contrast and
// saturation, up to the clamps beyond.
TEST(Rgb565VectorRow, MatchesTheFormulas) {
  const int values[] = {-5, 0, 64, 128, 200, 255, 300};
  std::mt19937 rng(5);
  std::vector<uint8_t> all[2] = {std::vector<uint8_t>(65536), std::vector<uint8_t>(65536)};
  for (size_t m = 0; m < 65536; ++m) all[0][m] = uint8_t(m), all[1][m] = uint8_t(m >> 8);
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
            if (b == 128 && c == 128 && s == 128)
              for (uint8_t q = 0; q < 64; ++q)
                ExpectRowMatches(t, all[0], all[1], [q](size_t, uint8_t* a, uint8_t* d) {
                  a[0] = 4 * q, a[1] = 4 * q + 1, d[0] = 4 * q + 2, d[1] = 4 * q + 3;
                });
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

// Random pictures (odd heights, padded and odd strides, planes cut to the
// bytes the kernel may read, destinations with guard bytes around) through a
// kernel with the vector rows and through the same kernel on its lookup walk
// (`vec` false). Kernels: -2 keyed RGB555, -1 plain, 0..5 rotated, 6 the
// bilinear enlargement (its conversion, blend and stretch in vector rows, the
// lookup side capped to scalar), every width up to past two AVX2 steps.
std::vector<uint8_t> RunKernel(int kernel, bool vec, CpuLevel level, const Built& tables,
                               const uint8_t* const* src, const uint32_t* strides, int32_t w, int32_t h,
                               int32_t dw, int32_t dh, int64_t stride, size_t bytes) {
  constexpr size_t kGuard = 64;
  Built t = tables;
  if (!vec && kernel != 6) t.ctx.affine.rgb565Row = nullptr;
  cpu_set_cap(vec ? level : CPU_SCALAR);
  std::vector<uint8_t> out(bytes + 2 * kGuard, 0x5A);
  uint8_t* dst = out.data() + kGuard;
  const RecordOffsets o =
      MakeOffsets(kernel <= 5 ? std::max(kernel, 0) : 0, w + (w & 1), h + (h & 1), stride);
  ImgPrcRotationRecord rec = MakeRecord(o, dst);
  t.ctx.rotationRecord = &rec;
  std::vector<Line> lines(4, Line(size_t(std::max(w + 1, 4))));
  uint8_t* lb[4] = {nullptr, nullptr, nullptr, nullptr};
  for (int i = 0; i < 4; ++i) lb[i] = reinterpret_cast<uint8_t*>(lines[i].data());
  const uint32_t key = uint32_t(src[0][1]) << 16 | uint32_t(src[1][0]) << 8 | src[2][0];
  if (kernel == -2) _ORUYCbCr420ToRGB555(&t.ctx, src, strides, w, h, dst, int32_t(stride), key);
  if (kernel == -1) _ORUYCbCr420ToRGB565(&t.ctx, src, strides, w, h, dst, int32_t(stride));
  if (kernel >= 0 && kernel <= 5) _ORUYCbCr420ToRGB565Rot(&t.ctx, src, strides, w, h);
  if (kernel == 6) _ORUYCbCr420ToRGB565RszUp(&t.ctx, lb, src, strides, w, h, dst, int32_t(stride), dw, dh);
  cpu_set_cap(CPU_NEON);
  for (size_t i = 0; i < kGuard; ++i) EXPECT_TRUE(out[i] == 0x5A && out[kGuard + bytes + i] == 0x5A) << i;
  return out;
}

TEST(Rgb565VectorKernel, MatchesTheLookupKernelOnRandomPictures) {
  std::mt19937 rng(11);
  const Built tables(1, 0, 150, 170, 190);
  ASSERT_NE(Rgb565RowOf(&tables.ctx), nullptr);
  for (CpuLevel level : VectorLevels())
    for (int kernel = -2; kernel <= 6; ++kernel)
      for (int32_t round = 1; round <= 70; ++round) {
        const bool up = kernel == 6;  // even source widths, as set-up gives the enlargement
        const int32_t w = up ? 2 + 2 * int32_t(rng() % 40) : round;
        const int32_t h = up ? 1 + int32_t(rng() % 30) : 1 + 2 * int32_t(rng() % 3) + (w % 2);
        const int32_t dw = w + 1 + int32_t(rng() % (2 * w + 8)), dh = h + 1 + int32_t(rng() % 40);
        const int32_t blocks = (w + 1) / 2, pairs = (h + 1) / 2;
        const uint32_t strides[3] = {uint32_t(2 * blocks + rng() % 5), uint32_t(blocks + rng() % 4), 0};
        // The enlargement may read the row past the last.
        const size_t rows = up ? size_t(h) + 1 : 2 * size_t(pairs) - 1, crows = up ? h / 2 + 1 : pairs - 1;
        std::vector<uint8_t> planes[3];
        planes[0].resize(strides[0] * rows + 2 * blocks);
        planes[1].resize(strides[1] * crows + blocks);
        planes[2].resize(planes[1].size());
        for (auto& p : planes)
          for (auto& v : p) v = uint8_t(rng());
        const uint8_t* src[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
        const int64_t stride = up ? 4 * (dw / 2 + 1) + int64_t(rng() % 4)
                                  : 2 * (QuarterTurn(kernel) ? 2 * pairs : 2 * blocks) + int64_t(rng() % 3);
        const size_t bytes = up ? size_t((stride >> 2) * 8) * (dh - 1) + 8 * (dw / 2)
                                : size_t(stride * (QuarterTurn(kernel) ? 2 * blocks : 2 * pairs));
        SCOPED_TRACE(testing::Message() << cpu_level_name(level) << " kernel " << kernel << " " << w << "x"
                                        << h << " to " << dw << "x" << dh);
        ASSERT_EQ(RunKernel(kernel, true, level, tables, src, strides, w, h, dw, dh, stride, bytes),
                  RunKernel(kernel, false, level, tables, src, strides, w, h, dw, dh, stride, bytes));
        if (up && round == 60) break;
      }
}

}  // namespace
