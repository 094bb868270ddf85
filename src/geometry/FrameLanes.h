#pragma once

#include "geometry/Frame.h"
#include "geometry/Lanes.h"

/// Four frames at once: the operations of `Frame` and `DoubleFrame`, with their bits in every lane.
namespace GeometryObjectLib {

/// Divides three axes by their lengths. Axes of exactly unit length, which most placements of a building have, are
/// already the result: the root of 1 is 1 and x / 1 is x.
template <class Lanes>
void Normalize(VectorLanes<Lanes>& x, VectorLanes<Lanes>& y, VectorLanes<Lanes>& z) {
    Lanes const xSquared = Dot(x, x);
    Lanes const ySquared = Dot(y, y);
    Lanes const zSquared = Dot(z, z);
    if (AreOne(xSquared, ySquared, zSquared)) return;
    x = x / Sqrt(xSquared);
    y = y / Sqrt(ySquared);
    z = z / Sqrt(zSquared);
}

struct FrameLanes {
    VectorLanes<Double4> origin;
    VectorLanes<Float4> x;
    VectorLanes<Float4> y;
    VectorLanes<Float4> z;

    static FrameLanes FromAxes(VectorLanes<Double4> const& origin, VectorLanes<Float4> const& xAxis,
                               VectorLanes<Float4> const& yAxis) {
        FrameLanes frame{origin, xAxis, yAxis, Cross(xAxis, yAxis)};
        Normalize(frame.x, frame.y, frame.z);
        return frame;
    }

    static FrameLanes FromFrame(Frame const& frame) {
        return {Broadcast(frame.origin), Broadcast(frame.x), Broadcast(frame.y), Broadcast(frame.z)};
    }
};

/// Applies `b` first, then `a`.
inline FrameLanes operator*(FrameLanes const& a, FrameLanes const& b) {
    auto const compose = [&a](VectorLanes<Float4> const& v) { return a.x * v.x + a.y * v.y + a.z * v.z; };
    return {a.origin + Widen(a.x) * b.origin.x + Widen(a.y) * b.origin.y + Widen(a.z) * b.origin.z, compose(b.x),
            compose(b.y), compose(b.z)};
}

struct BoxLanes {
    VectorLanes<Double4> center;
    VectorLanes<Double4> halfExtent;

    void Store(AxisAlignedBox3* out) const {
        static_assert(sizeof(AxisAlignedBox3) == 6 * sizeof(double));
        StorePairs(center.x, center.y, &out->center.x, 6);
        StorePairs(center.z, halfExtent.x, &out->center.z, 6);
        StorePairs(halfExtent.y, halfExtent.z, &out->halfExtent.y, 6);
    }
};

inline BoxLanes TransformBox(FrameLanes const& frame, VectorLanes<Float4> const& lo, VectorLanes<Float4> const& hi) {
    BoxLanes box;
    auto const bounds = [&](Float4 x, Float4 y, Float4 z, Double4 const& origin, Double4& center, Double4& half) {
        Float4 const lowerSum = Min(x * lo.x, x * hi.x) + Min(y * lo.y, y * hi.y) + Min(z * lo.z, z * hi.z);
        Float4 const upperSum = Max(x * lo.x, x * hi.x) + Max(y * lo.y, y * hi.y) + Max(z * lo.z, z * hi.z);
        Double4 const lower = Widen(lowerSum) + origin;
        Double4 const upper = Widen(upperSum) + origin;
        center = (upper + lower) * Double4(0.5);  // the bits of a division by 2
        half = (upper - lower) * Double4(0.5);
    };
    bounds(frame.x.x, frame.y.x, frame.z.x, frame.origin.x, box.center.x, box.halfExtent.x);
    bounds(frame.x.y, frame.y.y, frame.z.y, frame.origin.y, box.center.y, box.halfExtent.y);
    bounds(frame.x.z, frame.y.z, frame.z.z, frame.origin.z, box.center.z, box.halfExtent.z);
    return box;
}

struct DoubleFrameLanes {
    VectorLanes<Double4> origin;
    VectorLanes<Double4> x;
    VectorLanes<Double4> y;
    VectorLanes<Double4> z;

    static DoubleFrameLanes FromAxes(VectorLanes<Double4> const& origin, VectorLanes<Float4> const& xAxis,
                                     VectorLanes<Float4> const& yAxis) {
        DoubleFrameLanes frame{origin, Widen(xAxis), Widen(yAxis), {}};
        frame.z = Cross(frame.x, frame.y);
        frame.y = Cross(frame.z, frame.x);
        Normalize(frame.x, frame.y, frame.z);
        return frame;
    }
};

/// Applies `b` first, then `a`.
inline DoubleFrameLanes operator*(DoubleFrameLanes const& a, DoubleFrameLanes const& b) {
    auto const compose = [&a](VectorLanes<Double4> const& v) { return a.x * v.x + a.y * v.y + a.z * v.z; };
    return {a.origin + a.x * b.origin.x + a.y * b.origin.y + a.z * b.origin.z, compose(b.x), compose(b.y),
            compose(b.z)};
}

}  // namespace GeometryObjectLib
