// CPU probing and the level cap (see cpu_features.h).
#include "imageproc/cpu_features.h"

#include <stdlib.h>
#include <string.h>

#include <atomic>

namespace {

const char* const kNames[] = {"scalar", "sse41", "avx2", "neon"};

CpuLevel probe() {
#if defined(__aarch64__)
  return CPU_NEON;
#elif defined(__x86_64__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) return CPU_AVX2;
  if (__builtin_cpu_supports("sse4.1")) return CPU_SSE41;
  return CPU_SCALAR;
#else
  return CPU_SCALAR;
#endif
}

// x86 levels are ordered (AVX2 CPUs have SSE4.1); NEON stands alone.
CpuLevel within(CpuLevel cap, CpuLevel available) {
  if (cap == CPU_SCALAR || available == CPU_SCALAR) return CPU_SCALAR;
  if (available == CPU_NEON) return CPU_NEON;
  if (cap == CPU_NEON) return available;
  return cap < available ? cap : available;
}

// The level in force; kUnset until the first query reads the environment.
constexpr unsigned kUnset = ~0u;
std::atomic<unsigned> g_level{kUnset};

}  // namespace

CpuLevel cpu_level_available() {
  static const CpuLevel available = probe();
  return available;
}

CpuLevel cpu_level() {
  unsigned level = g_level.load(std::memory_order_relaxed);
  if (level != kUnset) return static_cast<CpuLevel>(level);
  CpuLevel cap = CPU_NEON;  // no cap
  const char* env = getenv("SCRIM_CPU_CAP");
  if (env != nullptr && !cpu_level_from_name(env, &cap)) cap = CPU_NEON;
  const CpuLevel chosen = within(cap, cpu_level_available());
  g_level.store(chosen, std::memory_order_relaxed);
  return chosen;
}

CpuLevel cpu_set_cap(CpuLevel cap) {
  const CpuLevel chosen = within(cap, cpu_level_available());
  g_level.store(chosen, std::memory_order_relaxed);
  return chosen;
}

const char* cpu_level_name(CpuLevel level) { return level <= CPU_NEON ? kNames[level] : "unknown"; }

bool cpu_level_from_name(const char* name, CpuLevel* level) {
  for (unsigned i = 0; i <= CPU_NEON; ++i)
    if (strcmp(name, kNames[i]) == 0) {
      *level = static_cast<CpuLevel>(i);
      return true;
    }
  return false;
}
