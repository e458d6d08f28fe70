// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QWidget>

namespace Workbench {

/** A name at the left end of a row's traces, which it follows in height. */
class RowName : public QWidget
{
    Q_OBJECT

public:
    /** @param traces  owns the name */
    explicit RowName(QWidget *traces);

    const QString &text() const { return _text; }
    void setText(const QString &text);

    /** A text at the right end, empty for none. */
    void setDelay(const QString &delay, bool isPale);

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    int delayWidth() const;

    QString _text;
    QString _delay;
    bool _pale{false};
};

} // namespace Workbench
