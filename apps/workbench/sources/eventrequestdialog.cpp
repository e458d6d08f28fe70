// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventrequestdialog.h"

#include "bench/bench.h"
#include "bench/mapview.h"

#include <norvu/gui/datetimeedit.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrlQuery>

#include <algorithm>
#include <cmath>
#include <tuple>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr double SecondsAtFirst = 7 * 86400;
constexpr double MagnitudeAtFirst = 4;
constexpr double LeastMagnitude = -3; // stands for none
constexpr double MostMagnitude = 10;  // likewise

Core::Time timeOf(const QDateTime &time)
{
    return Core::Time::FromUSecs(time.toMSecsSinceEpoch() * 1000);
}

QDateTime dateTime(Core::Time time)
{
    return QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC);
}

std::optional<double> boundOf(const QDoubleSpinBox &box, double none)
{
    return box.value() == none ? std::nullopt : std::make_optional(box.value());
}

/** Within -180 and 180. */
double wrapped(double longitude)
{
    return std::abs(longitude) <= 180 ? longitude : std::remainder(longitude, 360);
}

} // namespace

QString eventRequestText(const QString &service, const IO::FdsnEventQuery &query)
{
    IO::FdsnAddress address;
    if (!address.parse(service))
        return QString();
    IO::FdsnEventQuery whole = query;
    // A box across 180 degrees stays one here: whoever asks for it cuts it in two.
    whole.area.west.reset();
    whole.area.east.reset();
    whole.words = address.words();
    IO::FdsnWords words = IO::fdsnWords(whole).front();
    if (query.area.west && query.area.east) {
        words.insert("minlongitude", QString::number(*query.area.west));
        words.insert("maxlongitude", QString::number(*query.area.east));
    }
    QUrlQuery parts;
    for (auto word = words.begin(); word != words.end(); ++word)
        parts.addQueryItem(word.key(),
                           QString::fromLatin1(QUrl::toPercentEncoding(word.value(), ":,")));
    QUrl url = address.url("event", "query");
    url.setQuery(parts);
    return "fdsnws+" + url.toString(QUrl::FullyEncoded);
}

EventRequestDialog::EventRequestDialog(Bench *bench, const QVector<DataSource> &sources,
                                       const QString &name, QWidget *parent)
    : QDialog(parent), _bench(bench), _source(new QComboBox(this)),
      _from(new Norvu::Gui::DateTimeEdit(this)), _to(new Norvu::Gui::DateTimeEdit(this)),
      _least(makeMagnitudeBox(MagnitudeAtFirst)), _most(makeMagnitudeBox(MostMagnitude)),
      _south(makeBox(-90, 90, -90)), _north(makeBox(-90, 90, 90)), _west(makeBox(-180, 180, -180)),
      _east(makeBox(-180, 180, 180)), _stored(new QCheckBox(this)), _problem(new QLabel(this))
{
    setWindowTitle(tr("Fetch events"));
    for (const DataSource &source : sources) {
        if (source.events.isEmpty() || (source.isHidden && source.name != name))
            continue;
        _sources.append(source);
        _source->addItem(source.name);
    }
    _source->setCurrentIndex(std::max(0, _source->findText(name)));
    const QString store = bench->eventStore();
    _stored->setText(store.isEmpty() ? tr("&Store them in the open database")
                                     : tr("&Store them in %1").arg(store));
    _stored->setEnabled(!store.isEmpty());
    _stored->setToolTip(tr("Otherwise they are only looked at, as those of files that are opened"));

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("So&urce:"), _source);
    addTimes(layout);
    addRegion(layout);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    _fetch = buttons->button(QDialogButtonBox::Ok);
    _fetch->setText(tr("&Fetch"));
    layout->addRow(QString(), _stored);
    layout->addRow(_problem);
    layout->addRow(buttons);

    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));
    for (const QDateTimeEdit *edit : {_from, _to})
        connect(edit, SIGNAL(dateTimeChanged(QDateTime)), this, SLOT(check()));
    for (const QDoubleSpinBox *box : {_least, _most, _south, _north})
        connect(box, SIGNAL(valueChanged(double)), this, SLOT(check()));
    check();
}

QDoubleSpinBox *EventRequestDialog::makeBox(double from, double to, double value)
{
    auto *box = new QDoubleSpinBox(this);
    box->setRange(from, to);
    box->setDecimals(2);
    box->setSuffix("°");
    box->setValue(value);
    return box;
}

QDoubleSpinBox *EventRequestDialog::makeMagnitudeBox(double value)
{
    auto *box = new QDoubleSpinBox(this);
    box->setRange(LeastMagnitude, MostMagnitude);
    box->setDecimals(1);
    box->setSingleStep(0.5);
    box->setValue(value);
    return box;
}

QLabel *EventRequestDialog::labelOf(const QString &text, QWidget *buddy)
{
    auto *label = new QLabel(text, this);
    label->setBuddy(buddy);
    return label;
}

void EventRequestDialog::addTimes(QFormLayout *layout)
{
    const Core::Time now = Core::Time::FromUSecs(Core::Time::GMT().seconds() * 1000000);
    const std::pair<QDateTimeEdit *, Core::Time> edits[] = {
        {_from, now - Core::TimeSpan(SecondsAtFirst)}, {_to, now}};
    auto *line = new QHBoxLayout;
    for (const auto &[edit, time] : edits) {
        edit->setDisplayFormat("yyyy-MM-dd HH:mm:ss");
        edit->setDateTime(dateTime(time));
        line->addWidget(edit, 1);
        line->addWidget(new QLabel(edit == _from ? tr("to") : tr("UTC"), this));
    }
    layout->addRow(labelOf(tr("&Time:"), _from), line);

    auto *magnitudes = new QHBoxLayout;
    magnitudes->addWidget(_least);
    magnitudes->addWidget(new QLabel(tr("to"), this));
    magnitudes->addWidget(_most);
    magnitudes->addStretch();
    _least->setSpecialValueText(tr("any"));
    layout->addRow(labelOf(tr("&Magnitude:"), _least), magnitudes);
}

void EventRequestDialog::addRegion(QFormLayout *layout)
{
    auto *world = new QPushButton(tr("The &world"), this);
    auto *map = new QPushButton(tr("What the ma&p shows"), this);
    map->setObjectName("mapRegion");
    map->setEnabled(_bench->mapView()->region().has_value());
    connect(world, SIGNAL(clicked()), this, SLOT(setWorld()));
    connect(map, SIGNAL(clicked()), this, SLOT(setMapRegion()));
    const std::tuple<QString, QDoubleSpinBox *, QDoubleSpinBox *, QPushButton *> rows[] = {
        {tr("L&atitude:"), _south, _north, world}, {tr("L&ongitude:"), _west, _east, map}};
    for (const auto &[text, from, to, button] : rows) {
        auto *line = new QHBoxLayout;
        line->addWidget(from);
        line->addWidget(new QLabel(tr("to"), this));
        line->addWidget(to);
        line->addWidget(button);
        line->addStretch();
        button->setMinimumWidth(map->sizeHint().width());
        layout->addRow(labelOf(text, from), line);
    }
}

void EventRequestDialog::setWorld()
{
    _south->setValue(-90);
    _north->setValue(90);
    _west->setValue(-180);
    _east->setValue(180);
}

void EventRequestDialog::setMapRegion()
{
    const QRectF bounds = _bench->mapView()->region()->bounds();
    // To the outside, so that nothing is lost at the edges.
    _south->setValue(std::max(-90., std::floor(bounds.top() * 100) / 100));
    _north->setValue(std::min(90., std::ceil(bounds.bottom() * 100) / 100));
    const bool isAround = bounds.width() >= 360;
    _west->setValue(isAround ? -180 : wrapped(std::floor(bounds.left() * 100) / 100));
    _east->setValue(isAround ? 180 : wrapped(std::ceil(bounds.right() * 100) / 100));
}

void EventRequestDialog::check()
{
    QString problem;
    if (_sources.isEmpty())
        problem = tr("No source has an event service: add the address of one to a source.");
    else if (_from->dateTime() >= _to->dateTime())
        problem = tr("The time ends before it begins.");
    else if (_least->value() > _most->value())
        problem = tr("The lower magnitude is above the upper one.");
    else if (_south->value() >= _north->value())
        problem = tr("The southern latitude is not below the northern one.");
    _problem->setText(problem);
    _problem->setVisible(!problem.isEmpty());
    _fetch->setEnabled(problem.isEmpty());
}

IO::FdsnEventQuery EventRequestDialog::query() const
{
    IO::FdsnEventQuery query;
    query.window = {timeOf(_from->dateTime()), timeOf(_to->dateTime())};
    query.minimumMagnitude = boundOf(*_least, LeastMagnitude);
    query.maximumMagnitude = boundOf(*_most, MostMagnitude);
    query.area.south = boundOf(*_south, -90);
    query.area.north = boundOf(*_north, 90);
    if (_west->value() != -180 || _east->value() != 180) {
        query.area.west = _west->value();
        query.area.east = _east->value();
    }
    return query;
}

QString EventRequestDialog::request() const
{
    const int index = _source->currentIndex();
    return index < 0 ? QString()
                     : eventRequestText(_sources[index].withUserInAddresses().events, query());
}

bool EventRequestDialog::isStored() const
{
    return _stored->isChecked();
}

} // namespace Workbench
