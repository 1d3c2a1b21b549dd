#include "PerlinNoise.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace kelvane {

namespace {
double fade(double t) { return t * t * t * (t * (t * 6 - 15) + 10); }
double lerp(double t, double a, double b) { return a + t * (b - a); }
// The dot product of the offset with one of twelve edge directions of a cube.
double gradient(int hash, double x, double y, double z)
{
    const int h = hash & 15;
    const double u = h < 8 ? x : y;
    const double v = h < 4 ? y : (h == 12 || h == 14 ? x : z);
    return ((h & 1) ? -u : u) + ((h & 2) ? -v : v);
}
} // namespace

PerlinNoise::PerlinNoise(std::uint32_t seed)
{
    std::array<std::uint8_t, 256> order;
    std::iota(order.begin(), order.end(), 0);
    // A generator whose sequence is fixed by the standard, so a seed means the same everywhere.
    std::mt19937 random(seed);
    for (int i = 255; i > 0; --i)
        std::swap(order[i], order[random() % (i + 1)]);
    for (int i = 0; i < 512; ++i)
        m_permutation[i] = order[i & 255];
}

double PerlinNoise::at(double x, double y, double z) const
{
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
        return 0;
    const double fx = std::floor(x), fy = std::floor(y), fz = std::floor(z);
    const int X = int(std::fmod(fx, 256.0) + 256) & 255, Y = int(std::fmod(fy, 256.0) + 256) & 255,
              Z = int(std::fmod(fz, 256.0) + 256) & 255;
    x -= fx;
    y -= fy;
    z -= fz;
    const double u = fade(x), v = fade(y), w = fade(z);
    const auto& p = m_permutation;
    const int A = p[X] + Y, AA = p[A] + Z, AB = p[A + 1] + Z;
    const int B = p[X + 1] + Y, BA = p[B] + Z, BB = p[B + 1] + Z;
    const double value =
        lerp(w,
             lerp(v, lerp(u, gradient(p[AA], x, y, z), gradient(p[BA], x - 1, y, z)),
                  lerp(u, gradient(p[AB], x, y - 1, z), gradient(p[BB], x - 1, y - 1, z))),
             lerp(v, lerp(u, gradient(p[AA + 1], x, y, z - 1), gradient(p[BA + 1], x - 1, y, z - 1)),
                  lerp(u, gradient(p[AB + 1], x, y - 1, z - 1), gradient(p[BB + 1], x - 1, y - 1, z - 1))));
    return std::clamp(value, -1.0, 1.0);
}

double PerlinNoise::fractal(double x, double y, double z, int octaves, double persistence) const
{
    double sum = 0, strength = 1, total = 0, frequency = 1;
    for (int i = 0; i < std::max(1, octaves); ++i) {
        sum += strength * at(x * frequency, y * frequency, z * frequency);
        total += strength;
        strength *= persistence;
        frequency *= 2;
    }
    return sum / total;
}

} // namespace kelvane
