#include "Spring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvane {

namespace {

struct Coefficients {
    double omega0; // natural angular frequency
    double zeta;   // damping fraction
};

Coefficients coefficients(const Spring& s)
{
    const double response = std::max(s.response, 1e-6);
    return {2.0 * std::numbers::pi / response, std::max(s.dampingFraction, 0.0)};
}

// Solves x'' + 2ζω₀x' + ω₀²x = 0 and returns (x(t), x'(t)).
std::pair<double, double> solve(const Spring& s, double t, double x0, double v0)
{
    const auto [w0, zeta] = coefficients(s);
    if (t <= 0.0)
        return {x0, v0};
    constexpr double criticalBand = 1e-9;
    if (zeta < 1.0 - criticalBand) {
        const double wd = w0 * std::sqrt(1.0 - zeta * zeta);
        const double decay = std::exp(-zeta * w0 * t);
        const double a = x0;
        const double b = (v0 + zeta * w0 * x0) / wd;
        const double c = std::cos(wd * t);
        const double sn = std::sin(wd * t);
        const double x = decay * (a * c + b * sn);
        const double v = decay * ((b * wd - zeta * w0 * a) * c - (a * wd + zeta * w0 * b) * sn);
        return {x, v};
    }
    if (zeta <= 1.0 + criticalBand) {
        const double decay = std::exp(-w0 * t);
        const double b = v0 + w0 * x0;
        return {decay * (x0 + b * t), decay * (b - w0 * (x0 + b * t))};
    }
    const double root = std::sqrt(zeta * zeta - 1.0);
    const double r1 = -w0 * (zeta - root);
    const double r2 = -w0 * (zeta + root);
    const double c2 = (v0 - r1 * x0) / (r2 - r1);
    const double c1 = x0 - c2;
    return {c1 * std::exp(r1 * t) + c2 * std::exp(r2 * t),
            c1 * r1 * std::exp(r1 * t) + c2 * r2 * std::exp(r2 * t)};
}

} // namespace

double Spring::displacement(double t, double x0, double v0) const { return solve(*this, t, x0, v0).first; }

double Spring::velocity(double t, double x0, double v0) const { return solve(*this, t, x0, v0).second; }

double Spring::settlingTime(double tolerance) const
{
    const double w0 = coefficients(*this).omega0;
    // Walk forward in small steps until both position and the envelope of what is left stay under
    // the tolerance; the envelope bounds every later oscillation, so the answer is final.
    const double step = 1.0 / (w0 * 32.0);
    const double limit = 60.0;
    for (double t = 0.0; t < limit; t += step) {
        const auto [x, v] = solve(*this, t, 1.0, 0.0);
        const double amplitude = std::sqrt(x * x + (v / w0) * (v / w0));
        if (amplitude < tolerance)
            return t;
    }
    return limit;
}

double Spring::peakOvershoot() const
{
    const double zeta = coefficients(*this).zeta;
    if (zeta >= 1.0)
        return 0.0;
    return std::exp(-std::numbers::pi * zeta / std::sqrt(1.0 - zeta * zeta));
}

} // namespace kelvane
