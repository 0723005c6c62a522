#include "row_checks.h"

#include <string.h>

#include <algorithm>
#include <chrono>
#include <random>

#include "deinterlace/deint_filters.h"
#include "deinterlace/filter_x_rows.h"
#include "imageproc/color_tables.h"
#include "kernels/enlarge_rows.h"
#include "kernels/yuv420_rgb565_rows.h"

namespace {

// ---- mode 7, interior blocks of a band ------------------------------------

// Ten source lines and eight destination lines of `blocks` block columns, the
// destination with guard bytes on either side. Each block column is three-level
// noise, a smooth progressive patch or two fields that disagree, so that
// every branch of the row is taken.
struct XBandImage {
  static constexpr size_t kGuard = 16;
  size_t width;
  std::vector<uint8_t> src, dst;
  XBand band;

  XBandImage(size_t blocks, std::mt19937& rng) : width(blocks * kXBlock) {
    src.resize(width * (kXBlock + 2));
    dst.assign((width + 2 * kGuard) * kXBlock, 0xA5);
    for (size_t c = 0; c < blocks; ++c) {
      const unsigned kind = rng() % 3, base = rng() % 200, shift = 20 + rng() % 60;
      for (unsigned y = 0; y < kXBlock + 2; ++y)
        for (size_t i = c * kXBlock; i < (c + 1) * kXBlock; ++i) {
          unsigned v = (rng() % 3) * 90;  // few levels: equal direction costs are common
          if (kind == 1) v = base + (i % 8) * 3 + y + rng() % 4;
          if (kind == 2) v = base / 2 + ((y & 1) ? shift : 0) + (i * 7 + y) % 24;
          src[y * width + i] = uint8_t(v);
        }
    }
    for (unsigned y = 0; y < kXBlock + 2; ++y) band.s[y] = src.data() + y * width;
    for (unsigned y = 0; y < kXBlock; ++y) band.d[y] = dst.data() + y * (width + 2 * kGuard) + kGuard;
    band.lines = kXBlock;
  }
};

bool check_x_interior(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const Row<const XBand*> row = pick_row(x_interior_rows, level);
  const size_t step = row.vector.step;
  // Lengths 1 .. 4 steps + every remainder, from a random first block.
  for (size_t n = 1; n <= 5 * step; ++n)
    for (unsigned round = 0; round < 16; ++round) {
      const size_t begin = 1 + rng() % 3, blocks = begin + n + 1 + rng() % 2;
      XBandImage want(blocks, rng);
      XBandImage got = want;
      for (unsigned y = 0; y < kXBlock + 2; ++y) got.band.s[y] = got.src.data() + y * got.width;
      for (unsigned y = 0; y < kXBlock; ++y)
        got.band.d[y] = got.dst.data() + (want.band.d[y] - want.dst.data());
      x_interior_rows.scalar(begin, begin + n, &want.band);
      run_row(row, begin, begin + n, static_cast<const XBand*>(&got.band));
      if (got.dst != want.dst) {
        size_t i = 0;
        while (got.dst[i] == want.dst[i]) ++i;
        const size_t lineBytes = want.width + 2 * XBandImage::kGuard;
        *failure = "blocks " + std::to_string(begin) + ".." + std::to_string(begin + n - 1) + " of " +
                   std::to_string(blocks) + ": line " + std::to_string(i / lineBytes) + " column " +
                   std::to_string(long(i % lineBytes) - long(XBandImage::kGuard)) + " is " +
                   std::to_string(got.dst[i]) + ", the scalar row gives " + std::to_string(want.dst[i]);
        return false;
      }
    }
  return true;
}

template <typename F>
double ns_per_call(F&& f) {
  using Clock = std::chrono::steady_clock;
  unsigned calls = 0;
  const Clock::time_point start = Clock::now();
  Clock::duration spent{};
  do {
    for (unsigned i = 0; i < 64; ++i) f();
    calls += 64;
    spent = Clock::now() - start;
  } while (spent < std::chrono::milliseconds(200));
  return std::chrono::duration<double, std::nano>(spent).count() / calls;
}

void bench_x_interior(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  XBandImage image(1920 / kXBlock, rng);
  const size_t blocks = 1920 / kXBlock;
  const Row<const XBand*> row = pick_row(x_interior_rows, level);
  const XBand* band = &image.band;
  *scalarNs = ns_per_call([&] { x_interior_rows.scalar(1, blocks - 1, band); });
  *chosenNs = ns_per_call([&] { run_row(row, 1, blocks - 1, band); });
}

void repeat_x_interior(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  const size_t blocks = 1920 / kXBlock;
  XBandImage image(blocks, rng);
  const Row<const XBand*> row = pick_row(x_interior_rows, level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 1, blocks - 1, static_cast<const XBand*>(&image.band));
}

// ---- the five-tap line filter, out of place and in place ------------------

// Five random source lines of `n` bytes and a destination with guard bytes;
// in place, the destination is line 2 and line 0 is the buffer that keeps
// line 2's original. Values near 0 and 255 reach both clamps.
struct TapImage {
  static constexpr size_t kGuard = 32;
  std::vector<uint8_t> lines[5], dst, keep;
  DeintTapLines l;

  TapImage(size_t n, bool inPlace, std::mt19937& rng) {
    for (auto& line : lines) {
      line.resize(n + 2 * kGuard);
      for (auto& v : line) v = uint8_t(rng() % 4 == 0 ? (rng() % 2) * 255 : rng());
    }
    dst.assign(n + 2 * kGuard, 0xA5);
    point(inPlace);
  }
  void point(bool inPlace) {
    for (unsigned j = 0; j < 5; ++j) l.p[j] = lines[j].data() + kGuard;
    l.dst = inPlace ? lines[2].data() + kGuard : dst.data() + kGuard;
    l.keep = inPlace ? lines[0].data() + kGuard : nullptr;
  }
  bool operator==(const TapImage& o) const {
    for (unsigned j = 0; j < 5; ++j)
      if (lines[j] != o.lines[j]) return false;
    return dst == o.dst;
  }
};

template <bool inPlace>
bool check_taps(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const RowSet<const DeintTapLines*>& set = inPlace ? deint_taps_inplace_rows : deint_taps_rows;
  const Row<const DeintTapLines*> row = pick_row(set, level);
  for (size_t n = 1; n <= 5 * row.vector.step; ++n)
    for (unsigned round = 0; round < 4; ++round) {
      const size_t begin = rng() % 3;
      TapImage want(n + begin, inPlace, rng);
      TapImage got = want;
      got.point(inPlace);
      set.scalar(begin, begin + n, &want.l);
      run_row(row, begin, begin + n, static_cast<const DeintTapLines*>(&got.l));
      if (!(got == want)) {
        *failure = "bytes " + std::to_string(begin) + ".." + std::to_string(begin + n - 1) + " differ";
        return false;
      }
    }
  return true;
}

template <bool inPlace>
void bench_taps(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  TapImage image(1920, inPlace, rng);
  const RowSet<const DeintTapLines*>& set = inPlace ? deint_taps_inplace_rows : deint_taps_rows;
  const Row<const DeintTapLines*> row = pick_row(set, level);
  const DeintTapLines* l = &image.l;
  *scalarNs = ns_per_call([&] { set.scalar(0, 1920, l); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, 1920, l); });
}

template <bool inPlace>
void repeat_taps(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  TapImage image(1920, inPlace, rng);
  const Row<const DeintTapLines*> row = pick_row(inPlace ? deint_taps_inplace_rows : deint_taps_rows, level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, 1920, static_cast<const DeintTapLines*>(&image.l));
}

// ---- YCbCr 4:2:0 to RGB565, a row pair of blocks --------------------------

// Range tables of a matrix, range and adjustment as an instance builds them,
// and a row pair of random samples with guard bytes around its destination.
struct Rgb565Rows {
  static constexpr size_t kGuard = 8;
  alignas(8) uint8_t tables[IMGPRC_RANGE_BLOCK_SIZE];
  ImgPrcContext ctx{};
  std::vector<uint8_t> y0, y1, cb, cr, d0, d1;

  // Destination rows of blockBytes a block: 4 for 16-bit pixels, 16 for spread entries.
  Rgb565Rows(size_t blocks, std::mt19937& rng, size_t blockBytes)
      : y0(2 * blocks),
        y1(2 * blocks),
        cb(blocks),
        cr(blocks),
        d0(blockBytes * blocks + 2 * kGuard, 0xA5),
        d1(d0) {
    ctx.rangeTableY = reinterpret_cast<uint16_t*>(tables);
    ctx.rangeTableCb = reinterpret_cast<int64_t*>(tables + IMGPRC_RANGE_CB_OFFSET);
    ctx.rangeTableCr = reinterpret_cast<int64_t*>(tables + IMGPRC_RANGE_CR_OFFSET);
    UpdateColorMatrix(&ctx, rng() % 4, rng() % 2);
    const int adjust[] = {0, 64, 128, 128, 200, 255, 300};
    ImgPrcBuildRangeTables(&ctx, adjust[rng() % 7], adjust[rng() % 7], adjust[rng() % 7]);
    for (auto* v : {&y0, &y1, &cb, &cr})
      for (auto& s : *v) s = uint8_t(rng());
  }
  // The row pair, converted with the tables of `tab` (a copy's table
  // pointers still point at the original's tables).
  Rgb565RowPair Pair(const Rgb565Rows& tab) {
    return {y0.data(), y1.data(), cb.data(), cr.data(), d0.data() + kGuard, d1.data() + kGuard, &tab.ctx, 0};
  }
};

// Keyed RGB555 rows get the triple of one of the row's pixels as the key,
// the others kKey (the 32-bit pixel rows' alpha).
template <const RowSet<const Rgb565RowPair*>& kRows, bool kKeyed, size_t kBlockBytes = 4, uint32_t kKey = 0>
bool check_rgb16_blocks(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const Row<const Rgb565RowPair*> row = pick_row(kRows, level);
  for (size_t n = 1; n <= 5 * row.vector.step; ++n)
    for (unsigned round = 0; round < 16; ++round) {
      const size_t begin = rng() % 3, blocks = begin + n + rng() % 2;
      Rgb565Rows want(blocks, rng, kBlockBytes);
      if (want.ctx.affine.rgb565Row == nullptr) {
        *failure = "the range tables were not reproduced by their integer forms";
        return false;
      }
      Rgb565Rows got = want;
      Rgb565RowPair w = want.Pair(want);
      w.key = kKey;
      if (kKeyed) {
        const size_t at = begin + rng() % n;
        w.key = uint32_t(want.y1[2 * at + 1]) << 16 | uint32_t(want.cb[at]) << 8 | want.cr[at];
      }
      Rgb565RowPair g = got.Pair(want);
      g.key = w.key;
      kRows.scalar(begin, begin + n, &w);
      run_row(row, begin, begin + n, static_cast<const Rgb565RowPair*>(&g));
      for (int r = 0; r < 2; ++r) {
        const std::vector<uint8_t>& a = r ? got.d1 : got.d0;
        const std::vector<uint8_t>& b = r ? want.d1 : want.d0;
        if (a == b) continue;
        size_t i = 0;
        while (a[i] == b[i]) ++i;
        *failure = "blocks " + std::to_string(begin) + ".." + std::to_string(begin + n - 1) + ": row " +
                   std::to_string(r) + " byte " + std::to_string(long(i) - long(Rgb565Rows::kGuard)) +
                   " is " + std::to_string(a[i]) + ", the scalar row gives " + std::to_string(b[i]);
        return false;
      }
    }
  return true;
}

template <const RowSet<const Rgb565RowPair*>& kRows, size_t kBlockBytes = 4>
void bench_rgb16_blocks(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  Rgb565Rows image(1920 / 2, rng, kBlockBytes);
  const Row<const Rgb565RowPair*> row = pick_row(kRows, level);
  const Rgb565RowPair rp = image.Pair(image);
  *scalarNs = ns_per_call([&] { kRows.scalar(0, 960, &rp); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, 960, &rp); });
}

template <const RowSet<const Rgb565RowPair*>& kRows, size_t kBlockBytes = 4>
void repeat_rgb16_blocks(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  Rgb565Rows image(1920 / 2, rng, kBlockBytes);
  const Row<const Rgb565RowPair*> row = pick_row(kRows, level);
  const Rgb565RowPair rp = image.Pair(image);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, 960, &rp);
}

// ---- RGB565 stretch ---------------------------------------------------------

// A spread line of random entries (64-bit ones random in both halves), cut to
// exactly the entries the scalar row reads, and a destination with guard
// bytes on either side.
template <class Entry>
struct StretchLine {
  static constexpr size_t kGuard = 8;
  std::vector<Entry> src;
  std::vector<uint8_t> dst;
  StretchLine(size_t end, uint32_t step, std::mt19937& rng)
      : src(((uint64_t(2 * end - 1) * step) >> 16) + 2), dst(8 * end + 2 * kGuard, 0xA5) {
    for (Entry& e : src) e = Entry(uint64_t(rng()) << 32 | rng());
  }
  Hlerp565LineOf<Entry> Line(uint32_t step, StretchPlan* plan = nullptr) {
    return {src.data(), dst.data() + kGuard, step, plan};
  }
};

template <class Entry>
bool check_hlerp565(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const auto& rows = Hlerp565Rows(static_cast<Entry*>(nullptr));
  for (size_t n = 1; n <= 5 * pick_row(rows, level).vector.step; ++n)
    for (unsigned round = 0; round < 16; ++round) {
      // Steps near one entry and near half of one (the 2x enlargement).
      const uint32_t step = round % 2 ? 0x10000 - 1 - rng() % 0x2000 : 0x7FF0 + rng() % 32;
      const size_t begin = rng() % 3, end = begin + n;
      StretchLine<Entry> want(end, step, rng);
      const Hlerp565LineOf<Entry> w = want.Line(step);
      rows.scalar(begin, end, &w);
      // Without a plan, filling one, then from it.
      std::vector<uint8_t> planBytes(StretchPlanBytes(end));
      StretchPlan plan{planBytes.data(), 0, 0, 0, 0};
      for (const char* pass : {"", " filling a plan", " from the plan"}) {
        StretchLine<Entry> got = want;
        std::fill(got.dst.begin(), got.dst.end(), 0xA5);
        const Hlerp565LineOf<Entry> g = got.Line(step, *pass != 0 ? &plan : nullptr);
        run_row(PickHlerp565Row<Entry>(step, int32_t(2 * end), level), begin, end, &g);
        if (got.dst == want.dst) continue;
        size_t i = 0;
        while (got.dst[i] == want.dst[i]) ++i;
        *failure = "entries " + std::to_string(begin) + ".." + std::to_string(end - 1) + " step " +
                   std::to_string(step) + pass + ": byte " +
                   std::to_string(long(i) - long(StretchLine<Entry>::kGuard)) + " is " +
                   std::to_string(got.dst[i]) + ", the scalar row gives " + std::to_string(want.dst[i]);
        return false;
      }
    }
  return true;
}

// 960 entries stretched to 1920 pixels.
constexpr uint32_t kStretchStep = (959u << 16) / 1919;

template <class Entry>
void bench_hlerp565(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  StretchLine<Entry> image(960, kStretchStep, rng);
  std::vector<uint8_t> planBytes(StretchPlanBytes(960));
  StretchPlan plan{planBytes.data(), 0, 0, 0, 0};  // as the kernel keeps it after a picture's first row
  const Hlerp565LineOf<Entry> l = image.Line(kStretchStep, &plan);
  const Hlerp565RowOf<Entry> row = PickHlerp565Row<Entry>(kStretchStep, 1920, level);
  *scalarNs = ns_per_call([&] { row.scalar(0, 960, &l); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, 960, &l); });
}

template <class Entry>
void repeat_hlerp565(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  StretchLine<Entry> image(960, kStretchStep, rng);
  const Hlerp565LineOf<Entry> l = image.Line(kStretchStep);
  const Hlerp565RowOf<Entry> row = PickHlerp565Row<Entry>(kStretchStep, 1920, level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, 960, &l);
}

// ---- fixed 3:2 and 5:2 stretches -----------------------------------------------

// A 32-bit spread line of random entries, cut to exactly the entries rounds
// 0..end-1 read (none of them the line's last round), and a destination with
// guard bytes.
struct FixedLine {
  static constexpr size_t kGuard = 8;
  std::vector<uint32_t> src;
  std::vector<uint8_t> dst;
  FixedLine(size_t end, size_t entriesPerRound, std::mt19937& rng)
      : src(4 * end + 1), dst(8 * entriesPerRound * end + 2 * kGuard, 0xA5) {
    for (uint32_t& e : src) e = rng();
  }
  FixedStretchLine Line(size_t end) { return {src.data(), dst.data() + kGuard, end + 1}; }
};

template <const RowSet<const FixedStretchLine*>& kRows, size_t kEntries>
bool check_fixed_stretch(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  for (size_t n = 1; n <= 5 * pick_row(kRows, level).vector.step; ++n)
    for (unsigned round = 0; round < 8; ++round) {
      const size_t begin = rng() % 5, end = begin + n;
      FixedLine want(end, kEntries, rng), got = want;
      const FixedStretchLine w = want.Line(end), g = got.Line(end);
      kRows.scalar(begin, end, &w);
      run_row(pick_row(kRows, level), begin, end, &g);
      if (got.dst == want.dst) continue;
      size_t i = 0;
      while (got.dst[i] == want.dst[i]) ++i;
      *failure = "rounds " + std::to_string(begin) + ".." + std::to_string(end - 1) + ": byte " +
                 std::to_string(long(i) - long(FixedLine::kGuard)) + " is " + std::to_string(got.dst[i]) +
                 ", the scalar row gives " + std::to_string(want.dst[i]);
      return false;
    }
  return true;
}

// The rounds of a 1920-pixel output row.
template <const RowSet<const FixedStretchLine*>& kRows, size_t kEntries>
void bench_fixed_stretch(CpuLevel level, double* scalarNs, double* chosenNs) {
  constexpr size_t kRounds = 960 / kEntries;
  std::mt19937 rng(1);
  FixedLine image(kRounds, kEntries, rng);
  const FixedStretchLine l = image.Line(kRounds);
  const FixedStretchRow row = pick_row(kRows, level);
  *scalarNs = ns_per_call([&] { row.scalar(0, kRounds, &l); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, kRounds, &l); });
}

template <const RowSet<const FixedStretchLine*>& kRows, size_t kEntries>
void repeat_fixed_stretch(CpuLevel level, unsigned calls) {
  constexpr size_t kRounds = 960 / kEntries;
  std::mt19937 rng(1);
  FixedLine image(kRounds, kEntries, rng);
  const FixedStretchLine l = image.Line(kRounds);
  const FixedStretchRow row = pick_row(kRows, level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, kRounds, &l);
}

// ---- vertical blend of spread lines -----------------------------------------

template <class Entry>
struct BlendLines {
  std::vector<Entry> a, b, out;
  BlendLines(size_t end, std::mt19937& rng) : a(end), b(end), out(end + 2, Entry(0xA5A5A5A5A5A5A5A5u)) {
    for (auto* v : {&a, &b})
      for (Entry& e : *v) e = Entry(uint64_t(rng()) << 32 | rng());
  }
  VlerpLinesOf<Entry> Lines(uint32_t w) { return {a.data(), b.data(), out.data() + 1, w}; }
};

template <class Entry>
bool check_vlerp(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const auto& rows = VlerpRows(static_cast<Entry*>(nullptr));
  const VlerpRowOf<Entry> row = pick_row(rows, level);
  for (size_t n = 1; n <= 5 * row.vector.step; ++n)
    for (uint32_t w = 0; w < 32; ++w) {
      const size_t begin = rng() % 3, end = begin + n;
      BlendLines<Entry> want(end, rng), got = want;
      const VlerpLinesOf<Entry> wl = want.Lines(w), gl = got.Lines(w);
      rows.scalar(begin, end, &wl);
      run_row(row, begin, end, &gl);
      if (got.out == want.out) continue;
      size_t i = 0;
      while (got.out[i] == want.out[i]) ++i;
      *failure = "entries " + std::to_string(begin) + ".." + std::to_string(end - 1) + " weight " +
                 std::to_string(w) + ": entry " + std::to_string(long(i) - 1) + " differs";
      return false;
    }
  return true;
}

template <class Entry>
void bench_vlerp(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  BlendLines<Entry> image(1920, rng);
  const VlerpLinesOf<Entry> l = image.Lines(13);
  const VlerpRowOf<Entry> row = pick_row(VlerpRows(static_cast<Entry*>(nullptr)), level);
  *scalarNs = ns_per_call([&] { row.scalar(0, 1920, &l); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, 1920, &l); });
}

template <class Entry>
void repeat_vlerp(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  BlendLines<Entry> image(1920, rng);
  const VlerpLinesOf<Entry> l = image.Lines(13);
  const VlerpRowOf<Entry> row = pick_row(VlerpRows(static_cast<Entry*>(nullptr)), level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, 1920, &l);
}

// ---- blend down of the any-ratio sampler --------------------------------------

struct DownRows {
  std::vector<uint8_t> a, b;
  std::vector<int16_t> out;
  DownRows(size_t end, std::mt19937& rng) : a(end), b(end), out(end + 2, int16_t(0x5A5A)) {
    for (auto* v : {&a, &b})
      for (uint8_t& e : *v) e = uint8_t(rng());
  }
  BlendDownRows Rows(int32_t w) { return {a.data(), b.data(), out.data() + 1, w}; }
};

bool check_blend_down(CpuLevel level, unsigned seed, std::string* failure) {
  std::mt19937 rng(seed);
  const Row<const BlendDownRows*> row = pick_row(blend_down_rows, level);
  for (size_t n = 1; n <= 5 * row.vector.step; ++n)
    for (int32_t w = 0; w < 32; ++w) {
      const size_t begin = rng() % 3, end = begin + n;
      DownRows want(end, rng), got = want;
      const BlendDownRows wr = want.Rows(w), gr = got.Rows(w);
      blend_down_rows.scalar(begin, end, &wr);
      run_row(row, begin, end, &gr);
      if (got.out == want.out) continue;
      size_t i = 0;
      while (got.out[i] == want.out[i]) ++i;
      *failure = "columns " + std::to_string(begin) + ".." + std::to_string(end - 1) + " weight " +
                 std::to_string(w) + ": column " + std::to_string(long(i) - 1) + " differs";
      return false;
    }
  return true;
}

void bench_blend_down(CpuLevel level, double* scalarNs, double* chosenNs) {
  std::mt19937 rng(1);
  DownRows image(1920, rng);
  const BlendDownRows r = image.Rows(13);
  const Row<const BlendDownRows*> row = pick_row(blend_down_rows, level);
  *scalarNs = ns_per_call([&] { blend_down_rows.scalar(0, 1920, &r); });
  *chosenNs = ns_per_call([&] { run_row(row, 0, 1920, &r); });
}

void repeat_blend_down(CpuLevel level, unsigned calls) {
  std::mt19937 rng(1);
  DownRows image(1920, rng);
  const BlendDownRows r = image.Rows(13);
  const Row<const BlendDownRows*> row = pick_row(blend_down_rows, level);
  for (unsigned i = 0; i < calls; ++i) run_row(row, 0, 1920, &r);
}

}  // namespace

const std::vector<RowCheck>& row_checks() {
  static const std::vector<RowCheck> checks = {
      {"deinterlace_x_interior_blocks", check_x_interior, bench_x_interior, repeat_x_interior},
      {"deinterlace_taps", check_taps<false>, bench_taps<false>, repeat_taps<false>},
      {"deinterlace_taps_inplace", check_taps<true>, bench_taps<true>, repeat_taps<true>},
      {"yuv420_rgb565_blocks", check_rgb16_blocks<rgb565_block_rows, false>,
       bench_rgb16_blocks<rgb565_block_rows>, repeat_rgb16_blocks<rgb565_block_rows>},
      {"yuv420_rgb555_key_blocks", check_rgb16_blocks<rgb555_key_block_rows, true>,
       bench_rgb16_blocks<rgb555_key_block_rows>, repeat_rgb16_blocks<rgb555_key_block_rows>},
      {"yuv420_spread_blocks", check_rgb16_blocks<spread_block_rows, false, 16>,
       bench_rgb16_blocks<spread_block_rows, 16>, repeat_rgb16_blocks<spread_block_rows, 16>},
      {"yuv420_spread32_blocks", check_rgb16_blocks<spread32_block_rows, false, 8>,
       bench_rgb16_blocks<spread32_block_rows, 8>, repeat_rgb16_blocks<spread32_block_rows, 8>},
      {"yuv420_argb_blocks", check_rgb16_blocks<argb_block_rows, false, 8, 0xC3000000u>,
       bench_rgb16_blocks<argb_block_rows, 8>, repeat_rgb16_blocks<argb_block_rows, 8>},
      {"yuv420_abgr_blocks", check_rgb16_blocks<abgr_block_rows, false, 8, 0x5A000000u>,
       bench_rgb16_blocks<abgr_block_rows, 8>, repeat_rgb16_blocks<abgr_block_rows, 8>},
      {"hlerp565_stretch", check_hlerp565<uint64_t>, bench_hlerp565<uint64_t>, repeat_hlerp565<uint64_t>},
      {"hlerp565_32_stretch", check_hlerp565<uint32_t>, bench_hlerp565<uint32_t>, repeat_hlerp565<uint32_t>},
      {"hlerp565_23_stretch", check_fixed_stretch<hlerp565_23_rows, 3>,
       bench_fixed_stretch<hlerp565_23_rows, 3>, repeat_fixed_stretch<hlerp565_23_rows, 3>},
      {"hlerp565_25_stretch", check_fixed_stretch<hlerp565_25_rows, 5>,
       bench_fixed_stretch<hlerp565_25_rows, 5>, repeat_fixed_stretch<hlerp565_25_rows, 5>},
      {"vlerp_blend", check_vlerp<uint64_t>, bench_vlerp<uint64_t>, repeat_vlerp<uint64_t>},
      {"vlerp32_blend", check_vlerp<uint32_t>, bench_vlerp<uint32_t>, repeat_vlerp<uint32_t>},
      {"resize_blend_down", check_blend_down, bench_blend_down, repeat_blend_down},
  };
  return checks;
}
