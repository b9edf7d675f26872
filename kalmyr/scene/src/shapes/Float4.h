#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define KALMYR_FLOAT4_SSE 1
#endif

namespace kalmyr::detail {

/// Four floats worked on at once, three of them a vector and the last one free for an index.
struct alignas(16) Float4 {
#ifdef KALMYR_FLOAT4_SSE
    __m128 v;
    static Float4 load(const float* p)
    {
        return {_mm_loadu_ps(p)};
    }
    static Float4 of(float x, float y, float z, float w)
    {
        return {_mm_setr_ps(x, y, z, w)};
    }
    void store(float* p) const
    {
        _mm_storeu_ps(p, v);
    }
    friend Float4 min(Float4 a, Float4 b)
    {
        return {_mm_min_ps(a.v, b.v)};
    }
    friend Float4 max(Float4 a, Float4 b)
    {
        return {_mm_max_ps(a.v, b.v)};
    }
    friend Float4 operator+(Float4 a, Float4 b)
    {
        return {_mm_add_ps(a.v, b.v)};
    }
    friend Float4 operator-(Float4 a, Float4 b)
    {
        return {_mm_sub_ps(a.v, b.v)};
    }
    friend Float4 operator*(Float4 a, Float4 b)
    {
        return {_mm_mul_ps(a.v, b.v)};
    }
#else
    float v[4];
    static Float4 load(const float* p)
    {
        return {{p[0], p[1], p[2], p[3]}};
    }
    static Float4 of(float x, float y, float z, float w)
    {
        return {{x, y, z, w}};
    }
    void store(float* p) const
    {
        std::copy(v, v + 4, p);
    }
    template <class F>
    static Float4 each(Float4 a, Float4 b, F f)
    {
        return {{f(a.v[0], b.v[0]), f(a.v[1], b.v[1]), f(a.v[2], b.v[2]), f(a.v[3], b.v[3])}};
    }
    friend Float4 min(Float4 a, Float4 b)
    {
        return each(a, b, [](float x, float y) { return x < y ? x : y; });
    }
    friend Float4 max(Float4 a, Float4 b)
    {
        return each(a, b, [](float x, float y) { return x > y ? x : y; });
    }
    friend Float4 operator+(Float4 a, Float4 b)
    {
        return each(a, b, [](float x, float y) { return x + y; });
    }
    friend Float4 operator-(Float4 a, Float4 b)
    {
        return each(a, b, [](float x, float y) { return x - y; });
    }
    friend Float4 operator*(Float4 a, Float4 b)
    {
        return each(a, b, [](float x, float y) { return x * y; });
    }
#endif
    float operator[](int i) const
    {
        return reinterpret_cast<const float*>(this)[i];
    }
    float& operator[](int i)
    {
        return reinterpret_cast<float*>(this)[i];
    }
};

} // namespace kalmyr::detail
