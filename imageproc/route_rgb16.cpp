// Placeholder router for RGB565/RGB555 output until its kernels land.
#include "imageproc/routes.h"

int ImgPrcRoute_YCbCr420ToRGB16(ImgPrcContext*, const ImgPrcFrameIO&) { return -3; }
