#pragma once

/// PALLADO_EXPORT marks what the shared library pallado makes visible; everything else stays hidden.
#if defined(_WIN32)
#if defined(PALLADO_BUILDING)
#define PALLADO_EXPORT __declspec(dllexport)
#else
#define PALLADO_EXPORT __declspec(dllimport)
#endif
#else
#define PALLADO_EXPORT __attribute__((visibility("default")))
#endif
