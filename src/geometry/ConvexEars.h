#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GeometryObjectLib {

/// Triangulates a ring whose corners all turn left, also after each cut, exactly as earcut does, in linear time.
///
/// In such a ring every corner is an ear, so that earcut cuts every other corner, going round and round, from the last
/// point on. The turns are computed with earcut's own formula, so that both see the same corners.
template <class Point, class Index>
class ConvexEars {
public:
    /// Appends triples of indices into the `count` points.
    /// RETURNS false, with `triangles` unchanged, if some corner does not turn left: earcut itself has to decide then.
    bool Cut(Point const* points, std::size_t count, std::vector<Index>& triangles) {
        if (count < 3 || count > 65535 || !TurnsLeftEverywhere(points, count) || !KeepsOrder(points, count)) {
            return false;
        }
        LinkAll(count);
        std::size_t const sizeBefore = triangles.size();
        triangles.resize(sizeBefore + 3 * (count - 2));
        Index* triangle = triangles.data() + sizeBefore;
        auto ear = static_cast<std::uint16_t>(count - 1);
        for (std::size_t left = count; left >= 3; --left, triangle += 3) {
            std::uint16_t const before = previous_[ear];
            std::uint16_t const after = next_[ear];
            triangle[0] = before;
            triangle[1] = ear;
            triangle[2] = after;
            next_[before] = after;
            previous_[after] = before;
            if (left > 3 && !(TurnsLeft(points, before) && TurnsLeft(points, after))) {
                triangles.resize(sizeBefore);
                return false;
            }
            ear = next_[after];
        }
        return true;
    }

private:
    /// Twice the area of p, q, r by the formula and in the sign of earcut: negative where they turn left.
    static double Area(Point const& p, Point const& q, Point const& r) {
        double const px = p[0], py = p[1], qx = q[0], qy = q[1], rx = r[0], ry = r[1];
        return (qy - py) * (rx - qx) - (qx - px) * (ry - qy);
    }

    static bool TurnsLeftEverywhere(Point const* points, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            Point const& before = points[i == 0 ? count - 1 : i - 1];
            Point const& after = points[i + 1 == count ? 0 : i + 1];
            if (!(Area(before, points[i], after) < 0)) return false;
        }
        return true;
    }

    /// Earcut keeps the order of a ring for which this sum is positive and reverses others.
    static bool KeepsOrder(Point const* points, std::size_t count) {
        double sum = 0;
        for (std::size_t i = 0, j = count - 1; i < count; j = i++) {
            double const ix = points[i][0], iy = points[i][1], jx = points[j][0], jy = points[j][1];
            sum += (jx - ix) * (iy + jy);
        }
        return sum > 0;
    }

    bool TurnsLeft(Point const* points, std::uint16_t corner) const {
        return Area(points[previous_[corner]], points[corner], points[next_[corner]]) < 0;
    }

    void LinkAll(std::size_t count) {
        previous_.resize(count);
        next_.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            previous_[i] = static_cast<std::uint16_t>(i == 0 ? count - 1 : i - 1);
            next_[i] = static_cast<std::uint16_t>(i + 1 == count ? 0 : i + 1);
        }
    }

    std::vector<std::uint16_t> previous_;
    std::vector<std::uint16_t> next_;
};

}  // namespace GeometryObjectLib
