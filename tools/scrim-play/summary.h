// What the player measured, and the closing summary it prints.
#pragma once

#include <stdio.h>

#include <string>
#include <vector>

struct Series {
  long count = 0;
  double sum = 0, worst = 0;
  void add(double v) {
    if (count == 0 || v > worst) worst = v;
    sum += v;
    ++count;
  }
  double mean() const { return count ? sum / count : 0; }
};

struct PlaySummary {
  std::string input;    // what was played
  std::string output;   // window mode and colour format
  std::string library;  // the library's version notice
  long presented = 0;   // pictures that reached the window
  long dropped = 0;     // pictures Present refused or did not post
  Series conversionMs;  // image processor time per picture
  Series latenessMs;    // posting time against entry + delay
  long pngs = 0;
  std::string outDir;
  std::string contactSheet;  // path, or empty
  std::string problem;       // why playback stopped early, if it did

  void print(FILE* out) const;
};
