#pragma once

/// KESTRIN_EXPORT marks what the shared library kestrin makes visible; everything else stays hidden.
#if defined(_WIN32)
#if defined(KESTRIN_BUILDING)
#define KESTRIN_EXPORT __declspec(dllexport)
#else
#define KESTRIN_EXPORT __declspec(dllimport)
#endif
#else
#define KESTRIN_EXPORT __attribute__((visibility("default")))
#endif
