// SPDX-License-Identifier: LGPL-3.0-or-later

#include "livemenu.h"

#include "livefollow.h"
#include "livesources.h"

#include <QAction>
#include <QActionGroup>
#include <QSettings>

#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

struct Length
{
    const char *text;
    double seconds;
};

constexpr Length Lengths[] = {{QT_TR_NOOP("10 minutes"), 600},
                              {QT_TR_NOOP("1 hour"), 3600},
                              {QT_TR_NOOP("6 hours"), 6 * 3600},
                              {QT_TR_NOOP("1 day"), 86400},
                              {QT_TR_NOOP("7 days"), 7 * 86400}};

/** In characters. Of longer ones the middle is left out, and told by the tool tip. */
constexpr int NameLength = 90;

} // namespace

LiveMenu::LiveMenu(LiveSources *sources, LiveFollow *follow, QWidget *parent)
    : QMenu(tr("&Live"), parent), _sources(sources), _lengths(new QActionGroup(this))
{
    addAction(follow->action());
    addLengths();
    _again = addAction(tr("&Open live sources again at the start"));
    _again->setCheckable(true);
    addSeparator();
    _endAll = addAction(tr("&End all live sources"), _sources, SLOT(endAll()));
    setToolTipsVisible(true);
    fill();
    connect(_sources, SIGNAL(changed()), this, SLOT(fill()));
    connect(_sources, SIGNAL(outagesChanged()), this, SLOT(fill()));
}

void LiveMenu::addLengths()
{
    QMenu *menu = addMenu(tr("&Keep live data for"));
    for (const Length &length : Lengths) {
        QAction *action = menu->addAction(tr(length.text));
        action->setCheckable(true);
        action->setData(length.seconds);
        action->setChecked(Core::TimeSpan(length.seconds) == _sources->length());
        _lengths->addAction(action);
    }
    connect(_lengths, SIGNAL(triggered(QAction *)), this, SLOT(applyLength()));
}

void LiveMenu::applyLength()
{
    _sources->setLength(Core::TimeSpan(_lengths->checkedAction()->data().toDouble()));
}

void LiveMenu::fill()
{
    for (QAction *entry : std::exchange(_entries, {})) {
        removeAction(entry);
        entry->deleteLater(); // It may be the one that is telling that it was chosen.
    }
    const QStringList names = _sources->names();
    const int width = fontMetrics().averageCharWidth() * NameLength;
    for (int i = 0; i < names.size(); ++i) {
        const QString &source = names[i];
        const bool isAway = !_sources->outages().value(i).isEmpty();
        const QString text = isAway ? tr("End %1 (waiting)") : tr("End %1");
        QString name = fontMetrics().elidedText(source, Qt::ElideMiddle, width);
        auto *entry = new QAction(text.arg(name.replace('&', "&&")), this);
        entry->setToolTip(source);
        connect(entry, &QAction::triggered, _sources,
                [sources = _sources, source] { sources->end(source); });
        insertAction(_endAll, entry);
        _entries.append(entry);
    }
    _endAll->setEnabled(!_entries.isEmpty());
}

void LiveMenu::saveState(QSettings &settings) const
{
    settings.setValue("liveSeconds", _sources->length().length());
    settings.setValue("liveAgain", _again->isChecked());
    settings.setValue("liveSources", sourcesToRemember());
}

QStringList LiveMenu::sourcesToRemember() const
{
    return _again->isChecked() ? _sources->names() : QStringList();
}

void LiveMenu::restoreState(QSettings &settings)
{
    for (QAction *length : _lengths->actions()) {
        if (length->data().toDouble() != settings.value("liveSeconds").toDouble())
            continue;
        length->setChecked(true);
        applyLength();
    }
    _again->setChecked(settings.value("liveAgain").toBool());
    _remembered = settings.value("liveSources").toStringList();
}

} // namespace Workbench
