// SPDX-License-Identifier: LGPL-3.0-or-later

#include "depthlegend.h"

#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>

using namespace Tellarix;

namespace Workbench {

namespace {

/** From the middle of a label to that of the next one. */
int rowHeight(const QFontMetrics &metrics)
{
    return metrics.height() + metrics.height() / 4;
}

} // namespace

DepthLegend::DepthLegend(QObject *parent) : Legend(parent)
{
    setTitle(tr("Depth (km)"));
    setAlignment(Qt::AlignRight | Qt::AlignBottom);
    const QFontMetrics metrics = QApplication::fontMetrics();
    const int rows = Gui::Scheme::Current().map.depthGradient.size();
    setSize(QSize(metrics.horizontalAdvance("0000") + 3 * metrics.height(),
                  rowHeight(metrics) * rows + metrics.height() / 2));
}

void DepthLegend::draw(const QRect &rect, QPainter &painter)
{
    const Gui::Scheme &scheme = Gui::Scheme::Current();
    const Gui::Gradient &gradient = scheme.map.depthGradient;
    if (gradient.isEmpty())
        return;

    const QFontMetrics metrics = painter.fontMetrics();
    const int margin = metrics.height() / 2;
    const int row = rowHeight(metrics);
    const int top = rect.top() + margin / 2 + row / 2;
    const QRect bar(rect.left() + margin, top, metrics.height(), row * (gradient.size() - 1) + 1);

    // Between two stops the bar is as long as between any others, so that labels never meet.
    QLinearGradient colors(bar.topLeft(), bar.bottomLeft());
    QVector<double> depths;
    for (auto stop = gradient.begin(); stop != gradient.end(); ++stop)
        depths.append(stop.key());
    for (int i = 0; i < depths.size(); ++i)
        colors.setColorAt(depths.size() > 1 ? double(i) / (depths.size() - 1) : 0,
                          gradient[depths[i]].first);
    painter.setPen(scheme.legend.border);
    painter.setBrush(colors);
    painter.drawRect(bar);

    painter.setPen(scheme.legend.text);
    for (int i = 0; i < depths.size(); ++i) {
        const QRect label(bar.right() + margin / 2, top + i * row - row / 2,
                          rect.right() - margin - bar.right() - margin / 2, row);
        painter.drawText(label, Qt::AlignRight | Qt::AlignVCenter, QString::number(depths[i]));
    }
}

} // namespace Workbench
