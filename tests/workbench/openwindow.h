// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "mainwindow.h"
#include "waveforms/waveforms.h"
#include "waveformtesting.h"

namespace WaveformTesting {

/** A shown window of the files given, all of which are there. */
struct OpenWindow
{
    explicit OpenWindow(const QStringList &files)
        : waveforms(window.findChild<Workbench::Waveforms *>()), view(waveforms->view())
    {
        window.setInteractive(false);
        window.show();
        openAll(window, *window.bench(), files);
    }

    Gui::RecordWidget *row(int index) const { return view->itemAt(index)->recordWidget(); }
    bool isIdle() { return window.bench()->tasks()->running().isEmpty(); }

    Workbench::MainWindow window;
    Workbench::Waveforms *waveforms;
    TraceView *view;
};

} // namespace WaveformTesting
