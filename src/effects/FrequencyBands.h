#pragma once

#include <span>
#include <utility>
#include <vector>

struct kiss_fftr_state;

namespace kelvane {

// The loudness of what plays, in a few bands spaced evenly on a musical (logarithmic) scale, from
// the most recent block of samples: a Hann window, a real FFT, the strongest bin of each band in
// decibels mapped onto 0–1. Not thread-safe; one analyser per capture thread.
class FrequencyBands {
public:
    static constexpr double lowestFrequency = 60;
    static constexpr double highestFrequency = 12000;
    // Quieter than this (relative to a full-scale sine) is no bar at all.
    static constexpr double floorDecibels = -60;

    FrequencyBands(int sampleRate, int bands, int blockSize = 2048);
    ~FrequencyBands();
    FrequencyBands(const FrequencyBands&) = delete;
    FrequencyBands& operator=(const FrequencyBands&) = delete;

    int blockSize() const { return m_blockSize; }
    int bands() const { return static_cast<int>(m_edges.size()) - 1; }
    // The frequencies a band covers, from its lower edge to its upper one.
    std::pair<double, double> bandRange(int band) const { return {m_edges[band], m_edges[band + 1]}; }
    // The band a frequency falls in, or -1 outside them all.
    int bandOf(double frequency) const;

    // Each band's level, 0 to 1, from the last `blockSize()` samples (fewer are padded with
    // silence in front).
    std::vector<float> analyze(std::span<const float> samples);

private:
    int m_sampleRate;
    int m_blockSize;
    std::vector<double> m_edges;
    std::vector<float> m_window;
    std::vector<float> m_input;
    std::vector<float> m_spectrum; // interleaved real and imaginary parts
    kiss_fftr_state* m_fft = nullptr;
};

// The bars as drawn: they jump up with a beat and fall back slowly, so that they move with the
// music without flickering.
class BarSmoother {
public:
    // The share of its height a bar keeps from one update to the next when the sound drops.
    static constexpr float fall = 0.72f;
    std::vector<float> next(const std::vector<float>& levels);
    void reset() { m_bars.clear(); }

private:
    std::vector<float> m_bars;
};

} // namespace kelvane
