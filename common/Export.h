// Layer: common. Marks what the shared library shows to the outside: the functions of the published API and
// the classes that hosts may use directly. Everything else is hidden.
#pragma once

#if defined(_WIN32)
#if defined(ORBE_BUILDING_LIBRARY)
#define ORBE_EXPORT __declspec(dllexport)
#elif defined(ORBE_STATIC)
#define ORBE_EXPORT
#else
#define ORBE_EXPORT __declspec(dllimport)
#endif
#else
#define ORBE_EXPORT __attribute__((visibility("default")))
#endif
