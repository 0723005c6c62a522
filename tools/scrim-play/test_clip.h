// The built-in clip: a few seconds of a moving, colourful test pattern with the
// picture number drawn in it, made in code so the player needs no input file.
#pragma once

#include "picture.h"

struct TestClip {
  int width = 320;
  int height = 240;
  int pictures = 100;  // four seconds
  FrameRate rate{25, 1};
  // Interlaced: the odd lines show the scene half a picture later than the
  // even ones, as a camera's second field would, so moving edges comb.
  bool interlaced = false;

  void render(int index, Picture& picture) const;
};
