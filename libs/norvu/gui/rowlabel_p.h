// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QLabel>

namespace Norvu {
namespace Gui {

/**
 * The name of a row in bold letters, with a description behind it that may be cut short.
 *
 * text() has both as rich text. They are measured and painted without a document, which took most
 * of the time of a row that is added to a view, unless they have markup of their own.
 */
class RowLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    /** @param text  both with their markup */
    void setTexts(const QString &text, const QString &name, const QString &description);
    void copyTexts(const RowLabel &other);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool hasMarkup() const { return textFormat() != Qt::PlainText; }
    QFont nameFont() const;
    int nameWidth() const;
    int textHeight() const;

    QString _name;
    QString _description;
};

} // namespace Gui
} // namespace Norvu
