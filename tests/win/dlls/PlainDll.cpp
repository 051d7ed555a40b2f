// A library without registration entries.
#include <windows.h>

extern "C" __declspec(dllexport) int __stdcall Answer() { return 42; }
