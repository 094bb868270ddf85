#pragma once

#include <cstdint>

namespace Quorlan {

/// How the 64 bits of a stored property value are to be read; numbered as the alternatives of `PropertyRecord::value`.
enum PropertyValueKind : std::uint32_t {
    kTextProperty = 0,  ///< an index into the strings
    kDoubleProperty = 1,
    kIntegerProperty = 2,
    kBooleanProperty = 3,
};

}  // namespace Quorlan
