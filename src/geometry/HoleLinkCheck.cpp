#include "geometry/HoleLinkCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace GeometryObjectLib {

bool HoleLinkCheck::LinkAll() {
    auto const isFinite = [](Corner const& c) { return std::isfinite(c.x) && std::isfinite(c.y); };
    if (!std::all_of(corners_.begin(), corners_.end(), isFinite)) return false;

    Index outer = MakeRing(0, true);
    if (outer == kNone || corners_[outer].previous == corners_[outer].next) return true;
    leftmost_.clear();
    for (std::size_t ring = 1; ring < ends_.size(); ++ring) {
        Index const hole = MakeRing(ring, false);
        if (hole == kNone) continue;
        if (corners_[hole].next == hole) corners_[hole].isAlone = true;
        leftmost_.push_back(FindLeftmost(hole));
    }
    std::sort(leftmost_.begin(), leftmost_.end(), [this](Index a, Index b) { return corners_[a].x < corners_[b].x; });
    auto const link = [&](Index hole) { return LinkHole(hole, outer); };
    return std::all_of(leftmost_.begin(), leftmost_.end(), link);
}

/// The corners of a ring, linked in the order that earcut gives it. RETURNS its last corner; kNone for an empty ring.
HoleLinkCheck::Index HoleLinkCheck::MakeRing(std::size_t ring, bool isOuter) {
    auto const begin = static_cast<Index>(ring == 0 ? 0 : ends_[ring - 1]);
    auto const end = static_cast<Index>(ends_[ring]);
    if (begin == end) return kNone;
    double sum = 0;
    for (Index i = begin, j = end - 1; i < end; j = i++) {
        sum += (corners_[j].x - corners_[i].x) * (corners_[i].y + corners_[j].y);
    }
    bool const isForward = isOuter == (sum > 0);
    for (Index i = begin; i < end; ++i) {
        Index const after = i + 1 == end ? begin : i + 1;
        (isForward ? corners_[i].next : corners_[after].next) = isForward ? after : i;
        (isForward ? corners_[after].previous : corners_[i].previous) = isForward ? i : after;
    }
    Index const last = isForward ? end - 1 : begin;
    Index const first = corners_[last].next;
    if (corners_[last].x != corners_[first].x || corners_[last].y != corners_[first].y) return last;
    Remove(last);
    return first;
}

HoleLinkCheck::Index HoleLinkCheck::FindLeftmost(Index start) const {
    Index leftmost = start;
    for (Index p = corners_[start].next; p != start; p = corners_[p].next) {
        Corner const& best = corners_[leftmost];
        if (corners_[p].x < best.x || (corners_[p].x == best.x && corners_[p].y < best.y)) leftmost = p;
    }
    return leftmost;
}

/// The corner of the outer ring that the hole's leftmost corner is linked to; kNone if there is none (David Eberly,
/// "Triangulation by Ear Clipping", 2002).
HoleLinkCheck::Index HoleLinkCheck::FindBridge(Index hole, Index outer) {
    double const hx = corners_[hole].x, hy = corners_[hole].y;
    double qx = -std::numeric_limits<double>::infinity();
    Index bridge = kNone;
    Index p = outer;
    do {
        Corner const& a = corners_[p];
        Corner const& b = corners_[a.next];
        if (hy <= a.y && hy >= b.y && b.y != a.y) {
            double const x = a.x + (hy - a.y) * (b.x - a.x) / (b.y - a.y);
            if (x <= hx && x > qx) {
                qx = x;
                bridge = a.x < b.x ? p : a.next;
                if (x == hx) return bridge;
            }
        }
        p = a.next;
    } while (p != outer);
    if (bridge == kNone) return kNone;

    Index const stop = bridge;
    double const mx = corners_[bridge].x, my = corners_[bridge].y;
    double const ax = hy < my ? hx : qx, cx = hy < my ? qx : hx;
    double smallest = std::numeric_limits<double>::infinity();
    p = stop;
    do {
        Corner const& c = corners_[p];
        bool const isBetween = hx >= c.x && c.x >= mx && hx != c.x;
        if (isBetween && (cx - c.x) * (hy - c.y) >= (ax - c.x) * (hy - c.y) &&
            (ax - c.x) * (my - c.y) >= (mx - c.x) * (hy - c.y) && (mx - c.x) * (hy - c.y) >= (cx - c.x) * (my - c.y)) {
            double const tangent = std::abs(hy - c.y) / (hx - c.x);
            Corner const& m = corners_[bridge];
            auto const isInSector = [&] {
                return Area(m.previous, bridge, c.previous) < 0 && Area(c.next, bridge, m.next) < 0;
            };
            if (IsLocallyInside(p, hole) &&
                (tangent < smallest || (tangent == smallest && (c.x > m.x || isInSector())))) {
                bridge = p;
                smallest = tangent;
            }
        }
        p = c.next;
    } while (p != stop);
    return bridge;
}

/// Joins the rings of `a` and `b` by a bridge there and back. RETURNS the second `b`.
HoleLinkCheck::Index HoleLinkCheck::Split(Index a, Index b) {
    auto const a2 = static_cast<Index>(corners_.size());
    Index const b2 = a2 + 1;
    Index const afterA = corners_[a].next;
    Index const beforeB = corners_[b].previous;
    corners_.push_back({corners_[a].x, corners_[a].y, b2, afterA});
    corners_.push_back({corners_[b].x, corners_[b].y, beforeB, a2});
    corners_[a].next = b;
    corners_[b].previous = a;
    corners_[afterA].previous = a2;
    corners_[beforeB].next = b2;
    return b2;
}

/// Drops corners without an angle from `start` on, until `end` is reached. RETURNS where it ended; kNone if it would
/// not end.
HoleLinkCheck::Index HoleLinkCheck::DropStraight(Index start, Index end) {
    Index p = start;
    bool isAgain = false;
    std::size_t steps = 0;
    do {
        isAgain = false;
        Corner const& c = corners_[p];
        bool const isSame = c.x == corners_[c.next].x && c.y == corners_[c.next].y;
        if (!c.isAlone && (isSame || Area(c.previous, p, c.next) == 0)) {
            Remove(p);
            p = end = c.previous;
            if (p == corners_[p].next) break;
            isAgain = true;
            steps = 0;  // a corner less
            if (++dropped_ > 2 * corners_.size()) return kNone;
        } else {
            p = c.next;
            if (!Step(steps)) return kNone;
        }
    } while (isAgain || p != end);
    return end;
}

bool HoleLinkCheck::LinkHole(Index hole, Index& outer) {
    Index const bridge = FindBridge(hole, outer);
    if (bridge == kNone) return true;
    dropped_ = 0;
    Index const back = Split(bridge, hole);
    if (DropStraight(back, corners_[back].next) == kNone) return false;
    outer = DropStraight(bridge, corners_[bridge].next);
    return outer != kNone && IsRing(outer);
}

bool HoleLinkCheck::IsRing(Index start) const {
    std::size_t steps = 0;
    Index p = start;
    do {
        if (corners_[corners_[p].next].previous != p || !Step(steps)) return false;
        p = corners_[p].next;
    } while (p != start);
    return true;
}

double HoleLinkCheck::Area(Index p, Index q, Index r) const {
    Corner const& a = corners_[p];
    Corner const& b = corners_[q];
    Corner const& c = corners_[r];
    return (b.y - a.y) * (c.x - b.x) - (b.x - a.x) * (c.y - b.y);
}

bool HoleLinkCheck::IsLocallyInside(Index a, Index b) const {
    Index const before = corners_[a].previous;
    Index const after = corners_[a].next;
    if (Area(before, a, after) < 0) return Area(a, b, after) >= 0 && Area(a, before, b) >= 0;
    return Area(a, b, before) < 0 || Area(a, after, b) < 0;
}

void HoleLinkCheck::Remove(Index corner) {
    Corner const& c = corners_[corner];
    corners_[c.next].previous = c.previous;
    corners_[c.previous].next = c.next;
}

}  // namespace GeometryObjectLib
