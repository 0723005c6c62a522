// What the player measured, and the closing summary it prints.
#pragma once

#include <stdio.h>

#include <string>
#include <vector>

struct Series {
  long count = 0;
  double sum = 0, worst = 0, least = 0;
  void add(double v) {
    if (count == 0 || v > worst) worst = v;
    if (count == 0 || v < least) least = v;
    sum += v;
    ++count;
  }
  double mean() const { return count ? sum / count : 0; }
};

struct PlaySummary {
  std::string input;        // what was played
  std::string output;       // window mode and colour format
  std::string library;      // the library's version notice
  std::string decoding;     // how pictures reach the presenter (as decoded, or converted)
  std::string colour;       // matrix and range, and where they came from
  std::string deinterlace;  // the mode, and why
  long presented = 0;       // pictures that reached the window
  long late = 0;            // pictures whose time had passed when they were ready
  long dropped = 0;         // pictures Present refused or did not post, or late ones not presented
  Series conversionMs;      // image processor time per picture
  Series latenessMs;        // posting time against entry + delay
  Series clockMs;           // posting time against the picture's time on the clock
  long pngs = 0;
  std::string outDir;
  std::string contactSheet;  // path, or empty
  std::string problem;       // why playback stopped early, if it did

  void print(FILE* out) const;
};
