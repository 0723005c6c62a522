#include "window_view.h"

#include <SDL2/SDL.h>
#include <stdio.h>
#include <algorithm>

#include "png_writer.h"

WindowView::~WindowView() {
  if (texture_ != nullptr) SDL_DestroyTexture(texture_);
  if (renderer_ != nullptr) SDL_DestroyRenderer(renderer_);
  if (window_ != nullptr) SDL_DestroyWindow(window_);
  if (window_ != nullptr || renderer_ != nullptr) SDL_Quit();
}

bool WindowView::open(int width, int height, std::string& error) {
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    error = std::string("--window needs a display: ") + SDL_GetError();
    SDL_Quit();
    return false;
  }
  width_ = width;
  height_ = height;
  // Pictures larger than the screen are shown scaled down, keeping their shape.
  int w = width, h = height;
  SDL_Rect usable;
  if (SDL_GetDisplayUsableBounds(0, &usable) == 0 && usable.w > 0 && usable.h > 0 &&
      (w > usable.w || h > usable.h)) {
    const double scale = std::min(static_cast<double>(usable.w) / w, static_cast<double>(usable.h) / h);
    w = std::max(1, static_cast<int>(w * scale));
    h = std::max(1, static_cast<int>(h * scale));
  }
  window_ = SDL_CreateWindow("scrim-play", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, w, h,
                             SDL_WINDOW_RESIZABLE);
  if (window_ != nullptr) renderer_ = SDL_CreateRenderer(window_, -1, 0);
  if (renderer_ != nullptr) {
    SDL_RenderSetLogicalSize(renderer_, width, height);  // scales to the window, letterboxed
    texture_ =
        SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_RGB24, SDL_TEXTUREACCESS_STREAMING, width, height);
  }
  if (texture_ == nullptr) {
    error = std::string("cannot open a window: ") + SDL_GetError();
    return false;
  }
  rgb_.assign(static_cast<size_t>(width) * height * 3, 0);
  return true;
}

void WindowView::draw() {
  SDL_SetRenderDrawColor(renderer_, 0, 0, 0, 255);
  SDL_RenderClear(renderer_);
  SDL_RenderCopy(renderer_, texture_, nullptr, nullptr);
  SDL_RenderPresent(renderer_);
}

bool WindowView::pump(bool wait) {
  SDL_Event e;
  while (!closed_ && (wait ? SDL_WaitEvent(&e) : SDL_PollEvent(&e))) {
    if (e.type == SDL_QUIT || (e.type == SDL_WINDOWEVENT && e.window.event == SDL_WINDOWEVENT_CLOSE) ||
        (e.type == SDL_KEYDOWN && (e.key.keysym.sym == SDLK_q || e.key.keysym.sym == SDLK_ESCAPE)))
      closed_ = true;
    else if (e.type == SDL_WINDOWEVENT &&
             (e.window.event == SDL_WINDOWEVENT_EXPOSED || e.window.event == SDL_WINDOWEVENT_SIZE_CHANGED))
      draw();
  }
  return !closed_;
}

bool WindowView::show(const HostPostedFrame* frame, long number, double seconds) {
  if (closed_) return false;
  if (frame != nullptr && frame->pixels != nullptr && frame->width == width_ && frame->height == height_ &&
      HostPng_postedToRgb(frame, rgb_.data()) == 0) {
    SDL_UpdateTexture(texture_, nullptr, rgb_.data(), width_ * 3);
    char title[96];
    snprintf(title, sizeof title, "scrim-play: picture %ld, %.3f s", number, seconds);
    title_ = title;
    SDL_SetWindowTitle(window_, title);
    draw();
  }
  return pump(false);
}

void WindowView::waitForClose() {
  if (closed_) return;
  SDL_SetWindowTitle(window_, (title_ + " (end: q or close the window)").c_str());
  draw();
  pump(true);
}
