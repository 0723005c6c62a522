#include "png_writer.h"

#include <errno.h>
#include <png.h>
#include <stdio.h>
#include <string.h>

#include <vector>

namespace {

uint8_t clampByte(int v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

void setError(char* err, size_t errSize, const char* what, const char* path) {
  if (err && errSize) snprintf(err, errSize, "%s: %s", path ? path : "(null)", what);
}

void rgb565ToRgb(const HostPostedFrame* f, uint8_t* rgb) {
  for (int32_t y = 0; y < f->height; ++y) {
    const uint8_t* row = f->pixels + static_cast<size_t>(y) * f->stride * 2;
    for (int32_t x = 0; x < f->width; ++x) {
      unsigned v = row[2 * x] | (row[2 * x + 1] << 8);
      unsigned r = v >> 11, g = (v >> 5) & 63, b = v & 31;
      uint8_t* o = rgb + (static_cast<size_t>(y) * f->width + x) * 3;
      o[0] = static_cast<uint8_t>(r << 3 | r >> 2);
      o[1] = static_cast<uint8_t>(g << 2 | g >> 4);
      o[2] = static_cast<uint8_t>(b << 3 | b >> 2);
    }
  }
}

// Android's YV12: Y (stride a multiple of 16), then Cr, then Cb, chroma stride
// half the luma stride rounded up to 16.
void yv12ToRgb(const HostPostedFrame* f, uint8_t* rgb) {
  size_t ys = static_cast<size_t>(f->stride);
  size_t cs = (ys / 2 + 15) / 16 * 16;
  const uint8_t* yp = f->pixels;
  const uint8_t* crp = yp + ys * f->height;
  const uint8_t* cbp = crp + cs * ((f->height + 1) / 2);
  for (int32_t y = 0; y < f->height; ++y) {
    for (int32_t x = 0; x < f->width; ++x) {
      double Y = 1.164 * (yp[y * ys + x] - 16);
      double Cb = cbp[(y / 2) * cs + x / 2] - 128.0;
      double Cr = crp[(y / 2) * cs + x / 2] - 128.0;
      uint8_t* o = rgb + (static_cast<size_t>(y) * f->width + x) * 3;
      o[0] = clampByte(static_cast<int>(Y + 1.596 * Cr + 0.5));
      o[1] = clampByte(static_cast<int>(Y - 0.392 * Cb - 0.813 * Cr + 0.5));
      o[2] = clampByte(static_cast<int>(Y + 2.017 * Cb + 0.5));
    }
  }
}

}  // namespace

extern "C" int HostPng_postedToRgb(const HostPostedFrame* frame, uint8_t* rgb) {
  if (!frame || !frame->pixels || !rgb) return -1;
  if (frame->format == WINDOW_FORMAT_RGB_565) {
    rgb565ToRgb(frame, rgb);
    return 0;
  }
  if (frame->format == HOST_WINDOW_FORMAT_YV12) {
    yv12ToRgb(frame, rgb);
    return 0;
  }
  return -1;
}

extern "C" int HostPng_writeRgb(const char* path, const uint8_t* rgb, int32_t width, int32_t height,
                                char* err, size_t errSize) {
  if (!path || !rgb || width <= 0 || height <= 0) {
    setError(err, errSize, "nothing to write", path);
    return -1;
  }
  FILE* fp = fopen(path, "wb");
  if (!fp) {
    setError(err, errSize, strerror(errno), path);
    return -1;
  }
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) {
    png_destroy_write_struct(&png, &info);
    fclose(fp);
    setError(err, errSize, "out of memory", path);
    return -1;
  }
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    fclose(fp);
    setError(err, errSize, "libpng failed to write", path);
    return -1;
  }
  png_init_io(png, fp);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
               PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int32_t y = 0; y < height; ++y) {
    png_write_row(png, const_cast<png_bytep>(rgb + static_cast<size_t>(y) * width * 3));
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  if (fclose(fp) != 0) {
    setError(err, errSize, strerror(errno), path);
    return -1;
  }
  return 0;
}

extern "C" int HostPng_writePostedFrame(const HostPostedFrame* frame, const char* path, char* err,
                                        size_t errSize) {
  if (!frame || !frame->pixels || frame->width <= 0 || frame->height <= 0) {
    setError(err, errSize, "frame has no pixels", path);
    return -1;
  }
  std::vector<uint8_t> rgb(static_cast<size_t>(frame->width) * frame->height * 3);
  if (HostPng_postedToRgb(frame, rgb.data()) != 0) {
    setError(err, errSize, "unsupported frame format", path);
    return -1;
  }
  return HostPng_writeRgb(path, rgb.data(), frame->width, frame->height, err, errSize);
}
