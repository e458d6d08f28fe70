#pragma once

#include <norvu/gui/spectrogram.h>

#include <QtGlobal>

#include <string>

/** The settings that a text like "freqs(1,4,2,3)" stands for. */
inline Norvu::Gui::SpectrogramSettings settingsOf(const std::string &text)
{
    Norvu::Gui::SpectrogramSettings settings;
    if (!settings.fromString(text))
        qFatal("%s: wrong settings", text.c_str());
    return settings;
}
