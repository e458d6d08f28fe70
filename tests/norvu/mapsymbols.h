// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "ownscheme.h"

#include <norvu/gui/map/annotatedsymbol.h>

#include <tellarix/qt/map/canvas.h>

#include <QPainter>
#include <QStringList>
#include <QtTest>

#include <memory>

/** Helpers of tests of the map's layers. */
namespace MapTesting {

using Tellarix::Gui::Map::Canvas;

/** Nothing below the layers. */
struct WhitePaper : Tellarix::Gui::Map::BackgroundPainter
{
    void paint(QImage &image, const Tellarix::Gui::Map::Projection &) const override
    {
        image.fill(Qt::white);
    }
};

/** A white map of 300 x 200 pixels, 10 of which are a degree; its centre is pixel (150, 100). */
struct TenPerDegree : Canvas
{
    TenPerDegree()
    {
        setSize(QSize(300, 200));
        setView(QPointF(0, 0), 10);
        setBackground(std::make_shared<WhitePaper>());
        picture();
    }

    QImage picture()
    {
        QImage image(size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        draw(painter);
        return image;
    }
};

/** A square of 20 pixels about its place that writes down what happens to it. */
class Recorder : public Norvu::Gui::Map::AnnotatedSymbol
{
public:
    Recorder(const QString &name, double longitude, double latitude, QStringList *log = nullptr)
        : AnnotatedSymbol(longitude, latitude), _name(name), _log(log)
    {
        setSize(QSize(20, 20));
    }
    ~Recorder() override { write("~"); }

    bool isInside(int x, int y) const override
    {
        return qAbs(x - _position.x()) <= 10 && qAbs(y - _position.y()) <= 10;
    }
    void drawShadow(QPainter &) override { write("shadow "); }
    const QString &name() const { return _name; }

protected:
    void customDraw(const Canvas *canvas, QPainter &painter) override
    {
        AnnotatedSymbol::customDraw(canvas, painter);
        write("draw ");
    }

private:
    void write(const char *what)
    {
        if (_log)
            _log->append(what + _name);
    }

    QString _name;
    QStringList *_log;
};

} // namespace MapTesting
