// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/tabwidget.h>

#include <norvu/gui/tabbar.h>

#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>

#include <utility>

namespace Norvu {
namespace Gui {

namespace {

/** Distance of a torn off page from the pointer, in pixels. */
constexpr int DropDistance = 10;

void toggleFullScreen(QWidget *page)
{
    if (page->isFullScreen())
        page->showNormal();
    else
        page->showFullScreen();
}

bool isOnSecondaryScreen(const QPoint &position)
{
    const QScreen *screen = QGuiApplication::screenAt(position);
    return screen && screen != QGuiApplication::primaryScreen();
}

} // namespace

TabWidget::TabWidget(QWidget *parent) : QTabWidget(parent)
{
    auto *bar = new TabBar(this);
    setTabBar(bar);
    setMovable(true);
    connect(bar, SIGNAL(tabMoved(int, int)), this, SLOT(updateIndices(int, int)));
    connect(bar, SIGNAL(detachRequested(int, QPoint)), this, SLOT(detach(int, QPoint)));
}

TabWidget::~TabWidget()
{
    // Nothing is torn off any more. A page that goes may take another one along.
    _isEnding = true;
    while (!_widgets.isEmpty()) {
        QWidget *page = _widgets.takeFirst();
        disconnect(page, nullptr, this, nullptr);
        if (hasTab(page))
            continue;
        page->removeEventFilter(this);
        page->setParent(nullptr);
        delete page;
    }
}

void TabWidget::makeWindow(QWidget *page)
{
    page->installEventFilter(this);
    page->setWindowFlags(Qt::Window);
}

void TabWidget::unmakeWindow(QWidget *page)
{
    page->removeEventFilter(this);
    page->setWindowFlags(Qt::WindowFlags());
}

void TabWidget::insertPage(int index, QWidget *page)
{
    _widgets.insert(index, page);
    // Hosts may delete pages by themselves.
    connect(page, SIGNAL(destroyed(QObject *)), this, SLOT(forgetPage(QObject *)),
            Qt::UniqueConnection);
}

void TabWidget::takePage(QWidget *page)
{
    _widgets.removeOne(page);
    disconnect(page, SIGNAL(destroyed(QObject *)), this, SLOT(forgetPage(QObject *)));
}

void TabWidget::forgetPage(QObject *page)
{
    // Only the address is looked at: the page is no widget any more.
    _widgets.removeOne(static_cast<QWidget *>(page));
}

void TabWidget::addWidget(QWidget *page)
{
    if (page && !_widgets.contains(page))
        makeWindow(page);
}

int TabWidget::insertWidget(int index, QWidget *page)
{
    if (!page || _widgets.contains(page))
        return -1;

    if (index < 0 || index >= _widgets.size())
        index = _widgets.size();
    makeWindow(page);
    insertPage(index, page);
    return index;
}

void TabWidget::removeWidget(QWidget *page)
{
    if (!_widgets.contains(page))
        return;

    takePage(page);
    const int tab = indexOf(page);
    if (tab >= 0) {
        removeTab(tab);
        return;
    }
    page->removeEventFilter(this);
    page->setParent(nullptr);
    delete page;
}

int TabWidget::addTab(QWidget *page, const QString &label)
{
    return addTab(page, QIcon(), label);
}

int TabWidget::addTab(QWidget *page, const QIcon &icon, const QString &label)
{
    if (!page)
        return -1;

    const QPointer<TabWidget> alive(this);
    const QPointer<QWidget> present(page);
    const bool isKnown = _widgets.contains(page);
    const bool wasDetached = isKnown && !hasTab(page);
    if (isKnown)
        takePage(page);
    insertPage(_widgets.size(), page);
    // Also a page of addWidget(), which the list does not know.
    page->removeEventFilter(this);
    if (wasDetached)
        unmakeWindow(page);
    const int tab = QTabWidget::addTab(page, icon, label);
    if (wasDetached && alive && present)
        emit attached(page);
    return tab;
}

int TabWidget::insertTab(int index, QWidget *page, const QString &label)
{
    return insertTab(index, page, QIcon(), label);
}

int TabWidget::insertTab(int index, QWidget *page, const QIcon &icon, const QString &label)
{
    if (!page || index < 0 || index >= count())
        return addTab(page, icon, label);

    // A page that has a tab already leaves it first, by which those behind it move up.
    const int present = indexOf(page);
    QWidget *next = widget(present >= 0 && present <= index ? index + 1 : index);
    if (_widgets.contains(page)) {
        takePage(page);
        if (present < 0)
            unmakeWindow(page);
    }
    page->removeEventFilter(this);
    const int place = _widgets.indexOf(next);
    insertPage(place < 0 ? _widgets.size() : place, page);
    return icon.isNull() ? QTabWidget::insertTab(index, page, label)
                         : QTabWidget::insertTab(index, page, icon, label);
}

void TabWidget::detach(int index, const QPoint &position)
{
    const QPointer<QWidget> page(widget(index));
    if (!page || _isEnding)
        return;

    const QString title = tabText(index);
    const QIcon icon = tabIcon(index);
    const QSize size = page->size();
    const QPointer<TabWidget> alive(this);
    removeTab(index);
    if (alive && count() == 0)
        hide();
    // The tabs that are left tell of a new current one.
    if (!alive || !page || hasTab(page))
        return;

    makeWindow(page);
    page->setGeometry(QRect(position - QPoint(size.width() / 2, -DropDistance), size));
    page->setWindowTitle(title);
    page->setWindowIcon(icon);
    if (isOnSecondaryScreen(position))
        page->showMaximized();
    page->show();
    if (alive && page)
        emit detached(page);
}

void TabWidget::updateIndices(int from, int to)
{
    const int size = _widgets.size();
    if (from < 0 || from >= size || to < 0 || to >= size)
        return;

    std::swap(_widgets[from], _widgets[to]);
}

bool TabWidget::eventFilter(QObject *watched, QEvent *event)
{
    auto *page = qobject_cast<QWidget *>(watched);
    if (page && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_F11) {
        toggleFullScreen(page);
        return true;
    }
    if (page && event->type() == QEvent::Close) {
        event->ignore();
        takeBack(page);
        return true;
    }
    return QTabWidget::eventFilter(watched, event);
}

/** Index at which a page gets its tab back: its place in the list less that of pages before it
 *  which have no tab, up to the nearest one that stands further left among the tabs. */
int TabWidget::returnIndex(int place) const
{
    for (; place >= 1; --place) {
        const int previousTab = indexOf(_widgets[place - 1]);
        if (previousTab >= 0 && place > previousTab)
            break;
    }
    return place;
}

void TabWidget::takeBack(QWidget *page)
{
    const QPointer<TabWidget> alive(this);
    const QPointer<QWidget> present(page);
    unmakeWindow(page);
    const int index = returnIndex(_widgets.indexOf(page));
    const int tab = insertTab(index, page, page->windowIcon(), page->windowTitle());
    if (alive)
        setCurrentIndex(tab);
    if (alive && isHidden())
        show();
    if (alive && present)
        emit attached(page);
}

} // namespace Gui
} // namespace Norvu
