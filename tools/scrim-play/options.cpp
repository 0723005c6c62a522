#include "options.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

namespace {

bool ParseLong(const char* text, long low, long high, long& value) {
  char* end = nullptr;
  errno = 0;
  long v = strtol(text, &end, 10);
  if (errno != 0 || end == text || *end != '\0' || v < low || v > high) return false;
  value = v;
  return true;
}

// Sets the message for a value an option does not take; always false.
bool Refuse(std::string& error, const char* what, const char* value) {
  error = what;
  if (value != nullptr) error += std::string("not \"") + value + "\"";
  return false;
}

}  // namespace

const char* MatrixName(int matrix) {
  switch (matrix) {
    case 1:
      return "BT.709";
    case 4:
      return "FCC";
    case 7:
      return "SMPTE 240M";
    default:
      return "BT.601";
  }
}

void PrintUsage(FILE* out) {
  fprintf(out,
          "usage: scrim-play [options] [input]\n"
          "\n"
          "Plays a video file (anything FFmpeg decodes: MP4, MKV, WebM, MPEG-TS, AVI, Y4M,\n"
          "...) or, without one, a built-in test clip through libscrimpresent into a host\n"
          "window, in real time by the pictures' timestamps, and writes what the window\n"
          "showed as PNG files with a contact sheet and a summary.\n"
          "\n"
          "options:\n"
          "  --mode rgb565|yv12     what the window's buffers hold (default rgb565)\n"
          "  --matrix NAME|N        colour matrix: bt601, bt709, fcc, smpte240m, or an\n"
          "                         H.264 matrix_coefficients number (default: the\n"
          "                         stream's; unstated, bt709 from 720 lines up, else bt601)\n"
          "  --range video|full     YCbCr range (default: the stream's; unstated, video)\n"
          "  --stream N             play stream N of the file (default: the first video stream)\n"
          "  --drop-late            do not present pictures whose time has already passed\n"
          "  --window               show each posted picture in a desktop window (q or\n"
          "                         closing it stops; at the end it stays until closed)\n"
          "  --frames N             present at most N pictures (default all)\n"
          "  --out DIR              folder for the PNG files and summary (default scrim-play-out)\n"
          "  --every N              write every Nth posted picture as PNG; 0 none (default 1)\n"
          "  --clip progressive|interlaced\n"
          "                         which built-in clip to play without an input file\n"
          "  --deinterlace MODE     deinterlace mode handed to the stream (property 1027);\n"
          "                         default 7 for interlaced inputs, none otherwise\n"
          "  --lib PATH             the libscrimpresent.so to load (default: the built one,\n"
          "                         or $SCRIM_PRESENT_LIBRARY)\n"
          "  --quiet                no progress line\n"
          "  --help                 this text\n");
}

bool ParseOptions(int argc, char** argv, Options& o, std::string& error) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    // "--name=value" is read as "--name value".
    std::string inlineValue;
    bool hasInline = false;
    const size_t eq = arg.find('=');
    if (arg.compare(0, 2, "--") == 0 && eq != std::string::npos) {
      inlineValue = arg.substr(eq + 1);
      arg = arg.substr(0, eq);
      hasInline = true;
    }
    auto value = [&](const char*& out) {
      if (hasInline) {
        out = inlineValue.c_str();
        hasInline = false;
        return true;
      }
      if (i + 1 >= argc) {
        error = arg + " needs a value";
        return false;
      }
      out = argv[++i];
      return true;
    };
    const char* v = nullptr;
    long n = 0;
    if (hasInline && (arg == "--help" || arg == "--quiet" || arg == "--drop-late" || arg == "--window")) {
      error = arg + " takes no value";
      return false;
    }
    if (arg == "--help" || arg == "-h") {
      o.help = true;
    } else if (arg == "--quiet") {
      o.quiet = true;
    } else if (arg == "--drop-late") {
      o.dropLate = true;
    } else if (arg == "--window") {
      o.window = true;
    } else if (arg == "--stream") {
      if (!value(v)) return false;
      if (!ParseLong(v, 0, 1000000, o.stream)) return Refuse(error, "--stream takes a stream number, ", v);
    } else if (arg == "--mode") {
      if (!value(v)) return false;
      if (strcmp(v, "rgb565") == 0)
        o.yv12 = false;
      else if (strcmp(v, "yv12") == 0)
        o.yv12 = true;
      else
        return Refuse(error, "--mode takes rgb565 or yv12, ", v);
    } else if (arg == "--matrix") {
      if (!value(v)) return false;
      o.matrixGiven = true;
      if (strcmp(v, "bt601") == 0)
        o.matrix = 6;
      else if (strcmp(v, "bt709") == 0)
        o.matrix = 1;
      else if (strcmp(v, "fcc") == 0)
        o.matrix = 4;
      else if (strcmp(v, "smpte240m") == 0)
        o.matrix = 7;
      else if (ParseLong(v, 0, 255, n))
        o.matrix = static_cast<int>(n);
      else
        return Refuse(error, "--matrix takes bt601, bt709, fcc, smpte240m or 0-255, ", v);
    } else if (arg == "--range") {
      if (!value(v)) return false;
      o.rangeGiven = true;
      if (strcmp(v, "video") == 0)
        o.range = 0;
      else if (strcmp(v, "full") == 0)
        o.range = 1;
      else
        return Refuse(error, "--range takes video or full, ", v);
    } else if (arg == "--frames") {
      if (!value(v)) return false;
      if (!ParseLong(v, 1, 100000000, o.frames)) return Refuse(error, "--frames takes a count, ", v);
    } else if (arg == "--out") {
      if (!value(v)) return false;
      o.outDir = v;
      if (o.outDir.empty()) return Refuse(error, "--out needs a folder", nullptr);
    } else if (arg == "--every") {
      if (!value(v)) return false;
      if (!ParseLong(v, 0, 100000000, o.every)) return Refuse(error, "--every takes a count, ", v);
    } else if (arg == "--clip") {
      if (!value(v)) return false;
      if (strcmp(v, "progressive") == 0)
        o.interlacedClip = false;
      else if (strcmp(v, "interlaced") == 0)
        o.interlacedClip = true;
      else
        return Refuse(error, "--clip takes progressive or interlaced, ", v);
    } else if (arg == "--deinterlace") {
      if (!value(v)) return false;
      if (!ParseLong(v, 0, 0xFFFFFFFFL, o.deinterlace))
        return Refuse(error, "--deinterlace takes a mode number, ", v);
    } else if (arg == "--lib") {
      if (!value(v)) return false;
      o.library = v;
    } else if (arg.size() > 1 && arg[0] == '-') {
      error = "unknown option " + arg;
      return false;
    } else if (o.input.empty()) {
      o.input = arg;
    } else {
      error = "only one input file can be played";
      return false;
    }
  }
  return true;
}
