#pragma once

#include <array>
#include <cstddef>

namespace Quorlan::Tools::Picking {

/// c[0] + c[1] x + c[2] x^2 + c[3] x^3 + c[4] x^4
using QuarticCoefficients_t = std::array<double, 5>;

/// Up to four numbers in ascending order.
class RealRoots {
public:
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    double operator[](std::size_t i) const { return values_[i]; }
    double const* begin() const { return values_.data(); }
    double const* end() const { return values_.data() + size_; }

    /// REQUIRES: fewer than four roots so far, none greater than `root`.
    void Append(double root) { values_[size_++] = root; }

private:
    std::array<double, 4> values_{};
    std::size_t size_ = 0;
};

/// All real roots from `lower` to `upper`, ascending. Leading coefficients may be zero; a constant has no roots.
///
/// A double root is found where the polynomial comes within 2e-14 of zero, relative to the sum of its terms'
/// magnitudes, at a root of its derivative; it is then listed once, and so are roots that cannot be told from it. For
/// coefficients far apart in magnitude scale the unknown first. Coefficients that are not finite give no roots.
///
/// The roots of each derivative separate those of the next: this is the separation that Rolle's theorem gives, used by
/// G. E. Collins and R. Loos, "Polynomial Real Root Isolation by Differentiation", 1976.
RealRoots FindRealRoots(QuarticCoefficients_t const& coefficients, double lower, double upper);

/// The same over the whole line, within the bound of M. Fujiwara, "Über die obere Schranke des absoluten Betrages der
/// Wurzeln einer algebraischen Gleichung", 1916.
RealRoots FindRealRoots(QuarticCoefficients_t const& coefficients);

}  // namespace Quorlan::Tools::Picking
