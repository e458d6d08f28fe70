// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/spectrogram.h>

#include <QtGlobal>

#include <random>
#include <string>
#include <vector>

/** The settings that a text like "freqs(1,4,2,3)" stands for. */
inline Norvu::Gui::SpectrogramSettings settingsOf(const std::string &text)
{
    Norvu::Gui::SpectrogramSettings settings;
    if (!settings.fromString(text))
        qFatal("%s: wrong settings", text.c_str());
    return settings;
}

template <typename T>
Tellarix::Core::SmartPointer<Norvu::Gui::Spectrogram<T>> spectrogramOf(const std::string &text,
                                                                       double rate)
{
    auto *spectrogram = new Norvu::Gui::Spectrogram<T>(settingsOf(text));
    spectrogram->setSamplingFrequency(rate);
    return spectrogram;
}

/** Noise of all periods with a few bursts, about an offset. */
template <typename T>
std::vector<T> noise(int n, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> step;
    std::vector<T> samples;
    double slow = 0;
    for (int i = 0; i < n; ++i) {
        slow = 0.999 * slow + step(random);
        const double burst = i % 9000 < 300 ? 50.0 : 1.0;
        samples.push_back(static_cast<T>(700.0 + 3.0 * slow + burst * step(random)));
    }
    return samples;
}

template <typename T>
std::vector<T> matrixOf(const Norvu::Gui::Spectrogram<T> &spectrogram)
{
    const size_t size = size_t(spectrogram.columns()) * size_t(spectrogram.rows());
    return {spectrogram.data(), spectrogram.data() + size};
}
