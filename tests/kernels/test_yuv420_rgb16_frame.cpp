// YCbCr 4:2:0 to RGB565/RGB555 through the frame call: for each resize case,
// rotation and resize method, set-up picks the case and the frame lands in
// the destination exactly as the reference rendering of the kernel that case
// selects, with the work sizes, strides and rotation addressing the image
// processor hands over.
#include <gtest/gtest.h>

#include "imageproc/oru_imageproc.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

struct Route {
  const char* name;
  uint32_t format, rotation, resizeMode;
  int32_t sw, sh, dw, dh;
  uint32_t resizeCase;
  Kernel kernel;
};

const Route kRoutes[] = {
    {"same size", 0x003, 0, 1, 36, 20, 36, 20, 0, Kernel::Plain},
    {"odd sizes round down to even", 0x003, 0, 1, 37, 21, 37, 21, 0, Kernel::Plain},
    {"RGB555 keyed", 0x00A, 0, 1, 36, 20, 36, 20, 0, Kernel::Rgb555},
    {"RGB555 ignores a size change", 0x00A, 0, 1, 36, 20, 52, 28, 2, Kernel::Rgb555},
    {"quarter turn anticlockwise", 0x003, 1, 1, 36, 20, 36, 20, 0, Kernel::Rot},
    {"quarter turn clockwise", 0x003, 2, 1, 36, 20, 36, 20, 0, Kernel::Rot},
    {"half turn", 0x003, 3, 1, 36, 20, 36, 20, 0, Kernel::Rot},
    {"mirror", 0x003, 4, 1, 36, 20, 36, 20, 0, Kernel::Rot},
    {"flip", 0x003, 5, 1, 36, 20, 36, 20, 0, Kernel::Rot},
    {"mixed", 0x003, 0, 1, 36, 20, 50, 16, 1, Kernel::Rsz},
    {"shrink", 0x003, 0, 1, 36, 20, 20, 12, 3, Kernel::Rsz},
    {"shrink, rotated", 0x003, 1, 1, 36, 20, 20, 12, 3, Kernel::RszRot},
    {"mixed, rotated", 0x003, 4, 0, 36, 20, 50, 16, 1, Kernel::RszRot},
    {"grow", 0x003, 0, 1, 36, 20, 80, 44, 2, Kernel::RszUp},
    {"grow by less than two", 0x003, 0, 1, 36, 20, 50, 30, 2, Kernel::RszUp},
    {"twice", 0x003, 0, 1, 36, 20, 72, 40, 4, Kernel::RszUp},
    {"grow, nearest", 0x003, 0, 0, 36, 20, 80, 44, 2, Kernel::Nearest},
    {"grow, near-linear", 0x003, 0, 3, 36, 20, 50, 30, 2, Kernel::NearLinear},
    {"grow, rotated", 0x003, 2, 1, 36, 20, 80, 44, 2, Kernel::RszUpRot},
    {"grow, half turn", 0x003, 3, 0, 36, 20, 80, 44, 2, Kernel::RszUpRot},
    {"5:2 across, 2:1 down", 0x003, 0, 1, 16, 8, 40, 16, 5, Kernel::Case1},
    {"3:2 across", 0x003, 0, 1, 16, 8, 24, 16, 6, Kernel::Case2},
    {"320x240 to 480x272", 0x003, 0, 1, 320, 240, 480, 272, 7, Kernel::Case3},
};

class Instance {
 public:
  explicit Instance(const Route& r) {
    ImgPrcCreateParams p = {};
    p.size = sizeof p;
    p.format = r.format;
    p.rotation = r.rotation;
    p.resizeMode = r.resizeMode;
    p.srcWidth = r.sw, p.srcHeight = r.sh, p.dstWidth = r.dw, p.dstHeight = r.dh;
    p.colorMatrix = 1;
    result_ = ORU_IMAGEPROC_Create(&handle_, 0, &p);
  }
  ~Instance() {
    if (handle_ != nullptr) ORU_IMAGEPROC_Destroy(handle_);
  }
  uint32_t result() const { return result_; }
  void* handle() const { return handle_; }
  ImgPrcContext& ctx() const { return *static_cast<ImgPrcContext*>(handle_); }

 private:
  void* handle_ = nullptr;
  uint32_t result_ = 0;
};

class Rgb16Frame : public testing::TestWithParam<Route> {};

TEST_P(Rgb16Frame, MatchesTheKernelItsCaseSelects) {
  const Route r = GetParam();
  Instance inst(r);
  ASSERT_EQ(inst.result(), IMGPRC_OK);
  ImgPrcContext& ctx = inst.ctx();
  ASSERT_EQ(ctx.resizeCase, r.resizeCase);
  const Tables t(ctx);
  const int32_t sw = ctx.workSrcWidth, sh = ctx.workSrcHeight, dw = ctx.workDstWidth, dh = ctx.workDstHeight;
  const bool quarter = QuarterTurn(r.rotation);
  // Row bytes of the destination: plain rows of 16-bit pixels, wide pairs for
  // Rsz, and a pitch whose doubled spacing the enlarging kernels use.
  const int32_t visible = 2 * (quarter ? dh : dw);
  const int32_t pitch = r.kernel == Kernel::Rsz ? 4 * dw + 8 : visible + 6;
  const int32_t rows = quarter ? dw : dh;

  Picture pic(r.sw, r.sh, 5, r.sw * 13 + r.dw + r.rotation, 8);
  Canvas cv(static_cast<size_t>(pitch) * 2 * (rows + 4) + 64);
  const RecordOffsets ro = MakeOffsets(r.rotation, dw, dh, pitch);
  const uint32_t key = r.kernel == Kernel::Rgb555 ? KeyOf(pic, 3, 1) : 0;
  RenderKernel(r.kernel, cv, t, pic, sw, sh, dw, dh, pitch, ro, key);
  if (r.kernel == Kernel::Rgb555) {
    ASSERT_EQ(ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_KEY, &key, sizeof key), IMGPRC_OK);
  }
  pic.Cut();
  std::vector<uint8_t> dst = cv.Target();
  uint8_t* dstPlanes[3] = {dst.data(), nullptr, nullptr};
  uint32_t dstStrides[3] = {static_cast<uint32_t>(pitch), 0, 0};
  ImgPrcFrameParams frame = {sizeof frame, 1, 0};
  const uint32_t result =
      ORU_IMAGEPROC_ProcessFrame(inst.handle(), pic.raw(), pic.strides(), dstPlanes, dstStrides, &frame);

  EXPECT_EQ(result, IMGPRC_OK);
  cv.ExpectEqual(dst);
  if (Rotating(r.kernel)) {
    EXPECT_EQ(ro.pix[0], ctx.rotationRecord->pix00 - dst.data());
  }
}

INSTANTIATE_TEST_SUITE_P(Routes, Rgb16Frame, testing::ValuesIn(kRoutes),
                         [](const testing::TestParamInfo<Route>& i) {
                           std::string n = i.param.name;
                           for (char& c : n)
                             if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                           return n;
                         });

TEST(Rgb16Frame, RotatedRgb555IsRefusedAtCreation) {
  Instance inst({"", 0x00A, 1, 1, 16, 8, 16, 8, 0, Kernel::Rgb555});
  EXPECT_NE(inst.result(), IMGPRC_OK);
}

}  // namespace
