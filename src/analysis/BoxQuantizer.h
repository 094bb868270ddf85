#pragma once

#include "analysis/BoxTreeWriter.h"
#include "geometry/Frame.h"
#include "geometry/Lanes.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Quorlan {

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Float4;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;

constexpr float kGridEnd = 65535;  ///< the last grid line of an axis

/// Turns world boxes into items and leaves of a tree: relative to the tree's origin, in single precision, and for the
/// leaves in grid lines, the lower ends rounded down, the upper ends up.
///
/// Lower ends are clamped below only, upper ends above only. Along an axis without extent the scale is infinite and a
/// product may be not a number: such an interval is the whole axis. What no integer can hold becomes the least integer,
/// of which a node keeps 0.
class BoxQuantizer {
public:
    /// `scale` is in grid lines per unit.
    BoxQuantizer(Vertex const& origin, Vector3f const& scale) : origin_(origin), scale_(scale) {}

    void Quantize(AxisAlignedBox3 const& box, std::uint32_t instance, BoxTreeItem& item,
                  GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s& leaf) const {
#if QUORLAN_HAS_SSE2
        __m128i const inLastLane = _mm_setr_epi32(0, 0, 0, static_cast<int>(instance));
        Float4 const scale(scale_.x, scale_.y, scale_.z, 0);
        Float4 const center = Narrow(_mm_sub_pd(_mm_loadu_pd(&box.center.x), _mm_setr_pd(origin_.x, origin_.y)),
                                     _mm_set_sd(box.center.z - origin_.z));
        Float4 const half = Narrow(_mm_loadu_pd(&box.halfExtent.x), _mm_load_sd(&box.halfExtent.z));
        Float4 const lower = Max(Float4(0.0f), (center - half) * scale);
        Float4 const upper = Min(Float4(kGridEnd), (center + half) * scale);

        __m128i const floor = _mm_cvttps_epi32(lower.v);  // the floor of what is not negative
        __m128i const integer = _mm_cvttps_epi32(upper.v);
        __m128i const ceil = _mm_sub_epi32(integer, _mm_castps_si128(_mm_cmplt_ps(_mm_cvtepi32_ps(integer), upper.v)));
        __m128i const ends = _mm_or_si128(_mm_and_si128(floor, _mm_set1_epi32(0xFFFF)), _mm_slli_epi32(ceil, 16));
        _mm_store_ps(item.center, _mm_or_ps(center.v, _mm_castsi128_ps(inLastLane)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&leaf), _mm_or_si128(ends, inLastLane));
#else
        Vector3f const c = GeometryObjectLib::ToVector3f(box.center - origin_);
        Vector3f const h = GeometryObjectLib::ToVector3f(box.halfExtent);
        item = {{c.x, c.y, c.z}, instance};
        leaf = {QuantizeLower(c.x, h.x, scale_.x),  QuantizeUpper(c.x, h.x, scale_.x),
                QuantizeLower(c.y, h.y, scale_.y),  QuantizeUpper(c.y, h.y, scale_.y),
                QuantizeLower(c.z, h.z, scale_.z),  QuantizeUpper(c.z, h.z, scale_.z),
                static_cast<std::int32_t>(instance)};
#endif
    }

private:
#if QUORLAN_HAS_SSE2
    static Float4 Narrow(__m128d xy, __m128d z) { return _mm_movelh_ps(_mm_cvtpd_ps(xy), _mm_cvtpd_ps(z)); }
#else
    static std::int32_t Truncate(float value) {
        constexpr float kLimit = 2147483648.0f;
        return value > -kLimit && value < kLimit ? static_cast<std::int32_t>(value)
                                                 : std::numeric_limits<std::int32_t>::min();
    }

    static std::uint16_t QuantizeLower(float center, float half, float scale) {
        return static_cast<std::uint16_t>(Truncate(std::max(0.0f, (center - half) * scale)));
    }

    static std::uint16_t QuantizeUpper(float center, float half, float scale) {
        float const value = std::min(kGridEnd, (center + half) * scale);
        std::int32_t const integer = Truncate(value);
        return static_cast<std::uint16_t>(integer + (static_cast<float>(integer) < value));
    }
#endif

    Vertex origin_;
    Vector3f scale_;
};

}  // namespace Quorlan
