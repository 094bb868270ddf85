#pragma once

#include <GeometryObjectLib/Vector3f.h>
#include <GeometryObjectLib/Vertex.h>

#include <algorithm>
#include <cmath>

#if defined(__SSE2__) || defined(_M_X64)
#define QUORLAN_HAS_SSE2 1
#include <emmintrin.h>
#else
#define QUORLAN_HAS_SSE2 0
#endif

/// Fetches a cache line ahead of its use. A macro, because compilers drop calls of functions that do nothing else.
#if QUORLAN_HAS_SSE2
#define QUORLAN_PREFETCH(address) _mm_prefetch(reinterpret_cast<char const*>(address), _MM_HINT_T0)
#else
#define QUORLAN_PREFETCH(address) static_cast<void>(address)
#endif

/// Four numbers side by side, worked on at once. Every operation rounds each lane exactly as the scalar operation does,
/// so that code in lanes gives the bits of the same code in scalars.
namespace GeometryObjectLib {

/// The portable form: an array and loops.
struct PlainMask {
    bool lane[4];

    friend PlainMask operator!(PlainMask const& a) { return {{!a.lane[0], !a.lane[1], !a.lane[2], !a.lane[3]}}; }
    friend PlainMask operator&(PlainMask const& a, PlainMask const& b) {
        return {{a.lane[0] && b.lane[0], a.lane[1] && b.lane[1], a.lane[2] && b.lane[2], a.lane[3] && b.lane[3]}};
    }
    friend PlainMask operator|(PlainMask const& a, PlainMask const& b) {
        return {{a.lane[0] || b.lane[0], a.lane[1] || b.lane[1], a.lane[2] || b.lane[2], a.lane[3] || b.lane[3]}};
    }
};

inline bool AreAll(PlainMask const& a) { return a.lane[0] && a.lane[1] && a.lane[2] && a.lane[3]; }

template <class T>
struct PlainLanes {
    T lane[4];

    PlainLanes() = default;
    explicit PlainLanes(T value) : lane{value, value, value, value} {}
    PlainLanes(T a, T b, T c, T d) : lane{a, b, c, d} {}

    template <class Operation>
    static PlainLanes Zip(PlainLanes const& a, PlainLanes const& b, Operation operation) {
        return {operation(a.lane[0], b.lane[0]), operation(a.lane[1], b.lane[1]), operation(a.lane[2], b.lane[2]),
                operation(a.lane[3], b.lane[3])};
    }

    friend PlainLanes operator+(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return x + y; });
    }
    friend PlainLanes operator-(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return x - y; });
    }
    friend PlainLanes operator*(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return x * y; });
    }
    friend PlainLanes operator/(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return x / y; });
    }
    /// std::min(a, b) and std::max(a, b), in this order of arguments.
    friend PlainLanes Min(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return std::min(x, y); });
    }
    friend PlainLanes Max(PlainLanes const& a, PlainLanes const& b) {
        return Zip(a, b, [](T x, T y) { return std::max(x, y); });
    }
    friend PlainLanes operator-(PlainLanes const& a) { return {-a.lane[0], -a.lane[1], -a.lane[2], -a.lane[3]}; }
    friend PlainLanes Abs(PlainLanes const& a) {
        return {std::abs(a.lane[0]), std::abs(a.lane[1]), std::abs(a.lane[2]), std::abs(a.lane[3])};
    }
    friend PlainLanes Sqrt(PlainLanes const& a) {
        return {std::sqrt(a.lane[0]), std::sqrt(a.lane[1]), std::sqrt(a.lane[2]), std::sqrt(a.lane[3])};
    }
    friend PlainMask operator>(PlainLanes const& a, PlainLanes const& b) {
        return {{a.lane[0] > b.lane[0], a.lane[1] > b.lane[1], a.lane[2] > b.lane[2], a.lane[3] > b.lane[3]}};
    }
    friend PlainMask operator>=(PlainLanes const& a, PlainLanes const& b) {
        return {{a.lane[0] >= b.lane[0], a.lane[1] >= b.lane[1], a.lane[2] >= b.lane[2], a.lane[3] >= b.lane[3]}};
    }
    friend PlainMask operator<(PlainLanes const& a, PlainLanes const& b) { return b > a; }
    friend PlainMask operator<=(PlainLanes const& a, PlainLanes const& b) { return b >= a; }
    /// Lane by lane, a where the mask is set, else b.
    friend PlainLanes Select(PlainMask const& mask, PlainLanes const& a, PlainLanes const& b) {
        return {mask.lane[0] ? a.lane[0] : b.lane[0], mask.lane[1] ? a.lane[1] : b.lane[1],
                mask.lane[2] ? a.lane[2] : b.lane[2], mask.lane[3] ? a.lane[3] : b.lane[3]};
    }
    friend void Store(PlainLanes const& a, T* out) { std::copy(a.lane, a.lane + 4, out); }
    /// Whether all twelve lanes are exactly 1.
    friend bool AreOne(PlainLanes const& a, PlainLanes const& b, PlainLanes const& c) {
        auto const areOne = [](PlainLanes const& p) {
            return p.lane[0] == 1 && p.lane[1] == 1 && p.lane[2] == 1 && p.lane[3] == 1;
        };
        return areOne(a) && areOne(b) && areOne(c);
    }
    /// Writes lane i of `a` and of `b` to out[i * stride] and the place behind it.
    friend void StorePairs(PlainLanes const& a, PlainLanes const& b, T* out, std::size_t stride) {
        for (std::size_t i = 0; i < 4; ++i) {
            out[i * stride] = a.lane[i];
            out[i * stride + 1] = b.lane[i];
        }
    }
};

inline PlainLanes<double> Widen(PlainLanes<float> const& a) { return {a.lane[0], a.lane[1], a.lane[2], a.lane[3]}; }
inline PlainLanes<float> Narrow(PlainLanes<double> const& a) {
    return {static_cast<float>(a.lane[0]), static_cast<float>(a.lane[1]), static_cast<float>(a.lane[2]),
            static_cast<float>(a.lane[3])};
}

#if QUORLAN_HAS_SSE2

/// All bits of a lane set, or none.
struct Mask4 {
    __m128 v;

    friend Mask4 operator!(Mask4 a) { return {_mm_xor_ps(a.v, _mm_castsi128_ps(_mm_set1_epi32(-1)))}; }
    friend Mask4 operator&(Mask4 a, Mask4 b) { return {_mm_and_ps(a.v, b.v)}; }
    friend Mask4 operator|(Mask4 a, Mask4 b) { return {_mm_or_ps(a.v, b.v)}; }
};

struct Float4 {
    __m128 v;

    Float4() = default;
    Float4(__m128 value) : v(value) {}
    explicit Float4(float value) : v(_mm_set1_ps(value)) {}
    Float4(float a, float b, float c, float d) : v(_mm_setr_ps(a, b, c, d)) {}

    friend Float4 operator+(Float4 a, Float4 b) { return _mm_add_ps(a.v, b.v); }
    friend Float4 operator-(Float4 a, Float4 b) { return _mm_sub_ps(a.v, b.v); }
    friend Float4 operator*(Float4 a, Float4 b) { return _mm_mul_ps(a.v, b.v); }
    friend Float4 operator/(Float4 a, Float4 b) { return _mm_div_ps(a.v, b.v); }
    // std::min(a, b) keeps a unless b is smaller; the instruction keeps its second operand unless the first is smaller.
    friend Float4 Min(Float4 a, Float4 b) { return _mm_min_ps(b.v, a.v); }
    friend Float4 Max(Float4 a, Float4 b) { return _mm_max_ps(b.v, a.v); }
    friend Float4 operator-(Float4 a) { return _mm_xor_ps(_mm_set1_ps(-0.0f), a.v); }
    friend Float4 Abs(Float4 a) { return _mm_andnot_ps(_mm_set1_ps(-0.0f), a.v); }
    friend Float4 Sqrt(Float4 a) { return _mm_sqrt_ps(a.v); }
    friend Mask4 operator>(Float4 a, Float4 b) { return {_mm_cmpgt_ps(a.v, b.v)}; }
    friend Mask4 operator>=(Float4 a, Float4 b) { return {_mm_cmpge_ps(a.v, b.v)}; }
    friend Mask4 operator<(Float4 a, Float4 b) { return {_mm_cmplt_ps(a.v, b.v)}; }
    friend Mask4 operator<=(Float4 a, Float4 b) { return {_mm_cmple_ps(a.v, b.v)}; }
    friend Float4 Select(Mask4 mask, Float4 a, Float4 b) {
        return _mm_or_ps(_mm_and_ps(mask.v, a.v), _mm_andnot_ps(mask.v, b.v));
    }
    friend void Store(Float4 a, float* out) { _mm_storeu_ps(out, a.v); }
    friend bool AreOne(Float4 a, Float4 b, Float4 c) {
        __m128 const one = _mm_set1_ps(1);
        return _mm_movemask_ps(_mm_and_ps(_mm_and_ps(_mm_cmpeq_ps(a.v, one), _mm_cmpeq_ps(b.v, one)),
                                          _mm_cmpeq_ps(c.v, one))) == 0xF;
    }
};

/// The same for doubles.
struct DoubleMask4 {
    __m128d lo;
    __m128d hi;

    friend DoubleMask4 operator!(DoubleMask4 a) {
        __m128d const all = _mm_castsi128_pd(_mm_set1_epi32(-1));
        return {_mm_xor_pd(a.lo, all), _mm_xor_pd(a.hi, all)};
    }
    friend DoubleMask4 operator&(DoubleMask4 a, DoubleMask4 b) {
        return {_mm_and_pd(a.lo, b.lo), _mm_and_pd(a.hi, b.hi)};
    }
    friend DoubleMask4 operator|(DoubleMask4 a, DoubleMask4 b) {
        return {_mm_or_pd(a.lo, b.lo), _mm_or_pd(a.hi, b.hi)};
    }
    friend bool AreAll(DoubleMask4 a) { return _mm_movemask_pd(_mm_and_pd(a.lo, a.hi)) == 0x3; }
};

struct Double4 {
    __m128d lo;
    __m128d hi;

    Double4() = default;
    Double4(__m128d low, __m128d high) : lo(low), hi(high) {}
    explicit Double4(double value) : lo(_mm_set1_pd(value)), hi(lo) {}
    Double4(double a, double b, double c, double d) : lo(_mm_setr_pd(a, b)), hi(_mm_setr_pd(c, d)) {}

    friend Double4 operator+(Double4 a, Double4 b) { return {_mm_add_pd(a.lo, b.lo), _mm_add_pd(a.hi, b.hi)}; }
    friend Double4 operator-(Double4 a, Double4 b) { return {_mm_sub_pd(a.lo, b.lo), _mm_sub_pd(a.hi, b.hi)}; }
    friend Double4 operator*(Double4 a, Double4 b) { return {_mm_mul_pd(a.lo, b.lo), _mm_mul_pd(a.hi, b.hi)}; }
    friend Double4 operator/(Double4 a, Double4 b) { return {_mm_div_pd(a.lo, b.lo), _mm_div_pd(a.hi, b.hi)}; }
    friend Double4 Min(Double4 a, Double4 b) { return {_mm_min_pd(b.lo, a.lo), _mm_min_pd(b.hi, a.hi)}; }
    friend Double4 Max(Double4 a, Double4 b) { return {_mm_max_pd(b.lo, a.lo), _mm_max_pd(b.hi, a.hi)}; }
    friend DoubleMask4 operator<(Double4 a, Double4 b) { return {_mm_cmplt_pd(a.lo, b.lo), _mm_cmplt_pd(a.hi, b.hi)}; }
    friend Double4 Select(DoubleMask4 mask, Double4 a, Double4 b) {
        return {_mm_or_pd(_mm_and_pd(mask.lo, a.lo), _mm_andnot_pd(mask.lo, b.lo)),
                _mm_or_pd(_mm_and_pd(mask.hi, a.hi), _mm_andnot_pd(mask.hi, b.hi))};
    }
    friend void Store(Double4 a, double* out) {
        _mm_storeu_pd(out, a.lo);
        _mm_storeu_pd(out + 2, a.hi);
    }
    friend Double4 Sqrt(Double4 a) { return {_mm_sqrt_pd(a.lo), _mm_sqrt_pd(a.hi)}; }
    friend bool AreOne(Double4 a, Double4 b, Double4 c) {
        __m128d const one = _mm_set1_pd(1);
        auto const areOne = [one](Double4 d) { return _mm_and_pd(_mm_cmpeq_pd(d.lo, one), _mm_cmpeq_pd(d.hi, one)); };
        return _mm_movemask_pd(_mm_and_pd(_mm_and_pd(areOne(a), areOne(b)), areOne(c))) == 0x3;
    }
    friend void StorePairs(Double4 a, Double4 b, double* out, std::size_t stride) {
        _mm_storeu_pd(out, _mm_unpacklo_pd(a.lo, b.lo));
        _mm_storeu_pd(out + stride, _mm_unpackhi_pd(a.lo, b.lo));
        _mm_storeu_pd(out + 2 * stride, _mm_unpacklo_pd(a.hi, b.hi));
        _mm_storeu_pd(out + 3 * stride, _mm_unpackhi_pd(a.hi, b.hi));
    }
};

inline Double4 Widen(Float4 a) { return {_mm_cvtps_pd(a.v), _mm_cvtps_pd(_mm_movehl_ps(a.v, a.v))}; }
inline Float4 Narrow(Double4 a) { return _mm_movelh_ps(_mm_cvtpd_ps(a.lo), _mm_cvtpd_ps(a.hi)); }
inline Float4 Load(float const* from) { return _mm_loadu_ps(from); }

#else

using Float4 = PlainLanes<float>;
using Double4 = PlainLanes<double>;
using Mask4 = PlainMask;

inline Float4 Load(float const* from) { return {from[0], from[1], from[2], from[3]}; }

#endif

/// Four vectors, component by component.
template <class Lanes>
struct VectorLanes {
    Lanes x;
    Lanes y;
    Lanes z;

    friend VectorLanes operator+(VectorLanes const& a, VectorLanes const& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend VectorLanes operator-(VectorLanes const& a, VectorLanes const& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend VectorLanes operator*(VectorLanes const& a, Lanes const& k) { return {a.x * k, a.y * k, a.z * k}; }
    friend VectorLanes operator/(VectorLanes const& a, Lanes const& k) { return {a.x / k, a.y / k, a.z / k}; }
    friend Lanes Dot(VectorLanes const& a, VectorLanes const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    friend VectorLanes Cross(VectorLanes const& a, VectorLanes const& b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
};

inline VectorLanes<Double4> Widen(VectorLanes<Float4> const& a) { return {Widen(a.x), Widen(a.y), Widen(a.z)}; }

inline VectorLanes<Float4> Narrow(VectorLanes<Double4> const& a) { return {Narrow(a.x), Narrow(a.y), Narrow(a.z)}; }

inline VectorLanes<Float4> Broadcast(Vector3f const& v) { return {Float4(v.x), Float4(v.y), Float4(v.z)}; }
inline VectorLanes<Double4> Broadcast(Vertex const& v) { return {Double4(v.x), Double4(v.y), Double4(v.z)}; }

}  // namespace GeometryObjectLib
