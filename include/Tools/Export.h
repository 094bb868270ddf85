#pragma once

/// Marks what the shared library exports; everything else stays hidden.
#if defined(_WIN32)
#if defined(QUORLAN_TOOLS_BUILDING)
#define QUORLAN_TOOLS_API __declspec(dllexport)
#else
#define QUORLAN_TOOLS_API __declspec(dllimport)
#endif
#else
#define QUORLAN_TOOLS_API __attribute__((visibility("default")))
#endif
