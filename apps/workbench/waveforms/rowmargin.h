// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QWidget>

namespace Norvu {
namespace Gui {
class Trace;
class VRuler;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowAddition;

/** What stands at the right of a row's traces: an amplitude ruler, and the scale of what is added
 * to the row. */
class RowMargin : public QWidget
{
    Q_OBJECT

public:
    /** @param row  which will own the margin */
    explicit RowMargin(Norvu::Gui::Trace *row);

    void setRulerShown(bool show);
    /** Whether the ruler is drawn where it stands: not while heights beside it are no amplitudes.
     */
    void setRulerUsed(bool used);
    /** Room for the scale of an addition; null for none. */
    void setScaleOf(RowAddition *addition);
    /** What the scale needs; 0 without one. */
    int scaleWidth() const;
    /** Gives the scale as much room as those of other rows have. */
    void setScaleWidth(int width);

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void updateRuler();

private:
    void placeRuler();
    void addRuler();

    Norvu::Gui::Trace *_row;
    QWidget *_rulerColumn{nullptr}; /**< the ruler with room above, to the height of the traces */
    Norvu::Gui::VRuler *_ruler{nullptr};
    bool _rulerUsed{true};
    QWidget *_scale{nullptr};
};

} // namespace Workbench
