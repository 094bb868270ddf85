#pragma once

#if defined(_WIN32)

#include <guiddef.h>

#else

#include <cstdint>
#include <cstring>

/// A 16-byte globally unique identifier of an entity, laid out as the Windows platform lays it out.
struct _GUID {  // NOLINT(bugprone-reserved-identifier): the platform's own name where there is one
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    unsigned char Data4[8];
};

inline bool operator==(_GUID const& a, _GUID const& b) {
    return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 && std::memcmp(a.Data4, b.Data4, 8) == 0;
}

inline bool operator!=(_GUID const& a, _GUID const& b) { return !(a == b); }

#endif

static_assert(sizeof(_GUID) == 16);
