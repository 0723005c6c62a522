// The checker's row checks (tools/scrim-checkasm) at every instruction-set level
// this CPU offers, and what the cap does.
#include <gtest/gtest.h>

#include "imageproc/cpu_features.h"
#include "row_checks.h"

namespace {

TEST(RowChecks, EveryVectorRowMatchesItsScalarRow) {
  unsigned levelsRun = 0;
  for (unsigned level = CPU_SSE41; level <= CPU_NEON; ++level) {
    if (cpu_set_cap(CpuLevel(level)) != CpuLevel(level)) continue;
    ++levelsRun;
    for (const RowCheck& c : row_checks()) {
      std::string failure;
      EXPECT_TRUE(c.check(CpuLevel(level), 7, &failure))
          << c.name << " at " << cpu_level_name(CpuLevel(level)) << ": " << failure;
    }
  }
  cpu_set_cap(CPU_NEON);
#if defined(__x86_64__) || defined(__aarch64__)
  EXPECT_GT(levelsRun, 0u) << "no vector level was checked";
#endif
}

TEST(RowChecks, CapLowersTheLevelAndNeverRaisesIt) {
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
