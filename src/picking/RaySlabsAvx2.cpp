#include "picking/RaySlabs.h"

#if QUORLAN_HAS_AVX2

#include <immintrin.h>

namespace Quorlan::Tools::Picking {

/// The same intervals as in lanes of four: a node's bases and steps of all axes at once, then its eight children.
__attribute__((target("avx2"))) void RaySlabs::FindMetAvx2(QuantizedAxisAlignedBoxTreeWideNode_s const* wideNodes,
                                                           std::uint32_t const* indices, std::size_t count,
                                                           unsigned* met) const {
    __m128 const perCell = _mm_loadu_ps(perCell_);
    __m128 const nearOffset = _mm_loadu_ps(nearOffset_);
    __m128 const farOffset = _mm_loadu_ps(farOffset_);
    __m128 const nearStep = _mm_loadu_ps(nearStep_);
    __m128 const farStep = _mm_sub_ps(_mm_set1_ps(1), nearStep);
    __m256 const infinity = _mm256_set1_ps(std::numeric_limits<float>::infinity());
    for (std::size_t i = 0; i < count; ++i) {
        auto const& wide = wideNodes[indices[i]];
        // Lanes 0 to 2: the bases; lane 3: the form, whose bits give the shifts.
        __m128i const words = _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(wide.base)));
        __m128i const form = _mm_shuffle_epi32(words, 0xFF);
        __m128i const shift = _mm_and_si128(_mm_srlv_epi32(form, _mm_setr_epi32(0, 4, 8, 0)), _mm_set1_epi32(15));
        __m128 const power = _mm_cvtepi32_ps(_mm_sllv_epi32(_mm_set1_epi32(1), shift));
        __m128 const perStep = _mm_mul_ps(perCell, power);
        __m128 const base = _mm_mul_ps(_mm_cvtepi32_ps(words), perCell);
        alignas(16) float steps[4];
        alignas(16) float nearBases[4];
        alignas(16) float farBases[4];
        _mm_store_ps(steps, perStep);
        _mm_store_ps(nearBases, _mm_add_ps(_mm_sub_ps(base, nearOffset), _mm_mul_ps(nearStep, perStep)));
        _mm_store_ps(farBases, _mm_add_ps(_mm_sub_ps(base, farOffset), _mm_mul_ps(farStep, perStep)));
        __m256 entry = _mm256_setzero_ps();
        __m256 exit = infinity;
        for (std::size_t k = 0; k < 3; ++k) {
            auto const load = [&](std::size_t row) __attribute__((target("avx2"), always_inline)) {
                auto const* const bytes = reinterpret_cast<__m128i const*>(wide.bounds[row]);
                return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(bytes)));
            };
            __m256 const step = _mm256_broadcast_ss(&steps[k]);
            __m256 const nearSide = _mm256_mul_ps(load(nearRow_[k]), step);
            __m256 const farSide = _mm256_mul_ps(load(nearRow_[k] ^ 1), step);
            entry = _mm256_max_ps(_mm256_add_ps(nearSide, _mm256_broadcast_ss(&nearBases[k])), entry);
            exit = _mm256_min_ps(_mm256_add_ps(farSide, _mm256_broadcast_ss(&farBases[k])), exit);
        }
        int const bits = _mm256_movemask_ps(_mm256_cmp_ps(entry, exit, _CMP_LE_OQ));
        met[i] = static_cast<unsigned>(bits) & GetChildMask(wide);
    }
}

}  // namespace Quorlan::Tools::Picking

#endif
