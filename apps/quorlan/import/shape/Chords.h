#pragma once

namespace QuorlanProgram::Import {

/// How many chords stand for a full circle: as many as keep them within a distance of it, the deflection, but never
/// fewer than 24 nor more than 120, and a multiple of 4, so that the extremes along the axes are points of the circle.
class Chords {
public:
    /// `deflection` in metres; radii are asked for in units of `metresPerUnit`.
    explicit Chords(double deflection = kDeflection, double metresPerUnit = 1)
        : deflection_(deflection), metresPerUnit_(metresPerUnit) {}

    int Get(double radius) const;

    /// The same rule for radii in another unit.
    Chords In(double metresPerUnit) const { return Chords(deflection_, metresPerUnit); }

    static constexpr double kDeflection = 1e-3;  ///< [m] DEFAULT

private:
    double deflection_;
    double metresPerUnit_;
};

}  // namespace QuorlanProgram::Import
