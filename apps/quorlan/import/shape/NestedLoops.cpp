#include "shape/NestedLoops.h"

#include <algorithm>
#include <cmath>

namespace QuorlanProgram::Import {

namespace {

/// The two axes of the plane that a face is seen best in.
struct Projection {
    explicit Projection(Vertex const& normal) {
        auto const x = std::abs(normal.x);
        auto const y = std::abs(normal.y);
        auto const z = std::abs(normal.z);
        if (x > y && x > z) {
            u = &Vertex::y;
            v = &Vertex::z;
        } else if (y > z) {
            u = &Vertex::z;
            v = &Vertex::x;
        }
    }
    double Vertex::*u = &Vertex::x;
    double Vertex::*v = &Vertex::y;
};

/// Whether a ray from the point crosses the loop an odd number of times.
bool IsInside(Loop const& loop, Vertex const& point, Projection const& plane) {
    bool isInside = false;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        auto const& a = loop[i];
        auto const& b = loop[(i + 1) % loop.size()];
        if ((a.*plane.v > point.*plane.v) == (b.*plane.v > point.*plane.v)) continue;
        auto const share = (point.*plane.v - a.*plane.v) / (b.*plane.v - a.*plane.v);
        if (point.*plane.u < a.*plane.u + share * (b.*plane.u - a.*plane.u)) isInside = !isInside;
    }
    return isInside;
}

}  // namespace

std::vector<FaceLoops> SplitNestedLoops(std::vector<Loop> loops) {
    loops.erase(std::remove_if(loops.begin(), loops.end(), [](Loop const& loop) { return loop.size() < 3; }),
                loops.end());
    auto const size = [](Loop const& loop) { return GeometryObjectLib::Length(GetAreaVector(loop)); };
    std::stable_sort(loops.begin(), loops.end(), [&](Loop const& a, Loop const& b) { return size(a) > size(b); });
    std::vector<FaceLoops> faces;
    if (loops.empty()) return faces;
    Projection const plane(GetAreaVector(loops.front()));
    constexpr auto kHole = static_cast<std::size_t>(-1);
    std::vector<std::size_t> faceOf(loops.size(), kHole);  // the face that a loop is the outer one of
    for (std::size_t i = 0; i < loops.size(); ++i) {
        std::size_t depth = 0;
        auto parent = kHole;
        for (std::size_t j = 0; j < i; ++j) {
            if (!IsInside(loops[j], loops[i].front(), plane)) continue;
            ++depth;
            parent = j;  // the smallest so far
        }
        if (depth % 2 == 0) {
            faceOf[i] = faces.size();
            faces.push_back({loops[i], {}});
        } else if (faceOf[parent] != kHole) {
            faces[faceOf[parent]].holes.push_back(loops[i]);
        }
    }
    return faces;
}

}  // namespace QuorlanProgram::Import
