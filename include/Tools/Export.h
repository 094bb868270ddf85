#pragma once

/// The first marks what the shared library exports; everything else stays hidden. The second marks what stays hidden of
/// an exported class: its private operations.
#if defined(_WIN32)
#if defined(QUORLAN_TOOLS_BUILDING)
#define QUORLAN_TOOLS_API __declspec(dllexport)
#else
#define QUORLAN_TOOLS_API __declspec(dllimport)
#endif
#define QUORLAN_TOOLS_LOCAL
#else
#define QUORLAN_TOOLS_API __attribute__((visibility("default")))
#define QUORLAN_TOOLS_LOCAL __attribute__((visibility("hidden")))
#endif
