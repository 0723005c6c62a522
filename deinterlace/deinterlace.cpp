// Placeholder until the filters land.
#include "deinterlace/deinterlace.h"

extern "C" int ORU_DeInterlace(ImgPrcContext*, uint8_t**, uint32_t*, uint8_t**, uint32_t*) { return -1; }
