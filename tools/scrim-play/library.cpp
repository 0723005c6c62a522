#include "library.h"

#include <dlfcn.h>
#include <stdlib.h>

bool ScrimLibrary::load(const std::string& requested, std::string& error) {
  path = requested;
  if (path.empty() && getenv("SCRIM_PRESENT_LIBRARY") != nullptr) path = getenv("SCRIM_PRESENT_LIBRARY");
  if (path.empty()) path = SCRIM_PLAY_DEFAULT_LIBRARY;
  handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* why = dlerror();
    error = "cannot load " + path + ": " + (why ? why : "unknown error");
    return false;
  }
  createPresenter = reinterpret_cast<PFN_CreateVideoPresenterAdv>(dlsym(handle, "CreateVideoPresenterAdv"));
  version = reinterpret_cast<PFN_getVersion>(dlsym(handle, "getVersion"));
  imgCreate = reinterpret_cast<decltype(imgCreate)>(dlsym(handle, "ORU_IMAGEPROC_Create"));
  imgProcess = reinterpret_cast<decltype(imgProcess)>(dlsym(handle, "ORU_IMAGEPROC_ProcessFrame"));
  imgDestroy = reinterpret_cast<decltype(imgDestroy)>(dlsym(handle, "ORU_IMAGEPROC_Destroy"));
  iidPresenter = static_cast<const _GUID*>(dlsym(handle, "IID_IKvVideoPresenterAdv"));
  iidStream = static_cast<const _GUID*>(dlsym(handle, "IID_IKvVideoPresenterStream"));
  if (createPresenter == nullptr || version == nullptr || imgCreate == nullptr || imgProcess == nullptr ||
      imgDestroy == nullptr || iidPresenter == nullptr || iidStream == nullptr) {
    error = path + " does not export the presenter's entry points";
    return false;
  }
  return true;
}
