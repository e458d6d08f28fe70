// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QColor>
#include <QFont>
#include <QString>
#include <QVector>
#include <QWidget>

namespace Tellarix {
namespace Gui {

/** A label beside a record widget that holds a number of texts, each with font, colour, width. */
class TELLARIX_GUI_API RecordLabel : public QWidget
{
    Q_OBJECT

public:
    struct Item
    {
        QString text;
        QFont font;
        QColor color;
        int width{-1}; /**< in pixels; negative for the width of the text */
    };

    explicit RecordLabel(int items = 3, QWidget *parent = nullptr, const char *name = nullptr);
    ~RecordLabel() override;

    int itemCount() const { return _items.size(); }
    /** Sets one item; the label grows to hold it, and a negative index does nothing. */
    void setText(const QString &text, int item = 0);
    void setFont(const QFont &font, int item);
    void setColor(const QColor &color, int item);
    void setWidth(int width, int item);
    QString text(int item = 0) const;
    const Item &item(int index) const { return _items[index]; }

    /** Whether the label's colours hold; a disabled label is drawn in grey. */
    bool isLabelEnabled() const { return _labelEnabled; }
    void setLabelEnabled(bool enable);

    /** The colour that an item is drawn in: its own, or the palette's, or grey when disabled. */
    QColor effectiveColor(int item) const;

protected:
    const QVector<Item> &labelItems() const { return _items; }

private:
    void resizeItems(int count);
    Item *itemToChange(int item);

    QVector<Item> _items;
    bool _labelEnabled{true};
};

/** Draws the items side by side in one line, each from the left. */
class TELLARIX_GUI_API StandardRecordLabel : public RecordLabel
{
    Q_OBJECT

public:
    explicit StandardRecordLabel(int items = 3, QWidget *parent = nullptr,
                                 const char *name = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Gui
} // namespace Tellarix
