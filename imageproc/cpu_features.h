// Which vector instruction set the row functions may use. The set is probed
// once (x86-64: SSE4.1 and AVX2 from the CPU; aarch64: NEON, always there)
// and can be capped below what the CPU has, so that tests and benchmarks run
// every row function set on one machine:
//   - the environment variable SCRIM_CPU_CAP=scalar|sse41|avx2|neon, read at
//     the first query;
//   - cpu_set_cap(), which overrides it at any time.
// A cap above what the CPU or the build offers is lowered to what exists.
#pragma once

enum CpuLevel : unsigned {
  CPU_SCALAR = 0,  // the plain C++ reference rows
  CPU_SSE41 = 1,   // x86-64
  CPU_AVX2 = 2,    // x86-64
  CPU_NEON = 3,    // aarch64
};

// The level row functions are chosen for: the best the CPU has, within the cap.
CpuLevel cpu_level();

// The best level this CPU and build offer, whatever the cap.
CpuLevel cpu_level_available();

// Caps the level; CPU_NEON or CPU_AVX2 lifts the cap. Returns the level in force.
CpuLevel cpu_set_cap(CpuLevel cap);

// "scalar", "sse41", "avx2" or "neon"; cpu_level_from_name is its inverse
// (false for an unknown name).
const char* cpu_level_name(CpuLevel level);
bool cpu_level_from_name(const char* name, CpuLevel* level);
