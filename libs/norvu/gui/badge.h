// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QColor>
#include <QLabel>
#include <QString>

namespace Norvu {
namespace Gui {

/**
 * A rounded label for a short tag or a count, white on grey unless told otherwise.
 *
 * Letters are a tenth smaller than the application's, unless the badge has a font of its own.
 */
class NORVU_GUI_API Badge : public QLabel
{
    Q_OBJECT

public:
    explicit Badge(QWidget *parent = nullptr);
    explicit Badge(QString text, QWidget *parent = nullptr);

    QSize sizeHint() const override;

    /**
     * Fills the badge with @p color.
     *
     * @param adjustTextColor  makes the text black on a bright colour and white on a dark one;
     *                         otherwise the text keeps its colour
     */
    void setColor(const QColor &color, bool adjustTextColor = false);
    void setTextColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setUp();
};

} // namespace Gui
} // namespace Norvu
