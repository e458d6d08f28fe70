// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventlistview.h>

#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/eventitem_p.h>
#include <norvu/gui/eventlistworkerthread.h>
#include <norvu/gui/fontawesome5.h>

#include <tellarix/core/datamodel/eventtypes.h>

#include <QApplication>
#include <QEventLoop>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <atomic>
#include <vector>

namespace Norvu {
namespace Gui {

namespace {

using Columns = EEventListColumnsNames;

constexpr int DialogDelay = 500; // ms
constexpr int ProgressInterval = 50;
constexpr auto ResetAction = "reset";

/** Text of the event type that is regarded as fake. */
QString NotExisting;

/**
 * Shows how many rows there are, some times a second.
 *
 * It stands in for the dialog's own setValue(), which works off waiting events as long as the
 * dialog is visible, and with a signal for each row calls itself until the stack is full.
 */
class ProgressBar : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressBar(QWidget *parent = nullptr) : QProgressBar(parent)
    {
        startTimer(ProgressInterval);
    }

public slots:
    /** May be called from any thread. */
    void setCount(int count) { _count.store(count, std::memory_order_relaxed); }

protected:
    void timerEvent(QTimerEvent *event) override
    {
        QProgressBar::timerEvent(event);
        setValue(_count.load(std::memory_order_relaxed));
    }

private:
    std::atomic<int> _count{0};
};

void setHeaderTexts(QStandardItemModel &model)
{
    for (int column = 0; column < Columns::Count; ++column)
        model.setHeaderData(column, Qt::Horizontal, EventListView::tr(Columns::name(column)));
}

void setGlyph(QToolButton &button, const QFont &face, QChar glyph)
{
    button.setFont(face);
    button.setText(QString(glyph));
}

void showError(const QString &text)
{
    QMessageBox::critical(nullptr, EventListView::tr("Error"), text, QMessageBox::Ok);
}

/** The fields of a date, taken for UTC, to the second. */
Tellarix::Core::Time timeOf(const QDateTime &dateTime)
{
    const QDate date = dateTime.date();
    const QTime time = dateTime.time();
    return Tellarix::Core::Time(date.year(), date.month(), date.day(), time.hour(), time.minute(),
                                time.second(), 0);
}

QVariant valueAt(const QAbstractItemModel &model, int row, int column, int role = Qt::UserRole)
{
    return model.data(model.index(row, column), role);
}

std::optional<double> numberAt(const QAbstractItemModel &model, int row, int column)
{
    const QVariant value = valueAt(model, row, column);
    return value.isNull() ? std::nullopt : std::make_optional(value.toDouble());
}

std::string textAt(const QAbstractItemModel &model, int row, int column)
{
    return valueAt(model, row, column).toString().toStdString();
}

} // namespace

/** Hides events of one type, and sorts the list's own items without the detour over variants. */
class SortFilterModel : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    bool hasShownType(const QModelIndex &type) const
    {
        const QRegExp filter = filterRegExp();
        return filter.isEmpty() || type.data(Qt::DisplayRole).toString() != filter.pattern();
    }

    void setRowFilter(std::function<bool(const EventRow &)> accepts)
    {
        _accepts = std::move(accepts);
        invalidateFilter();
    }

    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override
    {
        const bool isSorted = dynamicSortFilter() && column == sortColumn() && order == sortOrder();
        if (!isSorted && column >= 0 && hasOwnOrder())
            _places = EventItem::places(*root(), column);
        QSortFilterProxyModel::sort(column, order);
        _places.clear();
    }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override
    {
        return hasShownType(sourceModel()->index(sourceRow, Columns::EventType, sourceParent)) &&
               (!_accepts || _accepts(EventListView::fromRow(sourceModel(), sourceRow)));
    }

    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override
    {
        const bool hasPlace = !_places.empty() && left.internalPointer() == root();
        if (hasPlace)
            return _places[static_cast<size_t>(left.row())] <
                   _places[static_cast<size_t>(right.row())];

        const EventItem *a = itemAt(left);
        const EventItem *b = itemAt(right);
        return a && b ? a->isLessThan(*b) : QSortFilterProxyModel::lessThan(left, right);
    }

private:
    /** Whether the order asked for is that of the items. */
    bool hasOwnOrder() const
    {
        return sortRole() == EventItem::SortRole && !isSortLocaleAware() &&
               sortCaseSensitivity() == Qt::CaseSensitive;
    }

    const QStandardItem *root() const
    {
        return static_cast<const QStandardItemModel *>(sourceModel())->invisibleRootItem();
    }

    /** The item that can be compared by itself, null if it can't. */
    const EventItem *itemAt(const QModelIndex &index) const
    {
        const auto *model = static_cast<const QStandardItemModel *>(sourceModel());
        return hasOwnOrder() ? EventItem::from(model->itemFromIndex(index), index.column())
                             : nullptr;
    }

    std::function<bool(const EventRow &)> _accepts;
    std::vector<int> _places; /**< of the source's rows, while they are sorted */
};

EventListView::EventListView(Tellarix::IO::DatabaseInterface *db, QWidget *parent)
    : QWidget(parent), _db(db)
{
    _ui.setupUi(this);
    initButtons();
    initFilterMenu();
    connect(_ui.treeView, SIGNAL(activated(QModelIndex)), this, SIGNAL(eventSelected()));
    connect(_ui.buttonLoadInterval, SIGNAL(clicked()), this, SLOT(loadInterval()));
    connect(_ui.buttonLoadDays, SIGNAL(clicked()), this, SLOT(loadLastDays()));
    connect(_ui.buttonExport, SIGNAL(clicked()), this, SLOT(exportClicked()));
    connect(_ui.buttonClear, SIGNAL(clicked()), this, SLOT(clear()));
    NotExisting = Tellarix::DataModel::EEventTypeNames::name(0);
    setWindowTitle(parent ? parent->windowTitle() : QString());
    initListUi();
}

EventListView::~EventListView()
{
    // Qt ends the program if a thread is deleted before it has finished.
    if (_worker) {
        _worker->stop();
        _worker->wait();
    }
}

QAbstractButton *EventListView::buttonExport()
{
    return _ui.buttonExport;
}

Tellarix::Core::TimeWindow EventListView::timeWindow() const
{
    return {timeOf(_ui.dateTimeEditStart->dateTime()), timeOf(_ui.dateTimeEditEnd->dateTime())};
}

EventFilter EventListView::filter() const
{
    return _filterWidget->filter();
}

void EventListView::setEarliestDate(const QDate &date)
{
    _ui.dateTimeEditStart->setMinimumDate(date);
    _ui.dateTimeEditEnd->setMinimumDate(date);
}

int EventListView::rowCount() const
{
    return _proxy->rowCount();
}

std::vector<EventRow> EventListView::unfilteredRows() const
{
    std::vector<EventRow> rows;
    rows.reserve(static_cast<size_t>(_model->rowCount()));
    for (int row = 0; row < _model->rowCount(); ++row) {
        if (_proxy->hasShownType(_model->index(row, Columns::EventType)))
            rows.push_back(fromRow(_model, row));
    }
    return rows;
}

void EventListView::setRowFilter(std::function<bool(const EventRow &)> accepts)
{
    _proxy->setRowFilter(std::move(accepts));
    if (!_worker)
        emit rowsChanged();
}

bool EventListView::showEvent(const std::string &publicID)
{
    if (_worker)
        return false;

    const int row = sourceRow(publicID);
    const QModelIndex index = _proxy->mapFromSource(_model->index(row, 0));
    if (!index.isValid())
        return false;

    _ui.treeView->setCurrentIndex(index);
    _ui.treeView->scrollTo(index, QAbstractItemView::PositionAtCenter);
    return true;
}

/** -1 if there is none. */
int EventListView::sourceRow(const std::string &publicID)
{
    if (_rowsByID.empty()) {
        for (int row = 0; row < _model->rowCount(); ++row)
            _rowsByID.emplace(textAt(*_model, row, Columns::PublicID), row);
    }
    const auto row = _rowsByID.find(publicID);
    return row == _rowsByID.end() ? -1 : row->second;
}

EventRow EventListView::currentEvent() const
{
    const QModelIndex current = _ui.treeView->currentIndex();
    return current.isValid() ? fromRow(current.row()) : EventRow();
}

EventRow EventListView::fromRow(int row) const
{
    return fromRow(_proxy, row);
}

EventRow EventListView::fromRow(QAbstractItemModel *model, int row)
{
    static const int registered = qRegisterMetaType<Tellarix::Core::Time>("Tellarix::Core::Time");
    Q_UNUSED(registered)

    EventRow event;
    event.time = valueAt(*model, row, Columns::OriginTime, EventItem::TimeRole)
                     .value<Tellarix::Core::Time>();
    event.magnitude = numberAt(*model, row, Columns::Magnitude);
    const QVariant phaseCount = valueAt(*model, row, Columns::PhaseCount);
    if (!phaseCount.isNull())
        event.phaseCount = phaseCount.toInt();
    event.latitude = numberAt(*model, row, Columns::Latitude);
    event.longitude = numberAt(*model, row, Columns::Longitude);
    event.depth = numberAt(*model, row, Columns::Depth);
    event.publicID = textAt(*model, row, Columns::PublicID);
    event.region = textAt(*model, row, Columns::Region);
    return event;
}

void EventListView::loadLastDays(int days)
{
    _ui.spinDays->setValue(days);
    loadLastDays();
}

void EventListView::loadInterval()
{
    if (_worker)
        return;
    if (!_db) {
        showError(tr("No database connection available"));
        return;
    }

    Tellarix::Core::Time begin = timeOf(_ui.dateTimeEditStart->dateTime());
    Tellarix::Core::Time end = timeOf(_ui.dateTimeEditEnd->dateTime());
    _worker = new EventListWorkerThread(_db.get(), _model->invisibleRootItem(), this);
    _worker->setTimeWindow(begin, end);
    _worker->setFilter(_filterWidget->filter());

    // Disabled buttons lose the focus.
    QWidget *const focusedNow = QApplication::focusWidget();
    const QPointer<QWidget> focused = isAncestorOf(focusedNow) ? focusedNow : nullptr;
    const QPointer<EventListView> self(this);
    _ui.buttonLoadInterval->setEnabled(false);
    _ui.buttonLoadDays->setEnabled(false);
    _ui.treeView->setSortingEnabled(false);
    takeOffModel();
    makeProgressDialog();
    runWorker();
    // The view may be gone after everything that lets events through.
    const QString error = self ? _worker->errorString() : QString();
    if (self)
        putBackModel();
    if (self)
        closeProgressDialog();
    if (self && !error.isEmpty())
        showError(error);
    if (!self)
        return;

    _ui.buttonLoadInterval->setEnabled(true);
    _ui.buttonLoadDays->setEnabled(true);
    delete _worker;
    _worker = nullptr;
    if (focused)
        focused->setFocus();
    _rowsByID.clear();
    emit rowsChanged();
}

void EventListView::setTimeWindow(const QDateTime &begin, const QDateTime &end)
{
    _ui.dateTimeEditStart->setDateTime(begin);
    _ui.dateTimeEditEnd->setDateTime(end);
}

void EventListView::setHeaderResizable(bool resizeable)
{
    _ui.treeView->header()->setSectionResizeMode(resizeable ? QHeaderView::Interactive
                                                            : QHeaderView::ResizeToContents);
}

void EventListView::setHeaderMenuEnabled(bool enabled)
{
    _headerMenuEnabled = enabled;
}

void EventListView::hideFakeEvents()
{
    _proxy->setFilterWildcard(_ui.hideFakeEvents->isChecked() ? NotExisting : QString());
    if (!_worker)
        emit rowsChanged();
}

void EventListView::showHeaderContextMenu(QPoint pos)
{
    if (!_headerMenuEnabled)
        return;

    QHeaderView *header = _ui.treeView->header();
    QMenu menu;
    for (int column = 0; column < Columns::Count; ++column) {
        QAction *action = menu.addAction(tr(Columns::name(column)));
        action->setCheckable(true);
        action->setChecked(!header->isSectionHidden(column));
        action->setData(column);
        // Without columns a full list would look empty, and there were no header to ask for a menu.
        if (action->isChecked() && header->hiddenSectionCount() == Columns::Count - 1)
            action->setEnabled(false);
    }
    menu.addAction(tr("Reset"))->setData(ResetAction);

    const QPointer<EventListView> self(this);
    const QAction *chosen = menu.exec(header->mapToGlobal(pos));
    if (!chosen || !self)
        return;
    if (chosen->data().toString() == QLatin1String(ResetAction))
        resetColumns();
    else
        header->setSectionHidden(chosen->data().toInt(), !chosen->isChecked());
}

void EventListView::loadLastDays()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    setTimeWindow(now.addDays(-_ui.spinDays->value()), now);
    loadInterval();
}

void EventListView::exportClicked()
{
    emit exportEvents(_proxy);
}

void EventListView::clear()
{
    // The rows belong to the thread that loads them.
    if (_worker)
        return;
    _model->setRowCount(0);
    _rowsByID.clear();
    emit cleared();
}

void EventListView::updateFilterButton()
{
    const EventFilter filter = _filterWidget->filter();
    QPalette palette = _ui.buttonFilter->palette();
    // The upper bound of the longitude doesn't colour the button.
    if (filter.fromDepth || filter.fromLatitude || filter.fromLongitude || filter.fromMagnitude ||
        filter.toDepth || filter.toLatitude || filter.toMagnitude)
        palette.setBrush(QPalette::ButtonText, palette.color(QPalette::Highlight).darker(110));
    else
        palette.setBrush(QPalette::ButtonText, QPalette().brush(QPalette::ButtonText));
    _ui.buttonFilter->setPalette(palette);
}

void EventListView::stopWorker()
{
    if (_worker)
        _worker->stop();
    if (auto *button = qobject_cast<QAbstractButton *>(sender()))
        button->setEnabled(false);
}

void EventListView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // The button has a palette of its own, which doesn't follow by itself.
    if (event->type() == QEvent::PaletteChange && _filterWidget)
        updateFilterButton();
}

void EventListView::initButtons()
{
    setGlyph(*_ui.buttonFilter, FontAwesome5::fontSolid(), FontAwesome5::chFilter);
    setGlyph(*_ui.buttonClear, FontAwesome5::fontSolid(), FontAwesome5::chTrash);
    setGlyph(*_ui.buttonLoadInterval, FontAwesome5::font(), FontAwesome5::chSyncAlt);
    setGlyph(*_ui.buttonLoadDays, FontAwesome5::font(), FontAwesome5::chSyncAlt);
    _ui.buttonFilter->setPopupMode(QToolButton::InstantPopup);
    _ui.buttonExport->hide();
    _ui.buttonExport->setEnabled(false);
}

void EventListView::initFilterMenu()
{
    _filterWidget = new EventFilterWidget(nullptr);
    auto *menu = new CustomWidgetMenu(this);
    auto *layout = new QVBoxLayout(menu);
    layout->addWidget(_filterWidget);
    connect(menu, SIGNAL(aboutToHide()), this, SLOT(updateFilterButton()));
    _ui.buttonFilter->setMenu(menu);
}

void EventListView::initListUi()
{
    _model = new QStandardItemModel(0, Columns::Count, this);
    _emptyModel = new QStandardItemModel(0, Columns::Count, this);
    _proxy = new SortFilterModel(this);
    _proxy->setSourceModel(_model);
    _proxy->setDynamicSortFilter(true);
    _proxy->setSortRole(EventItem::SortRole);
    _proxy->setFilterKeyColumn(Columns::EventType);
    connect(_ui.hideFakeEvents, SIGNAL(toggled(bool)), this, SLOT(hideFakeEvents()));

    initHeader();
    hideFakeEvents();
}

void EventListView::initHeader()
{
    auto *header = new QHeaderView(Qt::Horizontal);
    header->setSectionsMovable(true);
    header->setSortIndicatorShown(true);
    header->setStretchLastSection(true);

    QTreeView *list = _ui.treeView;
    list->setRootIsDecorated(false);
    list->setItemsExpandable(false);
    // Else the way to a row far down would ask for the height of each row above it.
    list->setUniformRowHeights(true);
    list->setSortingEnabled(true);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setAlternatingRowColors(true);
    list->setModel(_proxy);
    list->setHeader(header);

    setHeaderTexts(*_model);
    setHeaderTexts(*_emptyModel);
    for (int column = 0; column < Columns::Count; ++column)
        header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
    header->hideSection(Columns::EventType);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, SIGNAL(customContextMenuRequested(QPoint)), this,
            SLOT(showHeaderContextMenu(QPoint)));
}

void EventListView::takeOffModel()
{
    _proxy->blockSignals(true);
    _model->setRowCount(0);
    // The rows come in on another thread: until the last one is there, nothing of this thread may
    // look at their model, and the proxy would on every repaint.
    _proxy->sort(-1);
    _proxy->setSourceModel(_emptyModel);
    _ui.treeView->reset();
}

void EventListView::putBackModel()
{
    _proxy->setSourceModel(_model);
    _proxy->blockSignals(false);
    _proxy->invalidate();
    const QHeaderView *header = _ui.treeView->header();
    _ui.treeView->setSortingEnabled(true);
    _ui.treeView->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());
}

void EventListView::makeProgressDialog()
{
    auto *cancel = new QPushButton(tr("Cancel"));
    auto *bar = new ProgressBar;
    // Without a text for a cancel button, or it would leave behind its own shortcut when it is
    // replaced, and Escape with two meanings has none.
    _progress = new QProgressDialog(tr("Loading events"), QString(), 0, 100, this);
    _progress->setModal(true);
    _progress->setCancelButton(cancel);
    _progress->setBar(bar);
    _progress->setRange(0, 100); // until the number of events is known
    _progress->setMinimumDuration(DialogDelay);
    _progress->setWindowTitle(windowTitle());
    _progress->setValue(0);

    connect(_worker, SIGNAL(progressChanged(int)), bar, SLOT(setCount(int)), Qt::DirectConnection);
    connect(_worker, SIGNAL(eventCountChanged(int)), _progress, SLOT(setMaximum(int)));
    cancel->disconnect();
    connect(cancel, SIGNAL(clicked()), this, SLOT(stopWorker()));
    // Escape and the dialog's own close button hide the dialog, and so have to cancel as well.
    connect(_progress, SIGNAL(canceled()), this, SLOT(stopWorker()));
    connect(_progress, SIGNAL(rejected()), this, SLOT(stopWorker()));
}

void EventListView::closeProgressDialog()
{
    if (!_progress)
        return;

    _progress->close();
    _progress->deleteLater();
    _progress = nullptr;
}

void EventListView::runWorker()
{
    QEventLoop loop;
    // Before the start: a short load may have ended by the next line.
    connect(_worker, SIGNAL(finished()), &loop, SLOT(quit()));
    const QPointer<EventListWorkerThread> worker(_worker);
    worker->start(QThread::InheritPriority);
    loop.exec();
    if (!worker)
        return;

    // The loop also ends when the program does.
    if (worker->isRunning())
        worker->stop();
    worker->wait();
}

void EventListView::resetColumns()
{
    QHeaderView *header = _ui.treeView->header();
    for (int column = 0; column < Columns::Count; ++column) {
        header->showSection(column);
        header->moveSection(header->visualIndex(column), column);
    }
    header->hideSection(Columns::EventType);
}

} // namespace Gui
} // namespace Norvu

#include "eventlistview.moc"
