// SPDX-License-Identifier: LGPL-3.0-or-later

// What the panel is made of, and its state; what it does stands in sourcepanel.cpp.

#include "sourcepanel.h"

#include "bench/bench.h"
#include "bench/mapview.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "stationtree.h"
#include "timechooser.h"

#include <norvu/gui/fontawesome5.h>
#include <tellarix/client/remote/httpaccounts.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QStyledItemDelegate>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>

using namespace Tellarix;
using namespace Norvu::FontAwesome5;

namespace Workbench {

namespace {

constexpr auto SettingsGroup = "sources";
constexpr int ProgressMilliseconds = 200;
constexpr int PlacesMilliseconds = 150;
constexpr int IconSize = 16;
constexpr int MostStreams = 5000;
constexpr QSize FirstSize(860, 680);
constexpr QSize PictureSize(960, 720);
const QColor GoodColor(0x2E, 0x9D, 0x42);
const QColor BadColor(0xD6, 0x3B, 0x33);
constexpr int FrameAlpha = 120;

/** Frames boxes, which on dark backgrounds can't be seen else as long as nothing is in them. */
class FramedBoxes : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        if (index.column() != StationTree::Code)
            return;
        QStyleOptionViewItem box = option;
        initStyleOption(&box, index);
        const QRect frame = box.widget->style()->subElementRect(
            QStyle::SE_ItemViewItemCheckIndicator, &box, box.widget);
        QColor color = option.palette.color(QPalette::Text);
        color.setAlpha(FrameAlpha);
        painter->save();
        painter->setPen(color);
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(frame.adjusted(0, 0, -1, -1));
        painter->restore();
    }
};

} // namespace

SourcePanel::SourcePanel(Bench *bench)
    : Panel(bench, {"sources",
                    tr("Open source"),
                    tr("Open &source…"),
                    tr("Ctrl+U"),
                    {},
                    PanelPlace::Window}),
      _tree(new StationTree(this)), _times(new TimeChooser(this)), _threads(bench->tasks())
{
    auto *layout = new QGridLayout(this);
    layout->setColumnStretch(1, 1);
    createSourceRow(layout);
    createFilterRow(layout);
    createTree(layout);
    createChoiceRow(layout);
    createLowerRows(layout);
    resize(FirstSize);
    setFocusProxy(_search);

    _progressTimer.setInterval(ProgressMilliseconds);
    _placesTimer.setSingleShot(true);
    _placesTimer.setInterval(PlacesMilliseconds);
    connect(&_progressTimer, SIGNAL(timeout()), this, SLOT(showProgress()));
    connect(&_placesTimer, SIGNAL(timeout()), this, SLOT(updatePlaces()));
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(followEvent()));
    connect(bench->selection(), SIGNAL(stationsChanged()), this, SLOT(followStations()));
    connect(bench->selection(), &Selection::timeWindowChanged, this,
            [this] { _times->suggestWindow(this->bench()->selection()->timeWindow()); });
    connect(bench->mapView(), SIGNAL(regionChanged()), this, SLOT(followRegion()));

    QStringList problems = _sources.read();
    problems.append(IO::HttpAccounts::Instance().problem());
    problems.removeAll(QString());
    connect(&_sources, SIGNAL(changed()), this, SLOT(fillSources()));
    fillSources();
    updateFilter();
    followRegion();
    bench->tell(problems);
}

SourcePanel::~SourcePanel()
{
    cancel();
}

// Rows

void SourcePanel::createSourceRow(QGridLayout *layout)
{
    _sourceBox = new QComboBox(this);
    _sourceBox->setObjectName("source");
    _sourceBox->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    _listButton = new QPushButton(iconSolid(chSync), tr("&List stations"), this);
    _listButton->setToolTip(tr("Asks the source for its stations and channels"));
    _testButton = new QPushButton(iconSolid(chPlug), tr("&Test"), this);
    _testButton->setToolTip(tr("Tests the connection: asks each service for a sign of life"));
    _eventsButton = new QPushButton(tr("E&vents…"), this);
    _eventsAction = new QAction(tr("Fetch e&vents…"), this);
    auto *menuButton = new QToolButton(this);
    menuButton->setText(tr("Sources"));
    menuButton->setToolTip(tr("Adds, edits and hides sources"));
    createSourceMenu(menuButton);
    _hosts = new QLabel(this);
    _hosts->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto *label = new QLabel(tr("So&urce:"), this);
    label->setBuddy(_sourceBox);
    auto *line = new QHBoxLayout;
    line->addWidget(_sourceBox, 1);
    line->addWidget(menuButton);
    line->addWidget(_listButton);
    line->addWidget(_testButton);
    line->addWidget(_eventsButton);
    layout->addWidget(label, 0, 0);
    layout->addLayout(line, 0, 1);
    layout->addWidget(_hosts, 1, 1);

    connect(_sourceBox, SIGNAL(activated(int)), this, SLOT(chooseSource(int)));
    connect(_listButton, SIGNAL(clicked()), this, SLOT(list()));
    connect(_testButton, SIGNAL(clicked()), this, SLOT(test()));
    connect(_eventsButton, SIGNAL(clicked()), this, SLOT(askForEvents()));
    connect(_eventsAction, SIGNAL(triggered()), this, SLOT(askForEvents()));
}

void SourcePanel::createSourceMenu(QToolButton *button)
{
    auto *menu = new QMenu(button);
    menu->addAction(iconSolid(chPlus), tr("&New source…"), this, SLOT(addSource()));
    _editAction = menu->addAction(iconSolid(chPen), tr("&Edit…"), this, SLOT(editSource()));
    _removeAction = menu->addAction(iconSolid(chTrash), tr("&Remove"), this, SLOT(removeSource()));
    _hideAction = menu->addAction(iconSolid(chEyeSlash), tr("&Hide"), this, SLOT(hideSource()));
    menu->addSeparator();
    _showHiddenAction = menu->addAction(tr("&Show hidden sources"));
    _showHiddenAction->setCheckable(true);
    connect(_showHiddenAction, SIGNAL(toggled(bool)), this, SLOT(showHidden(bool)));
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
}

void SourcePanel::createFilterRow(QGridLayout *layout)
{
    _search = new QLineEdit(this);
    _search->setObjectName("search");
    _search->setClearButtonEnabled(true);
    _search->addAction(iconSolid(chSearch), QLineEdit::LeadingPosition);
    _search->setPlaceholderText(tr("Codes or places, with * and ?"));
    _channels = new QLineEdit(this);
    _channels->setObjectName("channels");
    _channels->setPlaceholderText(tr("all, or e.g. BH?,HH?"));
    _channels->setToolTip(tr("Patterns of channel codes, also with the location: BH?, 00.HHZ"));
    _channels->setMaximumWidth(fontMetrics().horizontalAdvance("BH?,HH?,EH?,HN?,EN? "));
    _vertical = new QCheckBox(tr("&Vertical only"), this);
    _onMap = new QCheckBox(tr("On the &map only"), this);
    _onMap->setToolTip(tr("Only stations within what the map shows"));

    auto *label = new QLabel(tr("&Find:"), this);
    label->setBuddy(_search);
    auto *channelsLabel = new QLabel(tr("&Channels:"), this);
    channelsLabel->setBuddy(_channels);
    auto *line = new QHBoxLayout;
    line->addWidget(_search, 1);
    line->addWidget(channelsLabel);
    line->addWidget(_channels);
    line->addWidget(_vertical);
    line->addWidget(_onMap);
    layout->addWidget(label, 2, 0);
    layout->addLayout(line, 2, 1);

    for (const QLineEdit *edit : {_search, _channels})
        connect(edit, SIGNAL(textChanged(QString)), this, SLOT(updateFilter()));
    for (const QCheckBox *box : {_vertical, _onMap})
        connect(box, SIGNAL(toggled(bool)), this, SLOT(updateFilter()));
}

void SourcePanel::createTree(QGridLayout *layout)
{
    _view = new QTreeView(this);
    _view->setModel(_tree);
    _view->setItemDelegateForColumn(StationTree::Code, new FramedBoxes(_view));
    _view->setUniformRowHeights(true);
    _view->setAlternatingRowColors(true);
    _view->setAllColumnsShowFocus(true);
    _view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    _view->header()->setSortIndicator(StationTree::Code, Qt::AscendingOrder);
    _view->setSortingEnabled(true);
    _view->header()->setStretchLastSection(false);
    _view->header()->setSectionResizeMode(StationTree::Place, QHeaderView::Stretch);
    const QFontMetrics metrics = fontMetrics();
    _view->setColumnWidth(StationTree::Code, metrics.horizontalAdvance("mmmmmmmmmmmm"));
    _view->setColumnWidth(StationTree::Channels, metrics.horizontalAdvance(QString(16, 'M')));
    _view->setColumnWidth(StationTree::Distance, metrics.horizontalAdvance("  Distance 00000 "));
    _hint = new QLabel(_view);
    _hint->setAlignment(Qt::AlignCenter);
    _hint->setWordWrap(true);
    _hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *overlay = new QVBoxLayout(_view->viewport());
    overlay->addWidget(_hint);
    layout->addWidget(_view, 3, 0, 1, 2);
    layout->setRowStretch(3, 1);

    connect(_tree, SIGNAL(choiceChanged()), this, SLOT(updateChoice()));
    connect(_tree, SIGNAL(boxClicked(QModelIndex, bool)), this, SLOT(markBox(QModelIndex, bool)));
    connect(_view->selectionModel(), SIGNAL(selectionChanged(QItemSelection, QItemSelection)), this,
            SLOT(chooseStations()));
    // A sorted tree is another one, in which nothing is open.
    connect(_view->header(), &QHeaderView::sortIndicatorChanged, this, [this] { openNetworks(); });
}

void SourcePanel::createChoiceRow(QGridLayout *layout)
{
    _count = new QLabel(this);
    QFont bold = font();
    bold.setBold(true);
    _count->setFont(bold);
    _allButton = new QPushButton(tr("Choose &all shown"), this);
    _allButton->setObjectName("chooseAll");
    _selectedButton = new QPushButton(tr("Choose s&elected"), this);
    _selectedButton->setToolTip(
        tr("Chooses the rows that are selected here, or by their stations on the map"));
    _noneButton = new QPushButton(tr("&None"), this);
    auto *line = new QHBoxLayout;
    line->addWidget(_count, 1);
    line->addWidget(_allButton);
    line->addWidget(_selectedButton);
    line->addWidget(_noneButton);
    layout->addLayout(line, 4, 0, 1, 2);

    connect(_allButton, &QPushButton::clicked, _tree, &StationTree::markShown);
    connect(_selectedButton, SIGNAL(clicked()), this, SLOT(markSelected()));
    connect(_noneButton, &QPushButton::clicked, _tree, &StationTree::clearMarks);
}

void SourcePanel::createLowerRows(QGridLayout *layout)
{
    auto *label = new QLabel(tr("Time:"), this);
    label->setMinimumHeight(_times->sizeHint().height() / 2); // that of the upper of two rows
    layout->addWidget(label, 5, 0, Qt::AlignTop);
    layout->addWidget(_times, 5, 1);
    connect(_times, SIGNAL(changed()), this, SLOT(updateButtons()));

    _statusIcon = new QLabel(this);
    _statusIcon->setFixedWidth(IconSize);
    _status = new QLabel(this);
    _status->setObjectName("status");
    _status->setWordWrap(true);
    _status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    _status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    _progress = new QProgressBar(this);
    _progress->setRange(0, 0);
    _progress->setTextVisible(false);
    _progress->setMaximumWidth(fontMetrics().horizontalAdvance(QString(12, 'M')));
    _cancelButton = new QPushButton(tr("Cancel"), this);
    auto *statusLine = new QHBoxLayout;
    statusLine->addWidget(_statusIcon);
    statusLine->addWidget(_status, 1);
    statusLine->addWidget(_progress);
    statusLine->addWidget(_cancelButton);
    layout->addLayout(statusLine, 6, 0, 1, 2);

    _cached = new QCheckBox(tr("&Keep what comes of the past on disk"), this);
    _cached->setToolTip(tr("What was opened once is there at once the next time"));
    _cached->setChecked(true);
    _openButton = new QPushButton(this);
    _openButton->setObjectName("open");
    _openButton->setDefault(true);
    auto *closeButton = new QPushButton(tr("Close"), this);
    auto *lowest = new QHBoxLayout;
    lowest->addWidget(_cached, 1);
    lowest->addWidget(_openButton);
    lowest->addWidget(closeButton);
    layout->addLayout(lowest, 7, 0, 1, 2);

    connect(_cancelButton, SIGNAL(clicked()), this, SLOT(cancel()));
    connect(_openButton, SIGNAL(clicked()), this, SLOT(open()));
    connect(closeButton, &QPushButton::clicked, this, [this] { window()->hide(); });
}

// What is shown

void SourcePanel::updateHint()
{
    QString text;
    if (!_tree->listing() && !isBusy())
        text = _source.name.isEmpty()
                   ? tr("There is no source: add one")
                   : tr("The stations of %1 are not known yet.\nList them to choose from them.")
                         .arg(_source.name);
    else if (_tree->listing() && _tree->shownCount() == 0)
        text = _tree->listing()->stations.empty() ? tr("The source has no stations")
                                                  : tr("No station fits what is looked for");
    _hint->setText(text);
    _hint->setVisible(!text.isEmpty());
}

void SourcePanel::updateButtons()
{
    const bool isSource = !_source.name.isEmpty();
    _listButton->setEnabled(isSource && !isBusy());
    _testButton->setEnabled(isSource && !isBusy());
    _eventsButton->setEnabled(!_source.events.isEmpty());
    _eventsButton->setToolTip(_source.events.isEmpty()
                                  ? tr("This source has no event service")
                                  : tr("Fetches events of a time and region into the list"));
    _editAction->setEnabled(isSource);
    _removeAction->setEnabled(_source.isOwn);
    _removeAction->setText(_sources.isBuiltIn(_source.name) ? tr("&Back to the built-in one")
                                                            : tr("&Remove"));
    _hideAction->setEnabled(isSource);
    _hideAction->setText(_source.isHidden ? tr("&Show again") : tr("&Hide"));
    _progress->setVisible(isBusy());
    _cancelButton->setVisible(isBusy());
    const bool isChosen = _streamCount > 0;
    _allButton->setEnabled(_tree->shownCount() > 0);
    _selectedButton->setEnabled(_view->selectionModel()->hasSelection());
    _noneButton->setEnabled(isChosen);
    _cached->setEnabled(!_source.past.isEmpty());
    QString obstacle;
    if (!isChosen)
        obstacle = tr("Choose stations first");
    else if (_streamCount > MostStreams)
        obstacle = tr("At most %1 streams can be opened at once").arg(MostStreams);
    else if (!_times->isValid())
        obstacle = tr("The window ends before it begins");
    _openButton->setEnabled(obstacle.isEmpty());
    _openButton->setToolTip(obstacle);
}

QString SourcePanel::statusText() const
{
    return _status->text();
}

void SourcePanel::showStatus(const QString &text, Tone tone)
{
    _status->setText(text);
    // The layout knows nothing of heights for widths, and makes no room by itself.
    const int room = isVisible() ? _status->width() : width();
    _status->setMinimumHeight(std::max(0, _status->heightForWidth(room)));
    const QIcon sign = tone == Tone::Good ? iconSolid(chCheckCircle, GoodColor)
                                          : iconSolid(chExclamationTriangle, BadColor);
    _statusIcon->setPixmap(tone == Tone::Plain ? QPixmap() : sign.pixmap(IconSize, IconSize));
}

QString SourcePanel::listingText() const
{
    const auto &listing = _tree->listing();
    if (!listing)
        return QString();
    QString text = tr("%1 stations, listed %2 UTC")
                       .arg(listing->stations.size())
                       .arg(QString::fromStdString(listing->time.toString("%Y-%m-%d %H:%M")));
    if (listing->window.startTime().valid())
        text += tr(", for %1")
                    .arg(QString::fromStdString(
                        listing->window.startTime().toString("%Y-%m-%d %H:%M")));
    return text;
}

void SourcePanel::showEvent(QShowEvent *event)
{
    Panel::showEvent(event);
    followEvent();
    followStations();
    _placesTimer.start();
}

/** What is only covered or minimised goes on. */
void SourcePanel::hideEvent(QHideEvent *event)
{
    Panel::hideEvent(event);
    if (event->spontaneous())
        return;
    cancel();
    _placesTimer.stop();
    updatePlaces();
}

void SourcePanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        window()->hide();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        open();
    else
        Panel::keyPressEvent(event);
}

// For the window

QList<QAction *> SourcePanel::menuActions(Menu menu) const
{
    return menu == Menu::Open ? QList<QAction *>{toggleAction(), _eventsAction}
                              : QList<QAction *>();
}

void SourcePanel::saveState(QSettings &settings) const
{
    settings.beginGroup(SettingsGroup);
    settings.setValue("source", _source.name);
    settings.setValue("channels", _channels->text());
    settings.setValue("vertical", _vertical->isChecked());
    settings.setValue("cached", _cached->isChecked());
    settings.setValue("time", _times->choice());
    settings.setValue("size", size());
    settings.endGroup();
}

void SourcePanel::restoreState(QSettings &settings)
{
    settings.beginGroup(SettingsGroup);
    const DataSource source = _sources.find(settings.value("source").toString());
    if (!source.name.isEmpty())
        setSource(source);
    _channels->setText(settings.value("channels").toString());
    _vertical->setChecked(settings.value("vertical").toBool());
    _cached->setChecked(settings.value("cached", true).toBool());
    _times->setChoice(settings.value("time").toString());
    const QSize size = settings.value("size").toSize();
    if (size.isValid())
        resize(size);
    settings.endGroup();
}

/** The stations at hand as those of a source. */
void SourcePanel::showExample()
{
    DataSource source;
    source.name = tr("Stations at hand");
    source.live = "seedlink://localhost";
    source.past = "fdsnws+http://localhost";
    source.events = source.past;
    _sourceBox->addItem(source.name, source.name);
    setSource(source);
    StationListing listing = listingOf(bench()->stations()->inventory().networks());
    for (ListedStation &station : listing.stations) {
        for (ListedChannel &channel : station.channels)
            channel.isLive = true;
    }
    listing.time = Core::Time::GMT();
    showListing(std::make_shared<const StationListing>(std::move(listing)));
    _vertical->setChecked(true);
    _times->setChoice("-6h");
    _tree->markShown();
    showStatus(listingText(), Tone::Good);
}

QVector<PanelPicture> SourcePanel::pictures()
{
    SourcePanel example(bench());
    example.showExample();
    example.resize(PictureSize);
    return {{"sources.png", example.grab()}};
}

} // namespace Workbench
