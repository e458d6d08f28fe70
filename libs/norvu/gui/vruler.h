// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/records/ruler.h>

#include <QString>

#include <utility>

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

/**
 * An amplitude scale left of a record widget, or right of it by its position, with short texts at
 * its ticks and an annotation, such as a unit, that reads upwards along its outer edge. It shows -1
 * to 1 at the start.
 */
class NORVU_GUI_API VRuler : public Tellarix::Gui::Ruler
{
    Q_OBJECT

public:
    explicit VRuler(QWidget *parent = nullptr, Qt::WindowFlags f = Qt::WindowFlags());
    ~VRuler() override;

    /** Sets the text along the ruler; the next repaint shows it. */
    void setAnnotation(QString annotation) { _annotation = std::move(annotation); }
    const QString &annotation() const { return _annotation; }

    QSize sizeHint() const override;

    /** Text of a tick, only for line 0: two digits above 1000, one decimal above 1, and a clean 0
     *  within a hundredth of the tick distance. */
    bool getTickText(double value, double nextValue, int line, QString &text) const override;

public slots:
    /**
     * Takes over the amplitude range that @p widget shows, scaled if the widget shows scaled
     * values and so upside down where the widget's axis is, and lays the widget's horizontal grid
     * on the ticks. Of overlaid slots the last visible one with a range that isn't empty decides;
     * without any the range is (0, 0).
     */
    void updateScale(Tellarix::Gui::RecordWidget *widget);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString _annotation;
};

} // namespace Gui
} // namespace Norvu
