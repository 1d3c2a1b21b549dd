#include "FrequencyBands.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvane {

FrequencyBands::FrequencyBands(int sampleRate, int bands, int blockSize)
    : m_sampleRate(std::max(8000, sampleRate))
    , m_blockSize(std::max(64, blockSize & ~1))
    , m_window(m_blockSize)
    , m_input(m_blockSize)
    , m_spectrum(m_blockSize + 2)
    , m_fft(kiss_fftr_alloc(m_blockSize, 0, nullptr, nullptr))
{
    bands = std::max(1, bands);
    const double top = std::min(highestFrequency, m_sampleRate / 2.0);
    for (int i = 0; i <= bands; ++i)
        m_edges.push_back(lowestFrequency * std::pow(top / lowestFrequency, double(i) / bands));
    for (int i = 0; i < m_blockSize; ++i)
        m_window[i] = float(0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / (m_blockSize - 1)));
}

FrequencyBands::~FrequencyBands() { kiss_fftr_free(m_fft); }

int FrequencyBands::bandOf(double frequency) const
{
    if (frequency < m_edges.front() || frequency >= m_edges.back())
        return -1;
    return int(std::upper_bound(m_edges.begin(), m_edges.end(), frequency) - m_edges.begin()) - 1;
}

std::vector<float> FrequencyBands::analyze(std::span<const float> samples)
{
    const size_t take = std::min(samples.size(), size_t(m_blockSize));
    const size_t pad = m_blockSize - take;
    std::fill(m_input.begin(), m_input.begin() + pad, 0.0f);
    const auto recent = samples.last(take);
    for (size_t i = 0; i < take; ++i)
        m_input[pad + i] = recent[i] * m_window[pad + i];
    kiss_fftr(m_fft, m_input.data(), reinterpret_cast<kiss_fft_cpx*>(m_spectrum.data()));

    // A full-scale sine through the Hann window peaks at a quarter of the block in its bin.
    const double fullScale = m_blockSize / 4.0;
    const double binWidth = double(m_sampleRate) / m_blockSize;
    std::vector<float> levels(bands(), 0.0f);
    for (int band = 0; band < bands(); ++band) {
        const int first = std::max(1, int(std::ceil(m_edges[band] / binWidth)));
        const int last = std::min(m_blockSize / 2, std::max(first, int(std::ceil(m_edges[band + 1] / binWidth)) - 1));
        double strongest = 0;
        for (int bin = first; bin <= last; ++bin) {
            const double re = m_spectrum[2 * bin], im = m_spectrum[2 * bin + 1];
            strongest = std::max(strongest, re * re + im * im);
        }
        const double decibels = 10 * std::log10(strongest / (fullScale * fullScale) + 1e-12);
        levels[band] = float(std::clamp(1 - decibels / floorDecibels, 0.0, 1.0));
    }
    return levels;
}

std::vector<float> BarSmoother::next(const std::vector<float>& levels)
{
    m_bars.resize(levels.size(), 0.0f);
    for (size_t i = 0; i < levels.size(); ++i) {
        const float level = std::isfinite(levels[i]) ? std::clamp(levels[i], 0.0f, 1.0f) : 0.0f;
        m_bars[i] = std::max(level, m_bars[i] * fall);
        if (m_bars[i] < 0.01f)
            m_bars[i] = 0;
    }
    return m_bars;
}

} // namespace kelvane
