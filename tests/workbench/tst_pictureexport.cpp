// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/pictureexport.h"
#include "waveformtesting.h"

#include <norvu/gui/multitracewidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QPainter>
#include <QSvgRenderer>

using namespace Workbench;
using namespace WaveformTesting;

namespace {

constexpr int RowCount = 30;

/** A view that is far too low for its rows; the last trace is red. */
class View : public TraceView
{
public:
    View()
    {
        setMinimumRowHeight(40);
        resize(500, 200);
        for (int i = 0; i < RowCount; ++i)
            addRow(*this, {sawTooth("XX.S" + std::to_string(i) + "..HHZ", 0, 10, 600)});
        lastRow()->recordWidget()->setRecordPen(0, QPen(Qt::red));
        show();
        setAlignment(Start);
        setTimeRange(0, 60);
        QCoreApplication::processEvents();
    }

    Trace *lastRow() const { return itemAt(count() - 1); }
};

/** A picture that was written, as an image of the size that pictureOf() gives. */
QImage written(const QString &file, const QSize &size)
{
    if (!file.endsWith(".svg"))
        return QImage(file).convertToFormat(QImage::Format_RGB32);

    QSvgRenderer renderer(file);
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

bool isReddish(QRgb pixel)
{
    return qRed(pixel) > qGreen(pixel) + 100 && qRed(pixel) > qBlue(pixel) + 100;
}

QRect redArea(const QImage &image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isReddish(image.pixel(x, y)))
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

/** The traces of the last row as they stand in a picture of @p size, a pixel more all around. */
QRect lastCanvas(const View &view, const QSize &size)
{
    constexpr int Margin = 8;
    const Trace *row = view.lastRow();
    const Gui::RecordWidget *widget = row->recordWidget();
    const int top =
        size.height() - Margin - view.timeScale()->height() - Trace::Spacing() - row->height();
    return widget->canvasRect()
        .translated(widget->mapTo(row, QPoint()) + QPoint(Margin, top))
        .adjusted(-1, -1, 1, 1);
}

} // namespace

class TestPictureExport : public QObject
{
    Q_OBJECT

private slots:
    void drawsRowsOutOfSight()
    {
        View view;
        QString error;
        const QSize size = pictureOf(view, &error).size();
        QVERIFY(size.height() > RowCount * 40);
        for (const char *name : {"all.svg", "ALL.PNG"}) {
            QVERIFY2(writePicture(view, path(name), &error), qPrintable(error));
            const QImage image = written(path(name), size);
            QCOMPARE(image.size(), size);
            QCOMPARE(image.pixelColor(2, 2), QColor(Qt::white));
            const QRect canvas = lastCanvas(view, size);
            const QRect red = redArea(image);
            QVERIFY(canvas.contains(red));
            QVERIFY(red.width() > canvas.width() - 10);
            QVERIFY(red.height() > canvas.height() / 2);
        }
    }

    void keepsTracesInTheirRows()
    {
        View view;
        view.lastRow()->recordWidget()->setMagnification(20);
        // Lines, and spans of dense samples.
        for (const double seconds : {2.0, 600.0}) {
            view.setTimeRange(0, seconds);
            QCoreApplication::processEvents();
            QString error;
            const QSize size = pictureOf(view, &error).size();
            QVERIFY2(writePicture(view, path("large.svg"), &error), qPrintable(error));
            const QRect red = redArea(written(path("large.svg"), size));
            QVERIFY(!red.isEmpty());
            QVERIFY(lastCanvas(view, size).contains(red));
        }
    }

    void drawsOverviewInPlaceOfRows()
    {
        View view;
        auto *overview = new Norvu::Gui::MultiTraceWidget(&view);
        overview->setActive(true);
        QCoreApplication::processEvents();
        QString error;
        const QImage picture = pictureOf(view, &error);
        QVERIFY(picture.height() < RowCount * 40);
        const QImage drawn = overview->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QPoint place(8, picture.height() - 8 - view.timeScale()->height() - Trace::Spacing() -
                                  overview->height());
        QCOMPARE(redArea(picture), redArea(drawn).translated(place));
    }

    void writesPageOfPdf()
    {
        View view;
        QString error;
        QVERIFY2(writePicture(view, path("all.pdf"), &error), qPrintable(error));
        const QByteArray content = contentOf(path("all.pdf"));
        QVERIFY(content.startsWith("%PDF-"));
        QVERIFY(content.contains("/Count 1"));
    }

    void namesFileAndCause()
    {
        QVERIFY(QDir(_folder.path()).mkpath("folder.svg"));
        const QPair<QString, QString> cases[] = {{path("some.gif"), ".png"},
                                                 {path("some"), ".png"},
                                                 {path("missing/some.png"), "No such file"},
                                                 {path("folder.svg"), "directory"}};
        View view;
        for (const auto &[file, cause] : cases) {
            QString error;
            QVERIFY(!writePicture(view, file, &error));
            QVERIFY2(error.startsWith(file + ": ") && error.contains(cause), qPrintable(error));
            QVERIFY(!QFileInfo(file).isFile());
        }
    }

    void keepsOldFileWhenDiskIsFull()
    {
        View view;
        for (const char *name : {"old.png", "old.svg", "old.pdf"}) {
            const QString file = writeText(path(name), "old picture");
            QVERIFY(!file.isEmpty());
            QString error;
            {
                const FullDisk limit(1000);
                QVERIFY(!writePicture(view, file, &error));
            }
            QVERIFY2(error.startsWith(file + ": "), qPrintable(error));
            QCOMPARE(contentOf(file), QByteArray("old picture"));
            QVERIFY(writePicture(view, file, &error));
            QVERIFY(contentOf(file).size() > 1000);
        }
        // Nothing half-written is left beside them.
        QCOMPARE(QDir(_folder.path()).entryList({"old*"}, QDir::Files).size(), 3);
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }

    QTemporaryDir _folder;
};

QTEST_MAIN(TestPictureExport)
#include "tst_pictureexport.moc"
