#pragma once

/// TESSARO_EXPORT marks what the shared library tessaro makes visible; everything else stays hidden.
#if defined(_WIN32)
#if defined(TESSARO_BUILDING)
#define TESSARO_EXPORT __declspec(dllexport)
#else
#define TESSARO_EXPORT __declspec(dllimport)
#endif
#else
#define TESSARO_EXPORT __attribute__((visibility("default")))
#endif
