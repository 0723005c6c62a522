// A few posted pictures, shrunk and laid out in one PNG image.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "host_window.h"

class ContactSheet {
 public:
  // Up to `slots` pictures, picked evenly out of `expected` posted ones (0: unknown).
  ContactSheet(int slots, long expected);
  // Looks at every posted picture in order and keeps the ones it picks.
  void offer(long postedIndex, const HostPostedFrame* frame);
  size_t size() const { return thumbs_.size(); }
  bool write(const std::string& path, std::string& error) const;

 private:
  struct Thumb {
    int width, height;
    std::vector<uint8_t> rgb;
  };
  int slots_;
  long step_;
  std::vector<Thumb> thumbs_;
};
