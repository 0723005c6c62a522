// libscrimpresent.so, loaded with dlopen as a media player loads it.
#pragma once

#include <string>

#include "imageproc/oru_imageproc.h"
#include "presenter/scrim_presenter.h"

struct ScrimLibrary {
  void* handle = nullptr;
  PFN_CreateVideoPresenterAdv createPresenter = nullptr;
  PFN_getVersion version = nullptr;
  decltype(&ORU_IMAGEPROC_Create) imgCreate = nullptr;
  decltype(&ORU_IMAGEPROC_ProcessFrame) imgProcess = nullptr;
  decltype(&ORU_IMAGEPROC_Destroy) imgDestroy = nullptr;
  const _GUID* iidPresenter = nullptr;  // IID_IKvVideoPresenterAdv
  const _GUID* iidStream = nullptr;     // IID_IKvVideoPresenterStream

  // path empty: $SCRIM_PRESENT_LIBRARY, else the library built with this program.
  bool load(const std::string& path, std::string& error);
  std::string path;
};
