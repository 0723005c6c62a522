// The row checks: one entry per row set. A new row set registers here (a
// check and a timing in row_checks.cpp, one line in the table) and is then
// run by scrim-checkasm and by the test suite at every instruction-set level.
#pragma once

#include <string>
#include <vector>

#include "imageproc/cpu_features.h"

struct RowCheck {
  const char* name;
  // Random rows of every remainder length (and random placement) through the
  // row chosen at `level`, against the scalar row; on a difference, false
  // with a description of the first one in `failure`.
  bool (*check)(CpuLevel level, unsigned seed, std::string* failure);
  // Nanoseconds per call of the scalar row and of the row chosen at `level`
  // on one 1920-pixel row.
  void (*bench)(CpuLevel level, double* scalarNs, double* chosenNs);
};

const std::vector<RowCheck>& row_checks();
