// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QTimer>
#include <QWidget>

class QAction;
class QToolButton;

namespace Workbench {

class HistoryBox;

/** All filters that are known, with their parameters and what they do, as rich text. */
QString filterHelp();

/**
 * An input for filters in their text form, with presets, the filters used last, and a switch.
 *
 * Return applies what was typed. A text that is no filter stays where it is, with the cursor at the
 * column where it goes wrong.
 */
class FilterBox : public QWidget
{
    Q_OBJECT

public:
    explicit FilterBox(QWidget *parent = nullptr);

    QString text() const;
    /** Where the text cursor stands, counted from 0. */
    int cursorPosition() const;
    /** The last text that was a filter. */
    const QString &appliedText() const { return _applied; }
    bool isFilterEnabled() const;
    /** The switch, for menus. */
    QAction *toggleAction() const { return _toggle; }
    /** Adds a button behind the input. */
    void addTool(QAction *action);
    /** Moves the keyboard focus into the input, for menus. */
    QAction *editAction() const { return _edit; }

    void restoreHistory();
    void saveHistory() const;

public slots:
    /** Puts a text in and applies it. */
    void apply(const QString &text);
    /** Puts one of many texts in that follow each other quickly, and applies it; the last one goes
     *  to those used last when no other has come for a moment. */
    void adjust(const QString &text, int cursorPosition);
    /** What the filter doesn't fit, in a box that turns red; nothing for a filter that fits. */
    void showMisfits(const QStringList &messages);

signals:
    /** Another valid filter, in its text form; empty for none. */
    void filterChanged(const QString &text);
    /** Likewise, but others may follow at once. */
    void filterAdjusted(const QString &text);
    /** Text or text cursor are others. */
    void edited();
    void filterEnabled(bool enabled);
    /** The user is through with the input. */
    void left();
    /** Why a text is no filter; empty when it is one. */
    void problem(const QString &message);

private slots:
    void edit();
    void enter();
    void noteEdit();
    void rememberAdjusted();
    void showProblem(int column, const QString &message);

private:
    bool applyText();

    HistoryBox *_input;
    QToolButton *_switch;
    QAction *_toggle;
    QAction *_edit;
    QString _applied;
    QTimer _adjusted; /**< runs until a text has stood for a moment */
    bool _isFilling{false};
};

} // namespace Workbench
