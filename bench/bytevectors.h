#pragma once

#include <immintrin.h>

/** (value + 127) / 255, for products of two bytes. */
inline __m256i DivideBy255(__m256i value)
{
    const __m256i rounded = _mm256_add_epi16(value, _mm256_set1_epi16(128));
    return _mm256_srli_epi16(_mm256_add_epi16(rounded, _mm256_srli_epi16(rounded, 8)), 8);
}

/** own + old * rest / 255 for bytes; own is premultiplied. */
inline __m256i Mix(__m256i own, __m256i rest, __m256i old)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i low =
        DivideBy255(_mm256_mullo_epi16(_mm256_unpacklo_epi8(old, zero), _mm256_unpacklo_epi8(rest, zero)));
    const __m256i high =
        DivideBy255(_mm256_mullo_epi16(_mm256_unpackhi_epi8(old, zero), _mm256_unpackhi_epi8(rest, zero)));
    return _mm256_adds_epu8(own, _mm256_packus_epi16(low, high));
}
