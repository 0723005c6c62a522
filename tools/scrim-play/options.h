// Command line of scrim-play.
#pragma once

#include <stdint.h>
#include <stdio.h>

#include <string>

struct Options {
  std::string input;            // a video or .y4m file; empty: the built-in clip
  long stream = -1;             // --stream N: which stream of the file; -1 the first video stream
  bool interlacedClip = false;  // --clip interlaced
  bool yv12 = false;            // --mode yv12: the window takes YV12 instead of RGB565
  int matrix = 6;               // H.264 matrix_coefficients: 1 BT.709, 4 FCC, 7 SMPTE 240M, others BT.601
  int range = 0;                // 0 video, 1 full
  bool matrixGiven = false;     // --matrix or --range given: it overrides the input's description
  bool rangeGiven = false;
  bool dropLate = false;  // --drop-late: late pictures are not presented
  bool window = false;    // --window: show the posted pictures in a desktop window
  long frames = -1;       // pictures to present; -1: all
  std::string outDir = "scrim-play-out";
  long every = 1;         // write every Nth posted picture as PNG; 0: none
  long deinterlace = -1;  // stream property 1027; -1: not set
  std::string library;    // libscrimpresent.so to load; empty: the built one
  bool quiet = false;     // no progress line
  bool help = false;

  // The stream's colour-format word: planar 4:2:0 layout, range, matrix.
  uint32_t colourFormat() const {
    return (static_cast<uint32_t>(range) << 8) | static_cast<uint32_t>(matrix);
  }
};

// False with a message for a bad command line.
bool ParseOptions(int argc, char** argv, Options& options, std::string& error);
void PrintUsage(FILE* out);
const char* MatrixName(int matrix);
