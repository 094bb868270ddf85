#pragma once

#include "cut/Boolean.h"

namespace QuorlanProgram::Import {

/// What became of the cuts of a body.
struct CutCount {
    std::size_t made = 0;    ///< that changed the body, those below included
    std::size_t nudged = 0;  ///< made with a tool scaled by 2e-5
    std::size_t exact = 0;   ///< made in exact arithmetic
    std::size_t wrong = 0;   ///< that no way gave what volumes say

    CutCount& operator+=(CutCount const& other);
};
CutCount operator-(CutCount const& a, CutCount const& b);

/// Cuts solids and checks every cut: the volume of the result and that of what is taken away must be the volume of the
/// body, each found by an operation of its own. A cut that fails the check is tried again with the tool scaled by a
/// share far below what is built, so that faces which coincide no longer do, and then in exact arithmetic.
class SolidCuts {
public:
    /// Replaces `body` by its part outside (difference) or inside (intersection) `tool`. A cut that is wrong every way
    /// leaves the body as it was. REQUIRES: closed shapes without holes in their faces.
    /// RETURNS whether the body changed.
    bool Apply(FacetedBRep& body, FacetedBRep const& tool, BooleanOperation operation);

    CutCount const& GetCount() const { return count_; }

private:
    CutCount count_;
};

}  // namespace QuorlanProgram::Import
