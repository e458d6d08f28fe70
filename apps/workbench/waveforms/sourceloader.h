// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/tracefileloader.h>

#include <string>

namespace Workbench {

class RowAddition;

/** Loads all streams of a file or record stream URL, with a row for each stream. */
class SourceLoader : public Norvu::Gui::TraceFileLoader
{
    Q_OBJECT

public:
    /**
     * @param source    URL, or name of a file
     * @param addition  makes the traces of rows; may be null
     */
    SourceLoader(const std::string &source, const RowAddition *addition);

    /** False, with the reason, if the source can't be opened; nobody is told otherwise. */
    bool isUsable(QString *error) const;
    /** Records with samples that arrived so far. */
    int waveformCount() const { return _waveformCount; }
    /** Records of text, which no row can show. */
    int textCount() const { return _textCount; }

protected slots:
    void receivedRecord(Tellarix::Record *record) override;

protected:
    Norvu::Gui::Trace *makeRow(const QString &label) const override;

private:
    std::string _source;
    const RowAddition *_addition;
    int _waveformCount{0};
    int _textCount{0};
};

} // namespace Workbench
