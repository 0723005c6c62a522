// scrim-checkasm: runs every registered row check at every instruction-set
// level this CPU offers (or the one named), and with --bench times each row
// against its scalar row. Run it after touching a row function.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "row_checks.h"

namespace {

void usage(FILE* out) {
  fprintf(out,
          "usage: scrim-checkasm [--cpu LEVEL] [--seed N] [--filter TEXT] [--bench]\n"
          "Checks each vector row function against its scalar row on random rows of\n"
          "every remainder length, at each instruction-set level the CPU offers.\n"
          "  --cpu LEVEL    only this level: scalar, sse41, avx2 or neon\n"
          "  --seed N       random seed (default 1)\n"
          "  --filter TEXT  only the row sets whose name contains TEXT\n"
          "  --bench        also time each row against the scalar row\n"
          "  --help         this text\n"
          "Exit status: 0 all rows match, 1 a row differs, 2 bad usage.\n");
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<CpuLevel> levels;
  unsigned seed = 1;
  std::string filter;
  bool bench = false;
  for (int i = 1; i < argc; ++i) {
    const char* a = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (strcmp(a, "--help") == 0) {
      usage(stdout);
      return 0;
    } else if (strcmp(a, "--bench") == 0) {
      bench = true;
    } else if (strcmp(a, "--cpu") == 0 && value != nullptr) {
      CpuLevel level;
      if (!cpu_level_from_name(value, &level)) {
        fprintf(stderr, "scrim-checkasm: --cpu takes scalar, sse41, avx2 or neon, not \"%s\"\n", value);
        return 2;
      }
      if (cpu_set_cap(level) != level) {
        fprintf(stderr, "scrim-checkasm: this CPU or build has no %s\n", value);
        return 2;
      }
      levels.push_back(level);
      ++i;
    } else if (strcmp(a, "--seed") == 0 && value != nullptr) {
      seed = unsigned(strtoul(value, nullptr, 10));
      ++i;
    } else if (strcmp(a, "--filter") == 0 && value != nullptr) {
      filter = value;
      ++i;
    } else {
      fprintf(stderr, "scrim-checkasm: unknown option \"%s\"\n", a);
      usage(stderr);
      return 2;
    }
  }
  if (levels.empty())
    for (unsigned l = CPU_SSE41; l <= CPU_NEON; ++l)
      if (cpu_set_cap(CpuLevel(l)) == CpuLevel(l)) levels.push_back(CpuLevel(l));
  printf("levels available: %s\n", cpu_level_name(cpu_level_available()));

  int failures = 0;
  for (const RowCheck& c : row_checks()) {
    if (c.name == nullptr || std::string(c.name).find(filter) == std::string::npos) continue;
    for (CpuLevel level : levels) {
      std::string failure;
      const bool ok = c.check(level, seed, &failure);
      printf("%-32s %-6s %s%s\n", c.name, cpu_level_name(level), ok ? "ok" : "DIFFERS: ", failure.c_str());
      fflush(stdout);
      failures += ok ? 0 : 1;
      if (bench) {
        double scalarNs = 0, chosenNs = 0;
        c.bench(level, &scalarNs, &chosenNs);
        printf("%-32s %-6s scalar %.0f ns, %s %.0f ns per 1920-pixel row: %.2fx faster\n", c.name,
               cpu_level_name(level), scalarNs, cpu_level_name(level), chosenNs, scalarNs / chosenNs);
      }
    }
  }
  if (failures != 0) fprintf(stderr, "scrim-checkasm: %d row check(s) differ\n", failures);
  return failures == 0 ? 0 : 1;
}
