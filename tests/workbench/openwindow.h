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

    /** Opens one more file, and waits until it is there. */
    void open(const QString &file) { openAll(window, *window.bench(), {file}); }
    Gui::RecordWidget *row(int index) const { return view->itemAt(index)->recordWidget(); }
    bool isIdle() { return window.bench()->tasks()->running().isEmpty(); }

    Workbench::MainWindow window;
    Workbench::Waveforms *waveforms;
    TraceView *view;
};

constexpr double Minute = 60;
constexpr double Year = 365 * 86400;

/** Files of saw teeth, in a folder that is that of the settings too. */
class Recordings
{
public:
    Recordings()
    {
        qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit());
        write("first.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ"}, {0, Year});
    }

    const QTemporaryDir &folder() const { return _folder; }
    /** Two streams with two minutes of data, and two more after a year. */
    QString first() const { return _folder.filePath("first.mseed"); }
    QString write(const QString &name, const QStringList &streams, const QVector<double> &starts,
                  double rate = 20, double seconds = 2 * Minute) const
    {
        std::vector<RecordCPtr> records;
        for (const QString &stream : streams) {
            for (const double start : starts)
                records.push_back(
                    sawTooth(stream.toStdString(), start, rate, static_cast<int>(seconds * rate)));
        }
        return writeRecords(_folder.filePath(name), records);
    }

private:
    QTemporaryDir _folder;
};

} // namespace WaveformTesting
