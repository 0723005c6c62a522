#include "android/soft_renderer.h"

#include <stdarg.h>
#include <string.h>

#include "imageproc/oru_imageproc.h"
#include "presenter/scrim_log.h"

namespace {
__attribute__((format(printf, 2, 3))) void ScrimLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

// Window format codes for ANativeWindow_setBuffersGeometry.
const int32_t kWindowFormatYV12 = 0x32315659;
const int32_t kWindowFormatRGB565 = WINDOW_FORMAT_RGB_565;

// Conversion codes (input format << 8 | output format) the converter asks for.
const uint32_t kConvertI420Copy = 0x000;
const uint32_t kConvertI420ToRGB565 = 0x003;
const uint32_t kConvertNV12ToRGB565 = 0x803;

// The colour-format word numbers matrices as H.264's matrix_coefficients does.
uint32_t MatrixCode(uint32_t h264Matrix) {
  switch (h264Matrix) {
    case 1:
      return IMGPRC_MATRIX_BT709;
    case 4:
      return IMGPRC_MATRIX_FCC;
    case 7:
      return IMGPRC_MATRIX_SMPTE240M;
    default:
      return IMGPRC_MATRIX_BT601;
  }
}

uint32_t AlignDown16(int32_t v) { return static_cast<uint32_t>(v) & ~15u; }

// Where the image processor writes into a locked buffer. YV12 windows hold Y,
// then Cr, then Cb; the plane array is Y, Cb, Cr. The chroma planes start from
// the unrounded stride, as the window lays them out for the strides it hands out.
void DestinationPlanes(const ANDROID_SOFTRENDER* r, const ANativeWindow_Buffer& buffer, uint8_t* planes[3],
                       uint32_t strides[3]) {
  uint8_t* bits = static_cast<uint8_t*>(buffer.bits);
  if (r->OutputMode == SOFTRENDER_OUTPUT_YV12) {
    uint32_t lumaStride = AlignDown16(buffer.stride + 15);
    uint32_t chromaStride = AlignDown16(buffer.stride / 2 + 15);
    uint8_t* cr = bits + static_cast<size_t>(r->InHeight) * static_cast<size_t>(buffer.stride);
    uint8_t* cb = cr + (static_cast<size_t>(chromaStride) * r->InHeight) / 2;
    planes[0] = bits;
    planes[1] = cb;
    planes[2] = cr;
    strides[0] = lumaStride;
    strides[1] = chromaStride;
    strides[2] = chromaStride;
  } else {
    planes[0] = bits;
    planes[1] = nullptr;
    planes[2] = nullptr;
    strides[0] = static_cast<uint32_t>(buffer.stride) * 2;
    strides[1] = 0;
    strides[2] = 0;
  }
}
}  // namespace

ANDROID_SOFTRENDER g_SoftRenderer;

bool oru_nativewindow_determin(void**, unsigned long*, unsigned int, unsigned int,
                               unsigned int colourFormat) {
  return (colourFormat >> 24) == 0;
}

void* oru_nativewindow_init(void* window, unsigned int width, unsigned int height, unsigned int colourFormat,
                            unsigned int outputMode) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:init start", __func__, __LINE__);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:init start window  = 0x%x", __func__, __LINE__, Low32(window));
  if (window == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:invalid window ", __func__, __LINE__);
    return nullptr;
  }
  ANDROID_SOFTRENDER* r = &g_SoftRenderer;
  // A second stream on the same window shares the first one's set-up as it is.
  if (r->Handler == window) return r;

  // The caller has run oru_nativewindow_uninit, so no converter is lost here.
  memset(r, 0, sizeof *r);
  r->size = sizeof *r;
  r->OutputMode = outputMode;
  ANativeWindow* nativeWindow = static_cast<ANativeWindow*>(window);
  ANativeWindow_acquire(nativeWindow);

  int32_t format = 0;
  if (outputMode == SOFTRENDER_OUTPUT_YV12) {
    format = kWindowFormatYV12;
  } else if (outputMode == SOFTRENDER_OUTPUT_RGB565) {
    format = kWindowFormatRGB565;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:native_window_set_buffers_geometry type = 0x%x, format = 0x%x", __func__,
           __LINE__, SOFTRENDER_LAYOUT(colourFormat), static_cast<unsigned>(format));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:native_window_set_buffers_geometry width = %d, height = %d", __func__,
           __LINE__, static_cast<int>(width), static_cast<int>(height));
  // Buffers have the picture's own size; the compositor scales them to the view.
  int32_t err = ANativeWindow_setBuffersGeometry(nativeWindow, static_cast<int32_t>(width),
                                                 static_cast<int32_t>(height), format);
  if (err != 0) {
    // The reference taken above stays taken: the next picture retries with a fresh one.
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:native_window_set_buffers_geometry err = 0x%x", __func__, __LINE__,
             static_cast<unsigned>(err));
    return nullptr;
  }
  r->Handler = nativeWindow;
  r->InWidth = width;
  r->InHeight = height;
  r->InputFormat = colourFormat;
  // Without a converter the renderer still posts buffers, unconverted.
  if (SOFTRENDER_LAYOUT(colourFormat) != SOFTRENDER_LAYOUT_NO_CONVERTER) CreateConverter(r);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:init done", __func__, __LINE__);
  return r;
}

void CreateConverter(ANDROID_SOFTRENDER* r) {
  if (r->Converter != nullptr) {
    ORU_IMAGEPROC_Destroy(r->Converter);
    r->Converter = nullptr;
  }
  const uint32_t layout = SOFTRENDER_LAYOUT(r->InputFormat);
  const uint32_t range = SOFTRENDER_RANGE(r->InputFormat);
  ImgPrcCreateParams params;
  memset(&params, 0, sizeof params);
  params.size = sizeof params;
  if (layout == SOFTRENDER_LAYOUT_NV12) {
    // Asks for RGB565 even into a YV12 window; the image processor has no
    // NV12-to-RGB565 conversion, so NV12 streams end up without a converter.
    params.format = kConvertNV12ToRGB565;
  } else if (layout == SOFTRENDER_LAYOUT_I420) {
    params.format = r->OutputMode == SOFTRENDER_OUTPUT_YV12 ? kConvertI420Copy : kConvertI420ToRGB565;
  } else {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]: unsupport input color format = %d", __func__, __LINE__,
             static_cast<int>(layout));
    return;
  }
  if (range > 1) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]: unsupport input yuv range = %d", __func__, __LINE__,
             static_cast<int>(range));
    return;
  }
  params.rotation = IMGPRC_ROTATE_NONE;
  params.resizeMode = IMGPRC_RESIZE_BILINEAR_FAST;
  params.srcWidth = r->InWidth;
  params.dstWidth = r->InWidth;
  params.srcHeight = r->InHeight;
  params.dstHeight = r->InHeight;
  params.alpha = 0;
  params.colorKey = 0;
  params.colorMatrix = MatrixCode(SOFTRENDER_MATRIX(r->InputFormat));
  params.fullRange = range;
  void* handle = nullptr;
  ORU_IMAGEPROC_Create(&handle, 0, &params);
  if (handle == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]: fail to create image processor", __func__, __LINE__);
    return;
  }
  r->Converter = handle;
}

void ReleaseConverter(void* converter) {
  if (converter != nullptr) ORU_IMAGEPROC_Destroy(converter);
}

int oru_nativewindow_render(void* handle, void** ppbPlanes, unsigned long* pdwStrides, unsigned int width,
                            unsigned int height, unsigned int, unsigned int deinterlace) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:render start", __func__, __LINE__);
  ANDROID_SOFTRENDER* r = &g_SoftRenderer;
  // A renderer that another stream's uninit emptied has no window to lock.
  if (handle != r || r->Handler == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:render, invalid handler", __func__, __LINE__);
    return -1;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:lock start", __func__, __LINE__);
  ANativeWindow_Buffer buffer;
  memset(&buffer, 0, sizeof buffer);
  int32_t err = ANativeWindow_lock(r->Handler, &buffer, nullptr);
  if (err != 0) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:ANativeWindow_lock err = 0x%x", __func__, __LINE__,
             static_cast<unsigned>(err));
    return -1;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ANativeWindow_lock get buf = %p", __func__, __LINE__, buffer.bits);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:lock done", __func__, __LINE__);
  // A picture that cannot be converted still has its buffer posted by dorender.
  render_this_frame(handle, ppbPlanes, pdwStrides, static_cast<int>(width), static_cast<int>(height), buffer,
                    deinterlace);
  return 0;
}

void render_this_frame(void* handle, void** ppbPlanes, unsigned long* pdwStrides, int width, int height,
                       ANativeWindow_Buffer buffer, unsigned int deinterlace) {
  ANDROID_SOFTRENDER* r = static_cast<ANDROID_SOFTRENDER*>(handle);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:render_this_frame start", __func__, __LINE__);
  for (int i = 0; i < 3; ++i) {
    ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ppbPlanes[%d] = %p", __func__, __LINE__, i, ppbPlanes[i]);
  }
  for (int i = 0; i < 3; ++i) {
    ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:pdwStrides[%d] = %ld", __func__, __LINE__, i,
             static_cast<long>(pdwStrides[i]));
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:width = %d", __func__, __LINE__, width);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:height = %d", __func__, __LINE__, height);

  if (r->Handler == nullptr || r->Converter == nullptr || static_cast<unsigned>(width) != r->InWidth ||
      static_cast<unsigned>(height) != r->InHeight) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:render_this_frame fail", __func__, __LINE__);
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:pRender->Handler =%p", __func__, __LINE__,
             static_cast<void*>(r->Handler));
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:pRender->Converter =%p", __func__, __LINE__, r->Converter);
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:pRender->InWidth = %d", __func__, __LINE__,
             static_cast<int>(r->InWidth));
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:pRender->InHeight = %d", __func__, __LINE__,
             static_cast<int>(r->InHeight));
    return;
  }

  uint8_t* srcPlanes[3];
  uint32_t srcStrides[3];
  for (int i = 0; i < 3; ++i) {
    srcPlanes[i] = static_cast<uint8_t*>(ppbPlanes[i]);
    srcStrides[i] = static_cast<uint32_t>(pdwStrides[i]);
  }
  uint8_t* dstPlanes[3];
  uint32_t dstStrides[3];
  DestinationPlanes(r, buffer, dstPlanes, dstStrides);

  ImgPrcFrameParams frame;
  frame.size = sizeof frame;
  frame.reserved = 1;
  frame.deinterlace = deinterlace;
  uint32_t ret =
      ORU_IMAGEPROC_ProcessFrame(r->Converter, srcPlanes, srcStrides, dstPlanes, dstStrides, &frame);
  // The result is only logged: whatever the buffer holds is posted.
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ORU_IMAGEPROC_ProcessFrame ret = 0x%x", __func__, __LINE__, ret);
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:pOut[0] = %p", __func__, __LINE__, static_cast<void*>(dstPlanes[0]));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:s_out[0] = %ld", __func__, __LINE__, static_cast<long>(dstStrides[0]));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:s_out[1] = %ld", __func__, __LINE__, static_cast<long>(dstStrides[1]));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:render_this_frame done", __func__, __LINE__);
}

int oru_nativewindow_dorender(void* handle) {
  ANDROID_SOFTRENDER* r = &g_SoftRenderer;
  if (handle != r || r->Handler == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:render, invalid handler", __func__, __LINE__);
    return -1;
  }
  int32_t err = ANativeWindow_unlockAndPost(r->Handler);
  if (err != 0) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:ANativeWindow_unlockAndPost err = 0x%x", __func__, __LINE__,
             static_cast<unsigned>(err));
    return -1;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:render done", __func__, __LINE__);
  return 0;
}

void oru_nativewindow_uninit(void* handle) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:uninit start", __func__, __LINE__);
  ANDROID_SOFTRENDER* r = &g_SoftRenderer;
  if (handle == nullptr || handle != r) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:uninit invalid surface", __func__, __LINE__);
    return;
  }
  if (r->Handler != nullptr) {
    ANativeWindow_release(r->Handler);
    r->Handler = nullptr;
  }
  if (r->Converter != nullptr) {
    ReleaseConverter(r->Converter);
    r->Converter = nullptr;
  }
}
