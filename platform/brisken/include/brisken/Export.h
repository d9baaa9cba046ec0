#pragma once

/// BRISKEN_EXPORT marks what the shared library brisken makes visible; everything else stays hidden.
#if defined(_WIN32)
#if defined(BRISKEN_BUILDING)
#define BRISKEN_EXPORT __declspec(dllexport)
#else
#define BRISKEN_EXPORT __declspec(dllimport)
#endif
#else
#define BRISKEN_EXPORT __attribute__((visibility("default")))
#endif
