// What the instruction-set cap does. (The vector rows themselves are checked at
// every level by the kernel and deinterlace tests.)
#include <gtest/gtest.h>

#include "imageproc/cpu_features.h"

namespace {

TEST(CpuCap, CapLowersTheLevelAndNeverRaisesIt) {
  const CpuLevel best = cpu_level_available();
  EXPECT_EQ(cpu_set_cap(CPU_SCALAR), CPU_SCALAR);
  EXPECT_EQ(cpu_level(), CPU_SCALAR);
  EXPECT_EQ(cpu_set_cap(CPU_NEON), best);  // no cap
#if defined(__x86_64__)
  EXPECT_EQ(cpu_set_cap(CPU_SSE41), best == CPU_SCALAR ? CPU_SCALAR : CPU_SSE41);
#elif defined(__aarch64__)
  EXPECT_EQ(best, CPU_NEON);
  EXPECT_EQ(cpu_set_cap(CPU_AVX2), CPU_NEON);  // the x86 levels do not cap NEON
#endif
  cpu_set_cap(CPU_NEON);
  CpuLevel parsed;
  EXPECT_TRUE(cpu_level_from_name("sse41", &parsed));
  EXPECT_EQ(parsed, CPU_SSE41);
  EXPECT_FALSE(cpu_level_from_name("sse4", &parsed));
}

}  // namespace
