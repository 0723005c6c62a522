// The demo player's Y4M reader on any bytes: the input becomes an in-memory
// regular file that the reader opens by name and reads to the end. Besides
// crashes, it checks what the reader promises: every refusal and damaged
// picture is explained, a picture it hands out has the declared size, and a
// file it cannot hold a picture of is refused before the picture is
// allocated (the file is never larger than the input, so an allocation
// beyond it would take the run over its memory limit).
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "fuzz_support.h"
#include "y4m_reader.h"

using namespace scrimfuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const int fd = memfd_create("scrim-fuzz.y4m", 0);
  if (fd < 0) abort();
  if (size > 0 && write(fd, data, size) != static_cast<ssize_t>(size)) abort();
  const std::string path = "/proc/self/fd/" + std::to_string(fd);
  {
    Y4mReader reader;
    if (!reader.open(path)) {
      if (reader.error().rfind(path + ": ", 0) != 0) WrongAnswer("a refusal without its reason", 0, 1);
    } else {
      if (reader.width() <= 0 || reader.height() <= 0) WrongAnswer("an opened file without a size", 0, 1);
      Picture picture;
      long pictures = 0;
      while (pictures < 64 && reader.read(picture)) {
        ++pictures;
        const size_t luma = static_cast<size_t>(reader.width()) * reader.height();
        Expect("luma plane size", picture.y.size(), luma);
        Expect("chroma plane sizes", picture.cb.size() + picture.cr.size(),
               2ul * ((reader.width() + 1) / 2) * ((reader.height() + 1) / 2));
      }
      // The end of a file is only silent after at least one picture.
      if (pictures < 64 && pictures == 0 && reader.error().empty())
        WrongAnswer("no pictures and no reason", 0, 1);
    }
  }
  close(fd);
  return 0;
}
