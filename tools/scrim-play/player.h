// The host side of playback, as a media player has it: a presenter made by the
// library's factory, a host window handed over as the Android surface, one
// stream, and one Present per picture with that picture's display delay.
#pragma once

#include <stdint.h>

#include <string>

#include "host_window.h"
#include "library.h"
#include "options.h"
#include "picture.h"

class Player {
 public:
  Player(const ScrimLibrary& lib, const Options& options);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // Creates and opens the presenter and a stream for pictures of this size.
  bool start(int width, int height, std::string& error);

  struct Shown {
    uint32_t result = 0;                     // what Present returned
    const HostPostedFrame* frame = nullptr;  // what the window received, or null
    int64_t entryUs = 0;                     // when Present was called
  };
  // Presents one picture, to be shown delayMs after the call.
  Shown present(Picture& picture, long delayMs);
  // Forgets the posted pictures handed out so far (their memory goes).
  void dropPosted();

 private:
  const ScrimLibrary& lib_;
  const Options& options_;
  ANativeWindow* window_ = nullptr;
  IKvVideoPresenterAdv* presenter_ = nullptr;
  IKvVideoPresenterStream* stream_ = nullptr;
};
