#include "picking/QuarticRoots.h"

#include <algorithm>
#include <cmath>

namespace Quorlan::Tools::Picking {

namespace {

/// [-] A value at a stationary point that is no more than this part of the sum of the terms' magnitudes is zero up to
/// rounding: a hundred times the unit of rounding, for a dozen operations on a cut that is itself rounded.
constexpr double kZeroShare = 2e-14;

/// [-] Each step of the iteration halves the bracket or converges quadratically; 100 are never reached in practice.
constexpr int kMaxSteps = 100;

struct Polynomial {
    QuarticCoefficients_t coefficients{};
    std::size_t degree = 0;

    double operator()(double x) const {
        double value = coefficients[degree];
        for (std::size_t i = degree; i-- > 0;) value = value * x + coefficients[i];
        return value;
    }

    bool IsZeroAt(double x) const {
        double magnitude = std::abs(coefficients[degree]);
        for (std::size_t i = degree; i-- > 0;) magnitude = magnitude * std::abs(x) + std::abs(coefficients[i]);
        return std::abs((*this)(x)) <= kZeroShare * magnitude;
    }

    Polynomial Derivative() const {
        Polynomial derivative;
        derivative.degree = degree - 1;
        for (std::size_t i = 1; i <= degree; ++i)
            derivative.coefficients[i - 1] = static_cast<double>(i) * coefficients[i];
        return derivative;
    }
};

Polynomial WithoutLeadingZeros(QuarticCoefficients_t const& coefficients) {
    Polynomial polynomial{coefficients, coefficients.size() - 1};
    while (polynomial.degree > 0 && coefficients[polynomial.degree] == 0) --polynomial.degree;
    return polynomial;
}

/// The root between two points of opposite sign: Newton's method where it stays in the bracket, bisection elsewhere.
double RootInBracket(Polynomial const& polynomial, Polynomial const& derivative, double lower, double upper,
                     bool rising) {
    double x = 0.5 * (lower + upper);
    for (int step = 0; step < kMaxSteps; ++step) {
        double const value = polynomial(x);
        if (value == 0) return x;
        ((value < 0) == rising ? lower : upper) = x;
        double next = x - value / derivative(x);
        if (!(next > lower && next < upper)) next = 0.5 * (lower + upper);
        if (next == x || next <= lower || next >= upper) return next;
        x = next;
    }
    return x;
}

/// The roots of a polynomial, given its stationary points. Adding at most one root per monotone piece, and none in the
/// two pieces that meet in a double root, it finds no more roots than the degree.
RealRoots RootsBetweenCuts(Polynomial const& polynomial, Polynomial const& derivative, RealRoots const& cuts,
                           double lower, double upper) {
    RealRoots roots;
    double start = lower;
    double startValue = polynomial(lower);
    bool startIsRoot = false;
    auto const searchUpTo = [&](double end, bool isCut) {
        double const endValue = polynomial(end);
        bool const endIsRoot = isCut && polynomial.IsZeroAt(end);
        if (endIsRoot) {
            roots.Append(end);
        } else if (!startIsRoot) {
            if (startValue == 0) {
                roots.Append(start);
            } else if (endValue == 0) {
                roots.Append(end);
            } else if ((startValue < 0 && endValue > 0) || (startValue > 0 && endValue < 0)) {
                roots.Append(RootInBracket(polynomial, derivative, start, end, startValue < 0));
            }
        }
        start = end;
        startValue = endValue;
        startIsRoot = endIsRoot;
    };
    for (double const cut : cuts) searchUpTo(cut, true);
    searchUpTo(upper, false);
    return roots;
}

RealRoots FindRoots(Polynomial const& polynomial, double lower, double upper) {
    if (polynomial.degree == 0) return {};
    if (polynomial.degree == 1) {
        RealRoots roots;
        double const root = -polynomial.coefficients[0] / polynomial.coefficients[1];
        if (root >= lower && root <= upper) roots.Append(root);
        return roots;
    }
    Polynomial const derivative = polynomial.Derivative();
    return RootsBetweenCuts(polynomial, derivative, FindRoots(derivative, lower, upper), lower, upper);
}

}  // namespace

RealRoots FindRealRoots(QuarticCoefficients_t const& coefficients, double lower, double upper) {
    return FindRoots(WithoutLeadingZeros(coefficients), lower, upper);
}

RealRoots FindRealRoots(QuarticCoefficients_t const& coefficients) {
    Polynomial const polynomial = WithoutLeadingZeros(coefficients);
    double bound = 0;
    for (std::size_t i = 0; i < polynomial.degree; ++i) {
        double const ratio = std::abs(coefficients[i] / coefficients[polynomial.degree]);
        bound = std::max(bound, 2 * std::pow(ratio, 1 / static_cast<double>(polynomial.degree - i)));
    }
    return FindRoots(polynomial, -bound, bound);
}

}  // namespace Quorlan::Tools::Picking
