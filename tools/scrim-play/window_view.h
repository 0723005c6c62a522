// A desktop window (SDL2) that shows each picture the presenter posted, as it
// is posted, at its own size or scaled down to fit the screen.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "host_window.h"

struct SDL_Window;
struct SDL_Renderer;
struct SDL_Texture;

class WindowView {
 public:
  WindowView() = default;
  ~WindowView();
  WindowView(const WindowView&) = delete;
  WindowView& operator=(const WindowView&) = delete;

  // False with a message when there is no display to open a window on.
  bool open(int width, int height, std::string& error);
  // Shows a posted picture with its number and time in the title. False once
  // the window has been closed or q pressed: playback is to stop.
  bool show(const HostPostedFrame* frame, long number, double seconds);
  // After the last picture: keeps it on screen until the window is closed or q pressed.
  void waitForClose();

 private:
  // Handles pending events; false when asked to stop.
  bool pump(bool wait);
  void draw();

  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  SDL_Texture* texture_ = nullptr;
  int width_ = 0, height_ = 0;
  bool closed_ = false;
  std::vector<uint8_t> rgb_;
  std::string title_;
};
