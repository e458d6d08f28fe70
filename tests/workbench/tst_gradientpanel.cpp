// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/gradientpicture.h"
#include "spectrograms/gradientbox.h"
#include "spectrograms/gradientpanel.h"
#include "spectrograms/gradientsheet.h"

#include "norvu/gradienttesting.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/gradientwidget.h>

#include <QCheckBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QSettings>
#include <QToolButton>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <iterator>

using namespace Workbench;
using Norvu::Gui::GradientWidget;
using Norvu::Gui::Gradients::Registry;
using namespace GradientTesting;

namespace {

const QColor SeeThrough(0, 0, 255, 0);

/** A panel, the number of its changes and what a user does with it. */
struct Bench
{
    Bench() : changes(&panel, SIGNAL(changed()))
    {
        panel.resize(600, 300);
        panel.show();
        box = panel.findChild<GradientBox *>();
        bar = panel.findChild<GradientWidget *>();
        key = panel.findChild<QLineEdit *>("editKey");
        interpolation = panel.findChild<QCheckBox *>("checkInterpolation");
    }

    void clickStop(int index, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        const Gradient &gradient = panel.gradient();
        clickHandle(*bar, gradient, std::next(gradient.constBegin(), index).key(), modifiers);
        QCoreApplication::processEvents();
    }
    void enterKey(const QString &text) const
    {
        key->setText(text);
        QTest::keyClick(key, Qt::Key_Return);
    }
    QString hint() const
    {
        QStringList texts;
        for (const QLabel *label : panel.findChildren<QLabel *>())
            texts.append(label->text());
        return texts.join('\n');
    }

    GradientPanel panel;
    GradientBox *box{nullptr};
    GradientWidget *bar{nullptr};
    QLineEdit *key{nullptr};
    QCheckBox *interpolation{nullptr};
    QSignalSpy changes;
};

} // namespace

class TestGradientPanel : public QObject
{
    Q_OBJECT

private slots:
    void picturesShowColors()
    {
        const Gradient two = gradientOf({{0, Qt::red}, {1, Qt::blue}});
        const Gradient wide = gradientOf({{-1e308, Qt::red}, {1e308, Qt::blue}});
        const struct
        {
            Gradient gradient;
            bool discrete;
            PictureEnd end;
            QColor left, middle, right;
        } cases[] = {
            {two, false, PictureEnd::LastStep, Qt::red, QColor(127, 0, 128), Qt::blue},
            {two, true, PictureEnd::LastStep, Qt::red, Qt::blue, Qt::blue},
            {two, true, PictureEnd::LastKey, Qt::red, Qt::red, Qt::blue},
            {wide, true, PictureEnd::LastKey, Qt::red, Qt::red, Qt::blue},
            {gradientOf({{3, Qt::red}}), true, PictureEnd::LastStep, Qt::red, Qt::red, Qt::red},
        };
        for (const auto &row : cases) {
            for (const int ratio : {1, 2}) {
                const QImage image = gradientPicture(row.gradient, row.discrete, QSize(123, 20),
                                                     ratio, QPalette(), row.end)
                                         .toImage();
                QCOMPARE(image.size(), QSize(123, 20) * ratio);
                const auto colorAt = [&](int x) { return image.pixelColor(x * ratio, 10 * ratio); };
                QCOMPARE(colorAt(1), row.left);
                QVERIFY(qAbs(colorAt(62).red() - row.middle.red()) < 4);
                QVERIFY(qAbs(colorAt(62).blue() - row.middle.blue()) < 4);
                QCOMPARE(image.pixelColor(122 * ratio - 1, 10 * ratio), row.right);
            }
        }
    }

    void emptyAndTransparentPicturesShowCheckerboard()
    {
        const QPalette light(Qt::lightGray);
        for (const Gradient &gradient : {Gradient(), gradientOf({{0, SeeThrough}})}) {
            const QImage image =
                gradientPicture(gradient, false, QSize(40, 20), 1, light).toImage();
            QSet<QRgb> shades;
            for (int x = 1; x < 39; ++x)
                shades.insert(image.pixel(x, 10));
            QCOMPARE(shades.size(), 2);
        }
        QVERIFY(gradientPicture(Gradient(), false, QSize(0, 20), 1, light).isNull());
        QVERIFY(!gradientPicture(Gradient(), false, QSize(1, 1), 1, light).isNull());
    }

    void boxTellsChoicesOfReadyMadeGradientsOnly()
    {
        GradientBox box;
        QCOMPARE(box.gradientName(), QString("Viridis"));
        QSignalSpy chosen(&box, SIGNAL(gradientChosen(QString)));
        QSignalSpy edited(&box, SIGNAL(editedChosen()));
        const Gradient mine = gradientOf({{0, Qt::red}, {1, Qt::blue}});

        box.setGradientName("Viridis");
        box.setGradientName("No such gradient");
        box.setEdited(mine, false);
        QVERIFY(box.gradientName().isEmpty());
        QCOMPARE(box.gradient(), mine);
        QVERIFY(chosen.isEmpty() && edited.isEmpty());

        box.setGradientName("Circle");
        QCOMPARE(chosen.takeFirst().first().toString(), QString("Circle"));
        QTest::keyClick(&box, Qt::Key_End);
        QCOMPARE(edited.size(), 1);
        QCOMPARE(box.gradient(), mine);
        QVERIFY(chosen.isEmpty());
        box.removeEdited();
        QCOMPARE(chosen.takeFirst().first().toString(), QString("Viridis"));
        QCOMPARE(box.count(), Registry.size());
    }

    void boxRedrawsItsPictures()
    {
        GradientBox box;
        const int seeThrough = box.findData("Default");
        const auto picture = [&](int index, QIcon::Mode mode = QIcon::Normal) {
            return box.itemIcon(index).pixmap(box.iconSize(), mode).toImage();
        };
        const QImage mixed = picture(seeThrough);
        QCOMPARE(picture(seeThrough, QIcon::Selected), mixed);
        box.setEdited(gradientOf({{0, Qt::red}}), true);
        const QImage steps = picture(seeThrough);
        QVERIFY(steps != mixed);
        const QImage red = picture(box.currentIndex());
        box.setEdited(gradientOf({{0, Qt::green}}), true);
        QVERIFY(picture(box.currentIndex()) != red);
        box.setPalette(QPalette(Qt::black));
        QVERIFY(picture(seeThrough) != steps);
    }

    void everyEditIsToldOnce()
    {
        const struct
        {
            std::function<void(const Bench &)> edit;
            QString name;
            int stops;
            int told = 1;
        } cases[] = {
            {[](const Bench &bench) {
                 bench.clickStop(3);
                 bench.enterKey(bench.key->text());
             },
             "Viridis", 11, 0},
            {[](const Bench &bench) {
                 bench.clickStop(3);
                 bench.enterKey("0.33");
             },
             "", 11},
            {[](const Bench &bench) { bench.clickStop(3, Qt::ControlModifier); }, "", 10},
            {[](const Bench &bench) {
                 bench.clickStop(3);
                 bench.clickStop(3, Qt::ControlModifier);
             },
             "", 10},
            {[](const Bench &bench) { bench.interpolation->click(); }, "Viridis", 11},
            {[](const Bench &bench) { bench.box->setGradientName("Default"); }, "Default", 6},
        };
        for (const auto &row : cases) {
            Bench bench;
            row.edit(bench);
            QCOMPARE(bench.changes.size(), row.told);
            QCOMPARE(bench.panel.gradientName(), row.name);
            QCOMPARE(bench.panel.gradient().size(), row.stops);
            QCOMPARE(bench.panel.isDiscrete(), !bench.interpolation->isChecked());
        }
    }

    void editedGradientComesBack()
    {
        Bench bench;
        bench.clickStop(3, Qt::ControlModifier);
        const Gradient edited = bench.panel.gradient();
        bench.panel.setGradientName("Circle");
        QVERIFY(bench.hint().contains("12"));
        QCOMPARE(bench.panel.gradient(), *Registry.value("Circle"));
        QTest::keyClick(bench.box, Qt::Key_End);
        QCOMPARE(bench.panel.gradient(), edited);
        QCOMPARE(bench.changes.size(), 3);
        // The editor goes on with what is chosen.
        bench.clickStop(0, Qt::ControlModifier);
        QCOMPARE(bench.panel.gradient().size(), edited.size() - 1);
    }

    void asksForStopOfEmptyGradient()
    {
        Bench bench;
        bench.panel.setGradientName("BlackWhite");
        bench.clickStop(0, Qt::ControlModifier);
        QVERIFY(!bench.hint().contains("double-click"));
        bench.clickStop(0, Qt::ControlModifier);
        QVERIFY(bench.panel.gradient().isEmpty());
        QCOMPARE(bench.changes.size(), 3);
        QVERIFY(bench.hint().contains("double-click"));
    }

    void settingsKeepChoiceAndEditedGradient()
    {
        const QTemporaryDir folder;
        const Gradient edited = gradientOf({{-1.0 / 3, QColor(1, 2, 3, 4)},
                                            {1e-12, SeeThrough},
                                            {7, Qt::red, "a \"tag\", with ; and é"}});
        for (const QString &name : {QString(), QString("PuRd")}) {
            QSettings settings(folder.filePath("kept.ini"), QSettings::IniFormat);
            {
                Bench bench;
                bench.box->setEdited(edited, true);
                bench.box->setGradientName(name);
                bench.panel.saveSettings(settings);
                settings.sync();
            }
            QSettings read(folder.filePath("kept.ini"), QSettings::IniFormat);
            Bench bench;
            bench.panel.restoreSettings(read);
            QCOMPARE(bench.changes.size(), 1);
            QCOMPARE(bench.panel.gradientName(), name);
            QVERIFY(bench.panel.isDiscrete() && !bench.interpolation->isChecked());
            bench.box->setCurrentIndex(bench.box->count() - 1);
            QCOMPARE(bench.panel.gradient(), edited);
            bench.panel.restoreSettings(read);
            QCOMPARE(bench.panel.gradientName(), name);
        }
    }

    void brokenSettingsFallBack()
    {
        const QString stops = "name=\nstops\\size=%1\nstops\\1\\key=%2\nstops\\1\\color=%3";
        const QTemporaryDir folder;
        int number = 0;
        for (const QString &text :
             {QString(), QString("name=Rainbow"), QString("name="),
              stops.arg("1", "nan", "#000000"), stops.arg("1", "inf", "#000000"),
              stops.arg("1", "low", "#000000"), stops.arg("1", "0", "#zz"),
              stops.arg("2", "0", "#000000"), stops.arg("2000000000", "0", "#000000")}) {
            QFile file(folder.filePath(QString::number(++number)));
            QVERIFY(file.open(QFile::WriteOnly));
            file.write("[gradient]\n" + text.toUtf8() + "\n");
            file.close();

            QSettings settings(file.fileName(), QSettings::IniFormat);
            Bench bench;
            bench.clickStop(3, Qt::ControlModifier);
            bench.panel.restoreSettings(settings);
            QVERIFY2(bench.panel.gradientName() == "Viridis", qPrintable(text));
            QCOMPARE(bench.box->count(), Registry.size());
        }
    }

    void fitsNarrowAndWideDocks()
    {
        QMainWindow window;
        window.setCentralWidget(new QWidget);
        auto *dock = new QDockWidget;
        auto *panel = new GradientPanel;
        dock->setWidget(panel);
        window.addDockWidget(Qt::RightDockWidgetArea, dock);
        window.resize(1400, 600);
        window.show();
        const auto *interpolation = panel->findChild<QCheckBox *>("checkInterpolation");
        const auto *list = panel->findChild<QToolButton *>("btnList");
        const auto top = [&](const QWidget *widget) { return widget->mapTo(panel, QPoint()).y(); };
        for (const int width : {280, 900, 280}) {
            window.resizeDocks({dock}, {width}, Qt::Horizontal);
            QTRY_COMPARE(panel->width(), width);
            QCoreApplication::processEvents();
            QVERIFY(interpolation->isVisible());
            QVERIFY(list->mapTo(panel, list->rect().bottomRight()).x() < width);
            QCOMPARE(qAbs(top(interpolation) - top(list)) < list->height(), width == 900);
        }
    }

    void sheetShowsAllColorsOfEveryGradient()
    {
        const QImage sheet = gradientSheet(QPalette(), 1).toImage();
        QVector<QSet<QRgb>> lines(sheet.height());
        for (int y = 0; y < sheet.height(); ++y) {
            for (int x = 0; x < sheet.width(); ++x)
                lines[y].insert(sheet.pixel(x, y));
        }
        for (const Gradient *gradient : Registry) {
            QSet<QRgb> colors;
            for (const auto &stop : *gradient) {
                if (stop.first.alpha() == 255)
                    colors.insert(stop.first.rgb());
            }
            QVERIFY(std::any_of(lines.cbegin(), lines.cend(),
                                [&](const auto &line) { return line.contains(colors); }));
        }
    }
};

QTEST_MAIN(TestGradientPanel)
#include "tst_gradientpanel.moc"
