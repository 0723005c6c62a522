// The vector RGB565 / RGB555 rows against the formulas, at every level this
// CPU offers (the kernels that use them are checked in test_yuv_rgb).
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "imageproc/color_affine.h"
#include "kernel_ref.h"
#include "kernels/yuv420_rgb565_rows.h"

using namespace kref;

namespace {

// Blocks of one row pair through the row the tables chose (RGB565, or keyed
// RGB555 when `key` is given), each pixel against the formulas; `quad` gives
// the four luma samples of block m.
template <class Quad>
void ExpectRowMatches(const Tables& t, const std::vector<uint8_t>& cb, const std::vector<uint8_t>& cr,
                      Quad quad, const uint32_t* key = nullptr) {
  const size_t n = cb.size();
  std::vector<uint8_t> y[2] = {std::vector<uint8_t>(2 * n), std::vector<uint8_t>(2 * n)};
  for (size_t m = 0; m < n; ++m) quad(m, &y[0][2 * m], &y[1][2 * m]);
  std::vector<uint16_t> d[2] = {std::vector<uint16_t>(2 * n), std::vector<uint16_t>(2 * n)};
  uint8_t* out[2] = {reinterpret_cast<uint8_t*>(d[0].data()), reinterpret_cast<uint8_t*>(d[1].data())};
  const Rgb565RowPair rp{y[0].data(), y[1].data(), cb.data(), cr.data(),
                         out[0],      out[1],      &t.ctx,    key ? *key : 0};
  const Rgb565Row* row = key ? Rgb555KeyRowOf(&t.ctx) : Rgb565RowOf(&t.ctx);
  ASSERT_NE(row, nullptr) << "tables not reproduced";
  run_row(*row, 0, n, &rp);
  for (int r = 0; r < 2; ++r)
    for (size_t i = 0; i < 2 * n; ++i) {
      const uint8_t yv = y[r][i], b = cb[i / 2], c = cr[i / 2];
      ASSERT_EQ(d[r][i], Ref16(t, yv, b, c, key != nullptr, key ? *key : 0))
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
  for (CpuLevel level : Levels()) {
    if (level == CPU_SCALAR) continue;  // the scalar level keeps the lookups
    cpu_set_cap(level);
    for (uint32_t mr = 0; mr < 8; ++mr)
      for (int b : values)
        for (int c : values)
          for (int s : values) {
            SCOPED_TRACE(testing::Message() << cpu_level_name(level) << " matrix/range " << mr << " adjust "
                                            << b << " " << c << " " << s);
            const Tables t(mr / 2, mr % 2, b, c, s);
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
  // Luma that fits one steep piece, whose 32-bit lanes overflow further along.
  std::fill(random.y.begin() + 2, random.y.end(), 65535), random.y[0] = 1, random.y[1] = 65534;
  std::fill(random.cb.begin(), random.cb.end(), 0), std::fill(random.cr.begin(), random.cr.end(), 0);
  EXPECT_FALSE(
      ImgPrcFitAffineTables(random.y.data(), random.cb.data(), random.cr.data(), &random.ctx.affine));
}

}  // namespace
