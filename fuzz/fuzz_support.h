// Pieces every harness shares: heap blocks of exactly the size the library may
// touch (so that AddressSanitizer reports the first byte beyond), seeded
// filler, and the check that turns a wrong answer into a finding.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

namespace scrimfuzz {

// A wrong result is a finding like a crash: say what was expected and abort,
// so that libFuzzer keeps the input.
[[noreturn]] inline void WrongAnswer(const char* what, unsigned long got, unsigned long want) {
  fprintf(stderr, "wrong answer: %s: got 0x%lX, expected 0x%lX\n", what, got, want);
  abort();
}

inline void Expect(const char* what, unsigned long got, unsigned long want) {
  if (got != want) WrongAnswer(what, got, want);
}

// SCRIM_FUZZ_VERBOSE=1 (when re-running one input) makes a harness say what
// it is about to do.
inline bool Verbose() {
  static const bool on = getenv("SCRIM_FUZZ_VERBOSE") != nullptr;
  return on;
}

// Bytes that vary with a seed from the input: xorshift, eight bytes a step,
// cheap enough to fill whole pictures on every run.
inline void Fill(uint8_t* p, size_t n, uint32_t seed) {
  uint64_t x = seed | 1u;
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    memcpy(p + i, &x, 8);
  }
  for (; i < n; ++i) p[i] = static_cast<uint8_t>(x >> (8 * (i % 8)));
}

// One heap block of exactly n bytes (n may be 0: a valid pointer to nothing).
class Block {
 public:
  Block() = default;
  explicit Block(size_t n) : p_(static_cast<uint8_t*>(malloc(n))), n_(n) {
    if (p_ == nullptr && n != 0) abort();
  }
  ~Block() { free(p_); }
  Block(Block&& o) noexcept : p_(o.p_), n_(o.n_) { o.p_ = nullptr, o.n_ = 0; }
  Block& operator=(Block&& o) noexcept {
    if (this != &o) {
      free(p_);
      p_ = o.p_, n_ = o.n_;
      o.p_ = nullptr, o.n_ = 0;
    }
    return *this;
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  uint8_t* data() const { return p_; }
  size_t size() const { return n_; }
  std::vector<uint8_t> copy() const { return std::vector<uint8_t>(p_, p_ + n_); }
  bool same(const std::vector<uint8_t>& v) const {
    return v.size() == n_ && (n_ == 0 || memcmp(p_, v.data(), n_) == 0);
  }

 private:
  uint8_t* p_ = nullptr;
  size_t n_ = 0;
};

// Bytes of a plane of `rows` lines `stride` apart whose last line is `last` bytes long.
inline size_t PlaneBytes(uint64_t rows, uint64_t stride, uint64_t last) {
  return rows == 0 ? 0 : static_cast<size_t>((rows - 1) * stride + last);
}

// A stride for lines of `row` bytes: mostly a little padding, sometimes none,
// sometimes that of a much wider frame the picture was cut out of.
inline uint32_t PickStride(FuzzedDataProvider& in, uint32_t row) {
  const uint32_t base = row == 0 ? 1 : row;
  switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      return base;
    case 1:
      return base + in.ConsumeIntegralInRange<uint32_t>(0, 4096);
    default:
      return base + in.ConsumeIntegralInRange<uint32_t>(0, 64);
  }
}

}  // namespace scrimfuzz
