// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcepanel.h"

#include "bench/bench.h"
#include "bench/mapview.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "eventrequestdialog.h"
#include "sourceeditor.h"
#include "sourcelogin.h"
#include "stationtree.h"
#include "timechooser.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTreeView>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto PlacesSource = "sources"; // of the bench's stations
constexpr int FewStations = 60;          // networks are open as long as there are no more

QString addedText(const QString &text, const QString &more)
{
    return text.isEmpty() ? more : text + '\n' + more;
}

} // namespace

// Sources

void SourcePanel::fillSources()
{
    const QSignalBlocker blocker(_sourceBox);
    _sourceBox->clear();
    for (const DataSource &source : _sources.all()) {
        if (!source.isHidden || _showHiddenAction->isChecked())
            _sourceBox->addItem(source.isHidden ? tr("%1 (hidden)").arg(source.name) : source.name,
                                source.name);
    }
    const int index = std::max(0, _sourceBox->findData(_source.name));
    _sourceBox->setCurrentIndex(index);
    const DataSource source = _sources.find(_sourceBox->itemData(index).toString());
    if (!(source == _source))
        setSource(source);
}

void SourcePanel::chooseSource(int index)
{
    setSource(_sources.find(_sourceBox->itemData(index).toString()));
}

void SourcePanel::setSource(const DataSource &source)
{
    cancel();
    const bool isOther = source.listingKey() != _source.listingKey();
    _source = source;
    {
        const QSignalBlocker blocker(_sourceBox);
        _sourceBox->setCurrentIndex(_sourceBox->findData(source.name));
    }
    _hosts->setText(source.hostsText());
    _times->setLive(!source.live.isEmpty() || source.name.isEmpty());
    if (isOther) {
        _tree->clearMarks();
        showListing(source.name.isEmpty() ? nullptr
                                          : _store.find(source.listingKey(), Core::Time::GMT()));
    }
    showStatus(listingText());
    updateChoice();
}

void SourcePanel::addSource()
{
    SourceEditor editor(&_sources, DataSource(), this);
    if (editor.exec() == QDialog::Accepted)
        setSource(_sources.find(editor.source().name));
}

void SourcePanel::editSource()
{
    SourceEditor editor(&_sources, _source, this);
    if (editor.exec() == QDialog::Accepted)
        setSource(_sources.find(editor.source().name));
}

void SourcePanel::removeSource()
{
    QString error;
    const DataSource former = _source;
    tellOf(_sources.remove(former.name, &error) &&
               keepPassword(_sources, former, _sources.find(former.name), QString(), &error),
           error);
}

void SourcePanel::hideSource()
{
    QString error;
    tellOf(_sources.setHidden(_source.name, !_source.isHidden, &error), error);
}

void SourcePanel::showHidden(bool)
{
    fillSources();
}

void SourcePanel::tellOf(bool ok, const QString &error)
{
    if (!ok)
        showStatus(error, Tone::Bad);
}

// Asking servers

/** Has a thread visit the source; what it asks for is ended with the task. */
void SourcePanel::begin(const QString &name, const TaskThreads::Work &work,
                        const std::shared_ptr<SourceVisit> &visit)
{
    _visit = visit;
    _task = _threads.start(name, TaskThreads::Canceling::DropsWork, work);
    connect(_task, &Task::cancelRequested, this, [visit] { visit->cancel(); });
    connect(_task, SIGNAL(finished()), this, SLOT(endTask()));
    showStatus(name + "…");
    _progressTimer.start();
    updateButtons();
}

void SourcePanel::endTask()
{
    _progressTimer.stop();
    _visit.reset();
    const bool isCanceled = _task && _task->isCanceled();
    _task.clear();
    if (isCanceled)
        showStatus(tr("Cancelled"));
    updateButtons();
    updateHint();
}

void SourcePanel::cancel()
{
    if (_task)
        _task->cancel();
}

void SourcePanel::list()
{
    cancel();
    const Core::TimeWindow window = _times->times().window;
    const auto visit = std::make_shared<SourceVisit>();
    begin(
        tr("Listing the stations of %1").arg(_source.name),
        [this, visit, window, source = _source](TaskThreads::Reporter &) -> TaskThreads::Finish {
            const auto findings = std::make_shared<SourceVisit::Findings>();
            *findings = visit->list(source.withUserInAddresses(), window);
            return [this, source, findings] {
                takeListing(source, findings);
                return QString();
            };
        },
        visit);
    updateHint();
}

void SourcePanel::takeListing(const DataSource &source, const Findings &findings)
{
    if (findings->hasAny) {
        const auto listing = std::make_shared<const StationListing>(std::move(findings->listing));
        _store.set(source.listingKey(), listing);
        showListing(listing);
    }
    QString text = findings->hasAny ? listingText() : QString();
    for (const QString &problem : findings->problems)
        text = addedText(text, problem);
    showStatus(text, findings->problems.isEmpty() ? Tone::Good : Tone::Bad);
}

void SourcePanel::test()
{
    cancel();
    const auto visit = std::make_shared<SourceVisit>();
    begin(
        tr("Testing the connection to %1").arg(_source.name),
        [this, visit, source = _source](TaskThreads::Reporter &) -> TaskThreads::Finish {
            const auto answers = visit->test(source.withUserInAddresses());
            return [this, answers] {
                takeAnswers(answers);
                return QString();
            };
        },
        visit);
}

void SourcePanel::takeAnswers(const std::vector<SourceVisit::Answer> &answers)
{
    QString text;
    bool ok = true;
    for (const SourceVisit::Answer &answer : answers) {
        text = addedText(text, QString("%1: %2").arg(answer.service, answer.text));
        ok = ok && answer.ok;
    }
    showStatus(text, ok ? Tone::Good : Tone::Bad);
}

void SourcePanel::showProgress()
{
    if (!_task || !_visit)
        return;
    QString text = _task->name() + "…";
    if (_visit->stationCount() > 0)
        text += tr(" %1 stations").arg(_visit->stationCount());
    if (_visit->byteCount() > 0)
        text += tr(" %1 MB").arg(static_cast<double>(_visit->byteCount()) / 1e6, 0, 'f', 1);
    showStatus(text);
}

// The tree

void SourcePanel::showListing(const ListingStore::ListingPtr &listing)
{
    _tree->setListing(listing);
    openNetworks();
    updateHint();
    _placesTimer.start();
}

void SourcePanel::openNetworks()
{
    const bool isFew = _tree->shownCount() <= FewStations;
    for (int row = 0; row < _tree->rowCount(); ++row)
        _view->setExpanded(_tree->index(row, StationTree::Code), isFew || _tree->rowCount() == 1);
    followStations();
}

void SourcePanel::updateFilter()
{
    StationFilter filter;
    filter.search = _search->text();
    filter.channels = ChannelPatterns(_channels->text(), _vertical->isChecked());
    if (_onMap->isChecked())
        filter.region = bench()->mapView()->region();
    _tree->setFilter(filter);
    openNetworks();
    updateHint();
    _placesTimer.start();
}

/** The box of a selected row stands for all of these. */
void SourcePanel::markBox(const QModelIndex &index, bool on)
{
    const QModelIndexList selected = _view->selectionModel()->selectedRows(StationTree::Code);
    _tree->mark(selected.contains(index) ? selected : QModelIndexList{index}, on);
}

void SourcePanel::markSelected()
{
    _tree->mark(_view->selectionModel()->selectedRows(StationTree::Code), true);
}

void SourcePanel::updateChoice()
{
    const int streams = static_cast<int>(_tree->chosenStreams().size());
    _streamCount = streams;
    const int stations = static_cast<int>(_tree->chosenStations().size());
    QString text = tr("Nothing is chosen");
    if (streams > 0)
        text = (streams == 1 ? tr("1 stream of ") : tr("%1 streams of ").arg(streams)) +
               (stations == 1 ? tr("1 station") : tr("%1 stations").arg(stations));
    _count->setText(text);
    _openButton->setText(streams == 0   ? tr("&Open")
                         : streams == 1 ? tr("&Open 1 stream")
                                        : tr("&Open %1 streams").arg(streams));
    followEvent();
    updateButtons();
}

// What other panels know

void SourcePanel::followEvent()
{
    const auto &event = bench()->selection()->chosenEvent();
    std::optional<StationPlace> centre;
    if (event)
        centre = StationPlace{event->latitude, event->longitude};
    if (!(event && event->latitude == event->latitude && event->longitude == event->longitude))
        centre.reset();
    _tree->setCentre(centre);
    _view->setColumnHidden(StationTree::Distance, !centre);
    _times->setEvent(event, _tree->farthestKm());
}

void SourcePanel::followStations()
{
    if (_isSelecting)
        return;
    const QScopedValueRollback<bool> selecting(_isSelecting, true);
    QItemSelection rows;
    QModelIndex first;
    for (const QString &station : bench()->selection()->stations()) {
        const QModelIndex index = _tree->indexOf(station);
        if (!index.isValid())
            continue;
        rows.select(index, index);
        first = first.isValid() ? first : index;
    }
    _view->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect |
                                              QItemSelectionModel::Rows);
    if (first.isValid())
        _view->scrollTo(first);
    updateButtons();
}

void SourcePanel::chooseStations()
{
    updateButtons();
    if (_isSelecting)
        return;
    const QScopedValueRollback<bool> selecting(_isSelecting, true);
    QStringList stations;
    for (const QModelIndex &index : _view->selectionModel()->selectedRows(StationTree::Code)) {
        const QString station = _tree->stationAt(index);
        if (!station.isEmpty())
            stations.append(station);
    }
    bench()->selection()->setStations(stations);
}

void SourcePanel::followRegion()
{
    _onMap->setEnabled(bench()->mapView()->region().has_value());
    if (_onMap->isChecked())
        updateFilter();
}

/** Maps show what the tree does. */
void SourcePanel::updatePlaces()
{
    const bool isShown = isVisible() && _tree->listing();
    bench()->stations()->setSource(PlacesSource, isShown ? networksOf(_tree->shownStations())
                                                         : std::vector<DataModel::NetworkPtr>());
}

// Opening

QString SourcePanel::request() const
{
    return requestText(_source.withUserInAddresses(), _tree->chosenStreams(), _times->times(),
                       _cached->isChecked(), Core::Time::GMT());
}

void SourcePanel::open()
{
    if (!_openButton->isEnabled())
        return;
    QHash<QString, StationPlace> places;
    for (const ListedStation *station : _tree->chosenStations()) {
        if (station->hasPlace())
            places.insert(QString::fromStdString(station->id()),
                          {station->latitude, station->longitude});
    }
    const QString text = request();
    // The places of the others go when this hides.
    window()->hide();
    bench()->stations()->add(places);
    bench()->open({text});
}

void SourcePanel::askForEvents()
{
    EventRequestDialog dialog(bench(), _sources.all(), _source.name, window());
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (dialog.isStored())
        bench()->importEvents({dialog.request()});
    else
        bench()->open({dialog.request()});
}

void SourcePanel::closeAll()
{
    cancel();
    _tree->clearMarks();
}

} // namespace Workbench
