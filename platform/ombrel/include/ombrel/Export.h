#pragma once

/// OMBREL_EXPORT marks what the shared library ombrel makes visible; everything else stays hidden.
#if defined(_WIN32)
#if defined(OMBREL_BUILDING)
#define OMBREL_EXPORT __declspec(dllexport)
#else
#define OMBREL_EXPORT __declspec(dllimport)
#endif
#else
#define OMBREL_EXPORT __attribute__((visibility("default")))
#endif
