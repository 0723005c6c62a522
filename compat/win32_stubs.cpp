// Inert stand-ins for windowing, COM start-up and message dispatch: they exist
// so that code written for Win32 links, and answer fixed values.
#include "compat/win32.h"

extern "C" {

void OutputDebugString(const char*) {}
void PostQuitMessage(int) {}
LRESULT SendMessage(HWND, UINT, WPARAM, LPARAM) { return 0; }
LONG GetWindowLong(HWND, int) { return 0; }
LONG SetWindowLong(HWND, int, LONG) { return 0; }
LRESULT DefWindowProc(HWND, UINT, WPARAM, LPARAM) { return 0; }
void* LoadCursor(HINSTANCE, const char*) { return nullptr; }
HMODULE GetModuleHandle(const char*) { return nullptr; }
void* GetStockObject(int) { return nullptr; }
UINT RegisterClass(const void*) { return 0; }
BOOL GetWindowRect(HWND, RECT*) { return 0; }
int GetSystemMetrics(int) { return 0; }
BOOL GetProcessTimes(HANDLE, void*, void*, void*, void*) { return 0; }
BOOL GetThreadTimes(HANDLE, void*, void*, void*, void*) { return 0; }
int WideCharToMultiByte(UINT, DWORD, const wchar_t*, int, char*, int, const char*, BOOL*) { return 0; }
int MultiByteToWideChar(UINT, DWORD, const char*, int, wchar_t*, int) { return 0; }
HRESULT CoInitialize(void*) { return 0; }
HRESULT CoInitializeEx(void*, DWORD) { return 0; }
void CoUninitialize(void) {}
BOOL ShowWindow(HWND, int) { return 1; }
BOOL TranslateMessage(const void*) { return 1; }
LRESULT DispatchMessage(const void*) { return 1; }
BOOL SetWindowPos(HWND, HWND, int, int, int, int, UINT) { return 1; }
BOOL PostMessage(HWND, UINT, WPARAM, LPARAM) { return 1; }
BOOL GetVolumeInformation(const char*, char*, DWORD, DWORD*, DWORD*, DWORD*, char*, DWORD) { return 1; }
HWND CreateWindow(const char*, const char*, DWORD, int, int, int, int, HWND, void*, HINSTANCE, void*) {
  return reinterpret_cast<HWND>(0x12345678);  // never null, never usable
}

}  // extern "C"
