#include "y4m_reader.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <sstream>

namespace {

const size_t kMaxLine = 4096;
const int kMaxSize = 16384;

// Reads one '\n'-terminated line, without a '\r' before the '\n' (files
// written on Windows end their lines so); false if none ends within kMaxLine
// bytes.
bool readLine(FILE* f, std::string& line, bool& eof) {
  line.clear();
  eof = false;
  for (;;) {
    int c = fgetc(f);
    if (c == EOF) {
      eof = line.empty();
      return false;
    }
    if (c == '\n') {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return true;
    }
    if (line.size() >= kMaxLine) return false;
    line.push_back(static_cast<char>(c));
  }
}

bool parseInt(const std::string& text, long& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  value = strtol(text.c_str(), &end, 10);
  return errno == 0 && *end == '\0';
}

// The start of a line as a message can show it: other bytes than printable
// ASCII are written as \xNN, so that a stray control character is named.
std::string shown(const std::string& line) {
  std::string out;
  for (size_t i = 0; i < line.size() && i < 16; ++i) {
    const unsigned char c = static_cast<unsigned char>(line[i]);
    if (c >= 0x20 && c < 0x7F) {
      out.push_back(static_cast<char>(c));
    } else {
      char hex[8];
      snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    }
  }
  return out;
}

}  // namespace

Y4mReader::~Y4mReader() {
  if (file_ != nullptr) fclose(file_);
}

bool Y4mReader::fail(const std::string& message) {
  error_ = path_ + ": " + message;
  return false;
}

bool Y4mReader::open(const std::string& path) {
  path_ = path;
  file_ = fopen(path.c_str(), "rb");
  if (file_ == nullptr) return fail(std::string("cannot open: ") + strerror(errno));
  char magic[10] = {0};
  if (fread(magic, 1, 9, file_) != 9 || memcmp(magic, "YUV4MPEG2", 9) != 0)
    return fail("not a Y4M file (it does not start with \"YUV4MPEG2\")");
  std::string header;
  bool eof = false;
  if (!readLine(file_, header, eof)) return fail("odd header: no end of line within the first 4 KiB");
  if (!parseHeader(header)) return false;

  struct stat st;
  long headerBytes = ftell(file_);
  if (fstat(fileno(file_), &st) == 0 && headerBytes > 0) {
    if (S_ISREG(st.st_mode)) fileBytes_ = static_cast<long>(st.st_size);
    countHint_ = (static_cast<long>(st.st_size) - headerBytes) / (pictureBytes() + 6);  // "FRAME\n"
  }
  return true;
}

bool Y4mReader::parseHeader(const std::string& header) {
  if (!header.empty() && header[0] != ' ')
    return fail("odd header: \"YUV4MPEG2\" is not followed by a space");
  std::istringstream tokens(header);
  std::string token;
  bool haveWidth = false, haveHeight = false;
  while (tokens >> token) {
    const char tag = token[0];
    const std::string value = token.substr(1);
    long n = 0;
    switch (tag) {
      case 'W':
      case 'H':
        if (!parseInt(value, n) || n <= 0 || n > kMaxSize)
          return fail("odd header: bad picture " + std::string(tag == 'W' ? "width" : "height") + " \"" +
                      token + "\"");
        (tag == 'W' ? width_ : height_) = static_cast<int>(n);
        (tag == 'W' ? haveWidth : haveHeight) = true;
        break;
      case 'F': {
        size_t colon = value.find(':');
        long num = 0, den = 0;
        if (colon == std::string::npos || !parseInt(value.substr(0, colon), num) ||
            !parseInt(value.substr(colon + 1), den) || num <= 0 || den <= 0 || num > 1000000 || den > 1000000)
          return fail("odd header: bad frame rate \"" + token + "\"");
        rate_.num = static_cast<int>(num);
        rate_.den = static_cast<int>(den);
        break;
      }
      case 'I':
        if (value != "p" && value != "t" && value != "b" && value != "m" && value != "?")
          return fail("odd header: bad interlacing \"" + token + "\"");
        interlaced_ = value == "t" || value == "b";
        break;
      case 'C':
        if (value != "420" && value != "420jpeg" && value != "420paldv" && value != "420mpeg2")
          return fail("not 8-bit 4:2:0 (colour space \"" + value + "\"); only 4:2:0 pictures can be played");
        break;
      case 'A':
      case 'X':
        break;  // aspect ratio and extensions do not matter here
      default:
        return fail("odd header: unknown field \"" + token + "\"");
    }
  }
  if (!haveWidth || !haveHeight) return fail("odd header: the picture size (W and H) is missing");
  return true;
}

long Y4mReader::pictureBytes() const {
  return static_cast<long>(width_) * height_ + 2L * ((width_ + 1) / 2) * ((height_ + 1) / 2);
}

bool Y4mReader::read(Picture& picture) {
  error_.clear();
  std::string line;
  bool eof = false;
  const std::string which = "picture " + std::to_string(pictureIndex_);
  if (!readLine(file_, line, eof)) {
    if (!eof) return fail(which + ": damaged FRAME line");
    if (pictureIndex_ == 0) return fail("no pictures: the file ends after its header");
    return false;
  }
  if (line.compare(0, 5, "FRAME") != 0 || (line.size() > 5 && line[5] != ' '))
    return fail(which + ": expected \"FRAME\", found \"" + shown(line) + "\"");
  // A regular file says how much it still holds: a picture it cannot hold is
  // refused before its planes are allocated (a damaged header may claim
  // 16384 x 16384, 384 MiB).
  const long at = ftell(file_);
  if (fileBytes_ >= 0 && at >= 0 && fileBytes_ - at < pictureBytes())
    return fail(which + " is cut short: " + std::to_string(fileBytes_ - at) +
                " bytes left, a picture takes " + std::to_string(pictureBytes()));
  picture.resize(width_, height_);
  if (fread(picture.y.data(), 1, picture.y.size(), file_) != picture.y.size() ||
      fread(picture.cb.data(), 1, picture.cb.size(), file_) != picture.cb.size() ||
      fread(picture.cr.data(), 1, picture.cr.size(), file_) != picture.cr.size())
    return fail(which + " is cut short");
  ++pictureIndex_;
  return true;
}
