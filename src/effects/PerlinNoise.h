#pragma once

#include <array>
#include <cstdint>

namespace kelvane {

// Improved Perlin noise: smooth, repeatable pseudo-random values between -1 and 1 over space,
// zero on every whole-numbered point. The same seed always gives the same field.
class PerlinNoise {
public:
    explicit PerlinNoise(std::uint32_t seed = 0);
    double at(double x, double y = 0, double z = 0) const;
    // Several octaves added, each at twice the frequency and `persistence` of the strength of the
    // one before; normalised back to -1..1.
    double fractal(double x, double y, double z, int octaves, double persistence = 0.5) const;

private:
    std::array<std::uint8_t, 512> m_permutation{};
};

} // namespace kelvane
