// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QTabWidget>
#include <QVector>

namespace Norvu {
namespace Gui {

/**
 * A tab widget whose tabs can be torn off into windows of their own. Closing such a window, which
 * F11 shows in full screen, brings its page back to its place among the tabs.
 *
 * The widget keeps a list of its pages, attached or detached, in the order of the tabs. It hides
 * while none of its pages has a tab and deletes its detached pages with itself. The operations on
 * tabs shadow those of the base class, which don't know that list: always call these.
 */
class NORVU_GUI_API TabWidget : public QTabWidget
{
    Q_OBJECT

public:
    explicit TabWidget(QWidget *parent = nullptr);
    ~TabWidget() override;

    // Null is no page: it is left alone.

    /** Makes a window of a page that returns as the last tab when it is closed; until then it is
     *  not in the list. Nothing happens to a page of the list. */
    void addWidget(QWidget *page);
    /**
     * Adds a page to the list as a detached window, which the caller shows.
     * @param index  place in the list; outside of it the page goes to its end
     * @return the place; -1 if the page is null or in the list already
     */
    int insertWidget(int index, QWidget *page);
    /** Takes a page out of the list. One with a tab is the caller's again, a detached one is
     *  deleted. */
    void removeWidget(QWidget *page);

    /** Number of pages, attached or detached. */
    int widgetCount() const { return _widgets.count(); }
    /** The page at a place of the list, from 0 to widgetCount() - 1. */
    QWidget *widgetAt(int index) const { return _widgets[index]; }
    /** Place of a page in the list from place @p from on, -1 if it isn't there. */
    int indexOfWidget(QWidget *page, int from = 0) const { return _widgets.indexOf(page, from); }

    /** Adds a page, or moves one of the list, to the end; attached() tells of one that was
     *  detached. @return index of the tab, -1 for null */
    int addTab(QWidget *page, const QString &label);
    int addTab(QWidget *page, const QIcon &icon, const QString &label);
    /** Inserts a page before the tab at @p index; as addTab() if there is no such tab. Emits
     *  nothing otherwise. @return index of the tab */
    int insertTab(int index, QWidget *page, const QString &label);
    int insertTab(int index, QWidget *page, const QIcon &icon, const QString &label);

    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    /** Makes a window of the page with the tab at @p index, with its upper edge centred below
     *  @p position, in global coordinates; without such a tab nothing happens. Receivers of
     *  detached() may delete the page and the tab widget. */
    void detach(int index, const QPoint &position);
    /** Exchanges the pages at two places of the list, if there are such; called when a tab is
     *  moved. */
    void updateIndices(int from, int to);

signals:
    void detached(QWidget *page);
    /** A page has got its tab back. One that returns to the end is announced by addTab() and by
     *  its closing window. */
    void attached(QWidget *page);

private slots:
    void forgetPage(QObject *page);

private:
    bool hasTab(QWidget *page) const { return indexOf(page) >= 0; }
    void makeWindow(QWidget *page);
    void unmakeWindow(QWidget *page);
    void insertPage(int index, QWidget *page);
    void takePage(QWidget *page);
    int returnIndex(int place) const;
    void takeBack(QWidget *page);

    QVector<QWidget *> _widgets;
    bool _isEnding{false};
};

} // namespace Gui
} // namespace Norvu
