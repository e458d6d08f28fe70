// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tracelabel.h"

#include <QPainter>

#include <algorithm>

namespace Norvu {
namespace Gui {

namespace {

constexpr int LargestGap = 4;
constexpr int FirstSingleItem = 4;

bool endsRow(int item)
{
    return item == 1 || item == 3 || item >= FirstSingleItem;
}

} // namespace

TraceLabel::TraceLabel(int items, QWidget *parent, const char *name)
    : StandardRecordLabel(items, parent, name)
{}

bool TraceLabel::hasText(int index) const
{
    return index < itemCount() && !item(index).text.isEmpty();
}

int TraceLabel::rowCount() const
{
    int rows = hasText(2) && hasText(3) ? 2 : 1;
    for (int i = FirstSingleItem; i < itemCount(); ++i)
        rows += hasText(i) ? 1 : 0;
    return rows;
}

void TraceLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int rows = rowCount();
    const int fontSize = std::min(painter.fontMetrics().ascent(), height() / rows);
    if (fontSize < 1)
        return;

    const int gap = std::min(LargestGap, (height() - fontSize * rows) / (rows + 1));
    int x = 0;
    int y = (height() - (rows + 1) * gap - fontSize * rows) / 2;
    for (int i = 0; i < itemCount(); ++i) {
        if (!hasText(i))
            continue;

        QFont font = item(i).font;
        font.setPixelSize(fontSize);
        painter.setFont(font);
        painter.setPen(effectiveColor(i));
        // Descenders reach out of a rectangle as high as the letters.
        painter.drawText(QRect(x, y, width(), fontSize),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, item(i).text);

        if (endsRow(i)) {
            x = 0;
            y += gap + fontSize;
        } else {
            x += item(i).width >= 0 ? item(i).width
                                    : painter.fontMetrics().boundingRect(item(i).text).width();
        }
    }
}

} // namespace Gui
} // namespace Norvu
