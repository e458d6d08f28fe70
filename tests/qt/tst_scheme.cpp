// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QPainter>
#include <QtTest>

using namespace Tellarix::Gui;

namespace {

QPalette palette(const QColor &base, const QColor &text)
{
    QPalette result(text, base.darker(105), base.lighter(120), base.darker(200), base.darker(150),
                    text, text, base, base.darker(105));
    result.setColor(QPalette::Highlight, QColor(48, 120, 200));
    return result;
}

} // namespace

class SchemeTest : public QObject
{
    Q_OBJECT

private slots:
    void canBeReadOnAnyPalette()
    {
        QVERIFY(std::abs(contrastRatio(Qt::red, Qt::white) - 4) < 0.01);
        checkPalette(Qt::white, Qt::black, false);
        checkPalette(QColor(30, 30, 34), QColor(230, 230, 230), true);
        checkPalette(QColor(244, 232, 208), QColor(60, 40, 20), false);
        checkPalette(QColor(0, 20, 90), QColor(200, 220, 255), true);
    }

private:
    static void checkPalette(const QColor &base, const QColor &text, bool isDark)
    {
        const Scheme scheme(palette(base, text));
        QCOMPARE(scheme.isDark(), isDark);
        for (const QColor &color :
             {scheme.records.foreground, scheme.records.alternateForeground, scheme.records.marker,
              scheme.origins.automatic, scheme.origins.manual, scheme.legend.text})
            QVERIFY2(contrastRatio(color, base) >= 4.49, qPrintable(color.name()));
        for (const QColor &color : {scheme.records.alignment, scheme.records.cursor,
                                    scheme.records.frame.color(), scheme.legend.border})
            QVERIFY2(contrastRatio(color, base) >= 3, qPrintable(color.name()));

        const auto contrastOf = [&base](const QPen &pen) {
            QImage image(1, 1, QImage::Format_RGB32);
            image.fill(base);
            QPainter(&image).fillRect(image.rect(), pen.color());
            return contrastRatio(image.pixelColor(0, 0), base);
        };
        const double major = contrastOf(scheme.records.gridMajor);
        const double minor = contrastOf(scheme.records.gridMinor);
        QVERIFY(minor > 1.05 && minor < major && major < 3);
    }
};

QTEST_MAIN(SchemeTest)
#include "tst_scheme.moc"
