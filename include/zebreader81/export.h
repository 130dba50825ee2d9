// Symbol visibility for the shared library.
#pragma once

#if defined(_WIN32)
#if defined(ZEBREADER81_BUILDING)
#define ZEBREADER81_API __declspec(dllexport)
#else
#define ZEBREADER81_API __declspec(dllimport)
#endif
#else
#define ZEBREADER81_API __attribute__((visibility("default")))
#endif
