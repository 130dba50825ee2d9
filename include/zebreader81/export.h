// Symbol visibility for the shared library.
#pragma once

#if defined(_WIN32)
#if defined(ZEBREADER81_BUILDING)
#define ZEBREADER81_API __declspec(dllexport)
#elif defined(ZEBREADER81_STATIC)
// Linked into the program from the static library (tests, tools).
#define ZEBREADER81_API
#else
#define ZEBREADER81_API __declspec(dllimport)
#endif
#else
#define ZEBREADER81_API __attribute__((visibility("default")))
#endif
