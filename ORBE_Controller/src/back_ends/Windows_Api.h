// Layer: device controller (Windows). The system's own header without the parts that get in the way: its
// min, max and ERROR macros, and what it takes in besides.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef NOGDI
#define NOGDI
#endif
#include <windows.h>
