// Layer: common. Says whether code for the vector unit is compiled. Every x86-64 processor has SSE2, so that
// there is nothing to ask the processor at run time; other architectures take the plain code, which says the
// same.
#pragma once

#if defined(__SSE2__) || defined(_M_X64)
#define ORBE_SSE2 1
#include <emmintrin.h>
#else
#define ORBE_SSE2 0
#endif
