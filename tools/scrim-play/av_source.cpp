#include "av_source.h"

#include <stdio.h>

#include <mutex>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

const AVRational kMicroseconds = {1, 1000000};

// Demuxers and decoders that resynchronise past damage say so only in their
// log: its errors are collected here (from any decoding thread) and read as damage.
struct LogErrors {
  std::mutex lock;
  long count = 0;
  std::string last;
} gLogErrors;

void CollectLogErrors(void* context, int level, const char* format, va_list args) {
  if (level > AV_LOG_ERROR) return;
  char line[256];
  int prefix = 0;
  av_log_format_line2(context, level, format, args, line, sizeof line, &prefix);
  std::string text = line;
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  std::lock_guard<std::mutex> hold(gLogErrors.lock);
  ++gLogErrors.count;
  gLogErrors.last = text;
}

std::string AvError(int code) {
  char buf[AV_ERROR_MAX_STRING_SIZE] = {0};
  av_strerror(code, buf, sizeof buf);
  return buf;
}

std::string FormatName(int format) {
  const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(format));
  return name ? name : "an unknown pixel format";
}

// H.264 numbering, which FFmpeg's colour spaces share; -1 for none the presenter has.
int MatrixOf(AVColorSpace space) {
  switch (space) {
    case AVCOL_SPC_BT709:
      return 1;
    case AVCOL_SPC_FCC:
      return 4;
    case AVCOL_SPC_SMPTE240M:
      return 7;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
      return 6;
    default:
      return -1;
  }
}

int SwsMatrix(int matrix) {
  return matrix == 1   ? SWS_CS_ITU709
         : matrix == 4 ? SWS_CS_FCC
         : matrix == 7 ? SWS_CS_SMPTE240M
                       : SWS_CS_ITU601;
}

bool FullRangeFormat(int format) {
  return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
         format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P;
}

class AvSource : public PictureSource {
 public:
  ~AvSource() override {
    sws_freeContext(sws_);
    av_frame_free(&frame_);
    av_packet_free(&packet_);
    avcodec_free_context(&codec_);
    avformat_close_input(&format_);
  }
  bool open(const std::string& path, int stream);
  bool next(Picture& picture) override;
  const std::string& error() const override { return error_; }
  int width() const override { return width_; }
  int height() const override { return height_; }
  FrameRate rate() const override { return rate_; }
  long count() const override { return count_; }
  std::string describe() const override;
  bool interlaced() const override { return interlaced_; }
  int matrix() const override { return matrix_; }
  int range() const override { return range_; }
  std::string decoding() const override;

 private:
  bool fail(const std::string& message) {
    error_ = path_ + ": " + message;
    return false;
  }
  bool decode();
  void noteDamage(const std::string& what) {
    if (damage_++ == 0) firstDamage_ = what;
  }
  void noteLogErrors() {
    std::lock_guard<std::mutex> hold(gLogErrors.lock);
    if (gLogErrors.count > logErrorsSeen_) noteDamage(gLogErrors.last);
    logErrorsSeen_ = gLogErrors.count;
  }
  void convert(Picture& picture);
  void finish();

  std::string path_, error_;
  AVFormatContext* format_ = nullptr;
  AVCodecContext* codec_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  SwsContext* sws_ = nullptr;
  AVStream* stream_ = nullptr;
  int width_ = 0, height_ = 0;
  int firstFormat_ = AV_PIX_FMT_NONE;
  FrameRate rate_;
  long count_ = 0;
  bool interlaced_ = false;
  int matrix_ = -1, range_ = -1;
  bool pending_ = false;  // frame_ holds a picture not handed out yet
  bool draining_ = false, ended_ = false;
  long decoded_ = 0, converted_ = 0, damage_ = 0, logErrorsSeen_ = 0;
  std::string firstDamage_;
  int64_t lastPtsUs_ = -1;
};

bool AvSource::open(const std::string& path, int stream) {
  path_ = path;
  logErrorsSeen_ = gLogErrors.count;
  int r = avformat_open_input(&format_, path.c_str(), nullptr, nullptr);
  if (r == AVERROR_INVALIDDATA) return fail("not a media file FFmpeg can read (" + AvError(r) + ")");
  if (r < 0) return fail("cannot open: " + AvError(r));
  r = avformat_find_stream_info(format_, nullptr);
  if (r < 0) return fail("cannot read the streams' descriptions: " + AvError(r));
  const int streams = static_cast<int>(format_->nb_streams);
  if (stream >= streams)
    return fail("there is no stream " + std::to_string(stream) + " (the file has " + std::to_string(streams) +
                ")");
  for (int i = stream >= 0 ? stream : 0; i < streams && stream_ == nullptr; ++i) {
    AVStream* s = format_->streams[i];
    if (s->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(s->disposition & AV_DISPOSITION_ATTACHED_PIC))
      stream_ = s;
    else if (stream >= 0)
      return fail("stream " + std::to_string(stream) + " is not a video stream");
  }
  if (stream_ == nullptr) return fail("no video stream");

  const AVCodecID id = stream_->codecpar->codec_id;
  const AVCodec* decoder = avcodec_find_decoder(id);
  if (decoder == nullptr) {
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {0};
    av_fourcc_make_string(tag, stream_->codecpar->codec_tag);
    return fail(std::string("no decoder in this FFmpeg for the video codec \"") +
                (id == AV_CODEC_ID_NONE ? tag : avcodec_get_name(id)) + "\"");
  }
  codec_ = avcodec_alloc_context3(decoder);
  packet_ = av_packet_alloc();
  frame_ = av_frame_alloc();
  if (codec_ == nullptr || packet_ == nullptr || frame_ == nullptr) return fail("out of memory");
  avcodec_parameters_to_context(codec_, stream_->codecpar);
  codec_->pkt_timebase = stream_->time_base;
  codec_->thread_count = 0;  // one per core, as players decode
  r = avcodec_open2(codec_, decoder, nullptr);
  if (r < 0) return fail(std::string("cannot open the \"") + decoder->name + "\" decoder: " + AvError(r));

  AVRational fps = stream_->avg_frame_rate.num > 0 ? stream_->avg_frame_rate : stream_->r_frame_rate;
  if (fps.num > 0 && fps.den > 0 && fps.num <= 1000000 * static_cast<int64_t>(fps.den))
    rate_ = {fps.num, fps.den};
  // Pictures in the file, for the progress line: counted by the container, or
  // judged from the stream's (else the file's) length.
  if (stream_->nb_frames > 0)
    count_ = static_cast<long>(stream_->nb_frames);
  else if (stream_->duration > 0)
    count_ = static_cast<long>(av_rescale_q(stream_->duration, stream_->time_base, kMicroseconds) /
                               rate_.frameUs());
  else if (format_->duration > 0)
    count_ = static_cast<long>(format_->duration / rate_.frameUs());

  // The first picture tells the size, the pixel format, the interlacing and
  // the colour description; it is handed out by the first next().
  if (!decode())
    return fail(damage_ > 0 ? "no picture could be decoded (" + firstDamage_ + ")"
                            : "the video stream holds no pictures");
  pending_ = true;
  width_ = frame_->width;
  height_ = frame_->height;
  firstFormat_ = frame_->format;
  const AVFieldOrder order = stream_->codecpar->field_order;
  interlaced_ = frame_->interlaced_frame != 0 || order == AV_FIELD_TT || order == AV_FIELD_BB ||
                order == AV_FIELD_TB || order == AV_FIELD_BT;
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame_->format));
  if (desc != nullptr && (desc->flags & AV_PIX_FMT_FLAG_RGB)) {
    // RGB pictures become YCbCr here, in the colours a player assumes for the size.
    matrix_ = height_ >= 720 ? 1 : 6;
    range_ = 0;
  } else {
    matrix_ = MatrixOf(frame_->colorspace);
    if (frame_->color_range == AVCOL_RANGE_JPEG || FullRangeFormat(frame_->format))
      range_ = 1;
    else if (frame_->color_range == AVCOL_RANGE_MPEG)
      range_ = 0;
  }
  return true;
}

// The next picture into frame_; false at the end of the stream. Damage is
// counted and decoding goes on, so that every picture that decodes is shown.
bool AvSource::decode() {
  for (;;) {
    noteLogErrors();
    int r = avcodec_receive_frame(codec_, frame_);
    if (r == 0) {
      if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT))
        noteDamage("decoded with errors");
      ++decoded_;
      return true;
    }
    if (r == AVERROR_EOF) return false;
    if (r != AVERROR(EAGAIN)) noteDamage(AvError(r));
    if (draining_) return false;
    r = av_read_frame(format_, packet_);
    if (r < 0) {
      if (r != AVERROR_EOF) noteDamage("reading stopped: " + AvError(r));
      draining_ = true;
      avcodec_send_packet(codec_, nullptr);
      continue;
    }
    if (packet_->stream_index == stream_->index) {
      if (packet_->flags & AV_PKT_FLAG_CORRUPT) noteDamage("a damaged packet");
      r = avcodec_send_packet(codec_, packet_);
      if (r < 0 && r != AVERROR(EAGAIN)) noteDamage(AvError(r));
    }
    av_packet_unref(packet_);
  }
}

bool AvSource::next(Picture& picture) {
  if (!pending_) {
    if (ended_ || !decode()) {
      if (!ended_) finish();
      ended_ = true;
      return false;
    }
  }
  pending_ = false;
  const bool straight = (frame_->format == AV_PIX_FMT_YUV420P || frame_->format == AV_PIX_FMT_YUVJ420P) &&
                        frame_->width == width_ && frame_->height == height_ && frame_->linesize[0] > 0 &&
                        frame_->linesize[1] > 0 && frame_->linesize[2] > 0;
  if (straight) {
    // The decoder's own planes go to the presenter: it reads them before the next decode.
    picture.width = width_;
    picture.height = height_;
    for (int i = 0; i < 3; ++i) {
      picture.plane[i] = frame_->data[i];
      picture.stride[i] = frame_->linesize[i];
    }
  } else {
    convert(picture);
  }
  const int64_t ts = frame_->best_effort_timestamp;
  picture.ptsUs = ts != AV_NOPTS_VALUE ? av_rescale_q(ts, stream_->time_base, kMicroseconds)
                  : lastPtsUs_ < 0     ? 0
                                       : lastPtsUs_ + rate_.frameUs();
  lastPtsUs_ = picture.ptsUs;
  return true;
}

// Any other pixel format, and pictures whose size changed mid-stream, become
// planar 4:2:0 of the stream's size, keeping the range.
void AvSource::convert(Picture& picture) {
  picture.resize(width_, height_);
  sws_ = sws_getCachedContext(sws_, frame_->width, frame_->height, static_cast<AVPixelFormat>(frame_->format),
                              width_, height_, AV_PIX_FMT_YUV420P, SWS_BICUBIC, nullptr, nullptr, nullptr);
  if (sws_ == nullptr) {
    noteDamage("libswscale cannot convert " + FormatName(frame_->format));
    return;
  }
  const int* coefficients = sws_getCoefficients(SwsMatrix(matrix_));
  const int fromFull = frame_->color_range == AVCOL_RANGE_JPEG || FullRangeFormat(frame_->format);
  sws_setColorspaceDetails(sws_, coefficients, fromFull, coefficients, range_ == 1, 0, 1 << 16, 1 << 16);
  uint8_t* planes[4] = {picture.y.data(), picture.cb.data(), picture.cr.data(), nullptr};
  const int strides[4] = {width_, picture.chromaWidth(), picture.chromaWidth(), 0};
  sws_scale(sws_, frame_->data, frame_->linesize, 0, frame_->height, planes, strides);
  ++converted_;
}

void AvSource::finish() {
  noteLogErrors();
  if (damage_ > 0)
    error_ = path_ + ": damaged stream: " + firstDamage_ +
             (damage_ > 1 ? " (" + std::to_string(damage_) + " faults in all)" : "") + "; the " +
             std::to_string(decoded_) + " pictures that decoded were presented";
}

std::string AvSource::describe() const {
  char buf[256];
  snprintf(buf, sizeof buf, "%s file (%s, stream %d, %s)",
           format_->iformat->long_name ? format_->iformat->long_name : format_->iformat->name,
           codec_->codec->name, stream_->index, interlaced_ ? "interlaced" : "progressive");
  return buf;
}

std::string AvSource::decoding() const {
  if (converted_ == 0) return FormatName(firstFormat_) + ", to the presenter as decoded (no copy)";
  return FormatName(firstFormat_) + ", converted to planar 4:2:0 with libswscale (" +
         std::to_string(converted_) + " of " + std::to_string(decoded_) + " pictures)";
}

}  // namespace

std::unique_ptr<PictureSource> OpenAvSource(const std::string& path, int stream, std::string& error) {
  av_log_set_callback(CollectLogErrors);  // the player says what went wrong in its own words
  auto source = std::make_unique<AvSource>();
  if (!source->open(path, stream)) {
    error = source->error();
    return nullptr;
  }
  return source;
}
