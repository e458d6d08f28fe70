// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QIcon>
#include <QKeySequence>
#include <QList>
#include <QPixmap>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWidget>

class QAction;
class QMenu;
class QSettings;
class QStatusBar;
class QToolBar;

namespace Workbench {

class Bench;

/** Where a panel stands until the user puts it elsewhere. */
enum class PanelPlace
{
    Centre, /**< takes the middle of the window, as a tab beside others that do */
    Left,   /**< the others are docks, which lie above each other as tabs */
    Right,
    Top,
    Bottom,
    Window /**< in a window of its own, which its action opens */
};

/** What the window has to know of a panel to lay it out. */
struct PanelDescription
{
    QString name;         /**< for settings and files, never shown; must not change */
    QString title;        /**< of its dock or tab */
    QString toggleText{}; /**< menu entry that shows and hides it; the title if empty */
    QKeySequence key{};   /**< of that entry */
    QIcon icon{};
    PanelPlace place{PanelPlace::Right};
    bool isShownAtFirst{false}; /**< a dock is open when the user has no session yet */
};

/** A picture of a panel under the name of a file. */
struct PanelPicture
{
    QString fileName;
    QPixmap picture;
};

/**
 * A part of the workbench: a widget with its entries for menus and bars, and its state.
 *
 * A new panel is a class in a folder of its own and one line in panels.cpp:
 *
 * @code
 * class EventPanel : public Panel
 * {
 *     Q_OBJECT
 * public:
 *     explicit EventPanel(Bench *bench)
 *         : Panel(bench, {"events", tr("Events"), tr("&Events"), tr("Ctrl+Shift+V"), QIcon(),
 *                         PanelPlace::Left})
 *     {
 *         connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(followEvent()));
 *     }
 * };
 *
 * registry.add<EventPanel>(); // in panels.cpp
 * @endcode
 *
 * The window gives a panel its dock or tab and an entry in View > Panels, and asks it for the rest.
 * A panel includes files of its folder, of bench/ and of libraries, but never those of another
 * panel: what two of them need stands in bench/. It tells problems, status and progress to its
 * bench, and leads others to what the user chose by the bench's selection.
 */
class Panel : public QWidget
{
    Q_OBJECT

public:
    /** Menus of the window that panels add to. */
    enum class Menu
    {
        File,
        View,
        Open /**< what opens sources, in the menu of files */
    };

    Panel(Bench *bench, const PanelDescription &description);
    ~Panel() override;

    const PanelDescription &description() const { return _description; }
    /** Shows and hides a dock, or brings a tab to the front; stands in View > Panels, and wherever
     *  else the panel puts it. */
    QAction *toggleAction() const { return _toggle; }

    /** Entries for a menu of the window, in order; separators are actions too. */
    virtual QList<QAction *> menuActions(Menu menu) const;
    /** Menus of its own for the menu bar, in order. */
    virtual QList<QMenu *> menus() const;
    /** Their object names are kept in sessions. */
    virtual QList<QToolBar *> toolBars() const;
    /** Adds what the panel always has to say, beside passing texts and progress of tasks. */
    virtual void fillStatusBar(QStatusBar *bar);

    /** Writes what a session keeps. The settings stand in the workbench's group: use keys, or a
     *  group, named for the panel. */
    virtual void saveState(QSettings &settings) const;
    /** Reads it; keys may be missing, or hold anything. Called at most once, before data come. */
    virtual void restoreState(QSettings &settings);

    /** What --snapshot writes, with the panel shown; the whole window as "name.png" by default. The
     *  panel looks as before afterwards. */
    virtual QVector<PanelPicture> pictures();

    /** Filters of its files for the dialog that opens them, e.g. "Events (*.xml)". */
    virtual QStringList fileFilters() const;
    /** Whether a file or URL is of its kind. Of all panels that can, the one made last opens it. */
    virtual bool canOpen(const QString &source) const;
    /** Opens sources of its kind beside what is open, and tells what is wrong with them. What may
     *  take longer goes on as a task, which ends with a problem if one of them gives nothing.
     *  @return false if one of them can't be opened */
    virtual bool openSources(const QStringList &sources);
    /** Opens its part of the demonstration likewise, which is made in @p folder if need be. The
     *  demonstration's event and stations are known already. */
    virtual bool openDemonstration(const QString &folder);
    /** Opens again what the session was asked to open at the start, when nothing else is.
     *  @return false if it was asked for nothing */
    virtual bool openRemembered();
    /** Lets go of everything that was opened, or is being opened. */
    virtual void closeAll();

protected:
    Bench *bench() const { return _bench; }

private:
    Bench *_bench;
    PanelDescription _description;
    QAction *_toggle;
};

} // namespace Workbench
