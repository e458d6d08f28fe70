// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventscommand.h"

#include "windowoptions.h"

#include <tellarix/client/io/eventline.h>
#include <tellarix/client/io/eventreader.h>
#include <tellarix/client/io/eventwriter.h>
#include <tellarix/client/remote/fdsnservice.h>
#include <tellarix/core/strings.h>

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>

#include <cstdio>
#include <utility>
#include <vector>

namespace Tellarix {
namespace Tool {

namespace {

const auto DatabaseOption = QStringLiteral("db");
const QStringList Actions{QStringLiteral("create"), QStringLiteral("import"),
                          QStringLiteral("list"), QStringLiteral("export")};
const QStringList Forms{QStringLiteral("json"), QStringLiteral("csv"), QStringLiteral("quakeml"),
                        QStringLiteral("geojson")};

/** The options for bounds, and what they set. */
std::vector<std::pair<QString, std::optional<double> *>> boundsOf(IO::EventSelection &selection)
{
    return {{"min-magnitude", &selection.minimumMagnitude},
            {"max-magnitude", &selection.maximumMagnitude},
            {"min-latitude", &selection.minimumLatitude},
            {"max-latitude", &selection.maximumLatitude},
            {"min-longitude", &selection.minimumLongitude},
            {"max-longitude", &selection.maximumLongitude},
            {"min-depth", &selection.minimumDepthKm},
            {"max-depth", &selection.maximumDepthKm}};
}

QString numberText(const std::optional<double> &value, int decimals)
{
    return value ? QString::number(*value, 'f', decimals) : QStringLiteral("-");
}

/** The address of a web service without login and words. */
QString serviceName(const QString &text)
{
    IO::FdsnAddress address;
    address.parse(text);
    return address.name();
}

QString tableLine(const IO::EventLine &event)
{
    return QStringLiteral("%1  %2 %3  %4 %5 %6  %7  %8\n")
        .arg(event.time.valid() ? event.time.toString("%Y-%m-%d %H:%M:%S.%1f").c_str() : "-", -21)
        .arg(numberText(event.magnitude, 1), 4)
        .arg(event.magnitudeType.c_str(), -4)
        .arg(numberText(event.latitude, 3), 8)
        .arg(numberText(event.longitude, 3), 9)
        .arg(numberText(event.depthKm, 1), 6)
        .arg(QString::fromStdString(event.id).leftJustified(24),
             QString::fromStdString(event.region));
}

} // namespace

QString EventsCommand::summary() const
{
    return tr("Make, fill, list and export event databases.");
}

void EventsCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(tr(
        "create   makes the tables of an empty database\n"
        "import   stores the events of QuakeML, CSV or FDSN text files, each file as a whole or\n"
        "         not at all; a new database gets its tables first, events that are there are\n"
        "         updated. \"fdsnws+https://HOST?minmagnitude=5&...\" is the web service of a\n"
        "         data centre, with any words of it; the options below narrow what it is asked\n"
        "list     prints one line for each event, or all in one of the forms\n"
        "export   writes a file, as QuakeML, CSV or GeoJSON, by its suffix or as an option says\n"
        "\n"
        "Status: 0, 1 if something could not be read or stored, 2 if the command line is wrong."));
    parser.addPositionalArgument(tr("ACTION"), tr("create, import, list or export."), tr("ACTION"));
    parser.addPositionalArgument(
        tr("FILE"), tr("Files or addresses to import, or the file to export to."), tr("[FILE...]"));
    parser.addOptions({
        {DatabaseOption,
         tr("sqlite:///FILE, postgresql://USER@HOST/DATABASE or mysql://USER@HOST/DATABASE."),
         tr("URL")},
        {FromOption, tr("Only events from this time on, e.g. 2024-01-05T10:11:12."), tr("TIME")},
        {ToOption, tr("Only events up to this time."), tr("TIME")},
        {QStringLiteral("json"), tr("Print a JSON array with an object per event.")},
        {QStringLiteral("csv"), tr("The same as lines of CSV.")},
        {QStringLiteral("quakeml"), tr("QuakeML 1.2, with all solutions.")},
        {QStringLiteral("geojson"), tr("GeoJSON, a point per event.")},
    });
    IO::EventSelection none;
    for (const auto &[option, field] : boundsOf(none)) {
        parser.addOption({option,
                          option.startsWith(QLatin1String("min")) ? tr("Only from this bound on.")
                                                                  : tr("Only up to this bound."),
                          tr("NUMBER")});
    }
}

bool EventsCommand::readArguments(const QCommandLineParser &parser, const QStringList &arguments,
                                  QString *error)
{
    _url = parser.value(DatabaseOption);
    if (!readAction(arguments, error))
        return false;
    if (_url.isEmpty()) {
        *error = tr("no database given: --db URL");
        return false;
    }
    return readForm(parser, error) && readSelection(parser, error);
}

bool EventsCommand::readAction(const QStringList &arguments, QString *error)
{
    const QString word = arguments.value(0);
    const int action = Actions.indexOf(word);
    _files = arguments.mid(1);
    if (action < 0)
        *error = word.isEmpty() ? tr("no action given") : tr("unknown action \"%1\"").arg(word);
    else if (action == Import && _files.isEmpty())
        *error = tr("no file to import given");
    else if (action == Export && _files.size() != 1)
        *error = tr("one file to export to wanted, but %1 given").arg(_files.size());
    else if (action != Import && action != Export && !_files.isEmpty())
        *error = tr("%1 takes no file, but \"%2\" given").arg(word, _files.first());
    else {
        _action = static_cast<Action>(action);
        return true;
    }
    return false;
}

bool EventsCommand::readForm(const QCommandLineParser &parser, QString *error)
{
    for (const QString &form : Forms) {
        if (!parser.isSet(form))
            continue;
        if (!_form.isEmpty()) {
            *error = tr("--%1 and --%2 can't both be").arg(_form, form);
            return false;
        }
        _form = form;
    }
    if (_action != Export)
        return true;
    if (_form.isEmpty())
        _form = IO::EventWriter::FormOf(_files.first());
    if (_form != QLatin1String("json") && Forms.contains(_form))
        return true;
    *error = tr("%1: say --quakeml, --csv or --geojson").arg(_files.first());
    return false;
}

bool EventsCommand::readSelection(const QCommandLineParser &parser, QString *error)
{
    Core::TimeWindow window;
    if (!readWindow(parser, WindowEnd::Included, &window, error))
        return false;
    _selection.from = window.startTime();
    _selection.to = window.endTime();
    for (const auto &[option, field] : boundsOf(_selection)) {
        if (!parser.isSet(option))
            continue;
        double value = 0;
        if (!Core::fromString(value, parser.value(option).toStdString())) {
            *error = tr("--%1: \"%2\" is no number").arg(option, parser.value(option));
            return false;
        }
        *field = value;
    }
    return true;
}

int EventsCommand::run()
{
    QString error;
    const IO::DatabaseInterfacePtr database = IO::DatabaseInterface::Open(_url, &error);
    if (!database) {
        printError(error);
        return 1;
    }
    bool done = false;
    switch (_action) {
    case Create:
        done = create(database);
        break;
    case Import:
        done = import(database);
        break;
    case List:
        done = list(database);
        break;
    case Export:
        done = exportFile(database);
        break;
    }
    return done ? 0 : 1;
}

bool EventsCommand::create(const IO::DatabaseInterfacePtr &database)
{
    QString error;
    if (IO::EventArchive::createSchema(*database, &error))
        return true;
    printError(error);
    return false;
}

bool EventsCommand::import(const IO::DatabaseInterfacePtr &database)
{
    QString error;
    // Before the database, which a slip in a name must not leave behind.
    for (const QString &name : qAsConst(_files)) {
        QFile file(name);
        IO::FdsnAddress address;
        if (IO::FdsnAddress::IsOne(name) ? !address.parse(name, &error)
                                         : !IO::openEventFile(file, &error)) {
            printError(error);
            return false;
        }
    }
    if (!IO::EventArchive::ensureSchema(*database, &error)) {
        printError(error);
        return false;
    }
    bool complete = true;
    for (const QString &file : qAsConst(_files))
        complete = !_interrupted && importFile(database, file) && complete;
    return complete;
}

bool EventsCommand::importFile(const IO::DatabaseInterfacePtr &database, const QString &file)
{
    const bool isService = IO::FdsnAddress::IsOne(file);
    const QString name = isService ? serviceName(file) : file;
    const IO::EventImportResult result =
        isService
            ? importService(database, file)
            : IO::importEvents(database, file, [this](qint64, qint64) { return !_interrupted; });
    for (const QString &warning : result.warnings)
        printError(warning);
    if (!result.ok) {
        printError(result.error.isEmpty() ? tr("%1: interrupted, nothing stored").arg(name)
                                          : result.error);
        return false;
    }
    return printOutput(
        tr("%1: %2 events added, %3 updated\n")
            .arg(name, QString::number(result.added), QString::number(result.updated)));
}

IO::EventImportResult EventsCommand::importService(const IO::DatabaseInterfacePtr &database,
                                                   const QString &url)
{
    IO::FdsnAddress address;
    address.parse(url);
    IO::FdsnEventQuery query;
    query.window = Core::TimeWindow(_selection.from, _selection.to);
    query.area.south = _selection.minimumLatitude;
    query.area.north = _selection.maximumLatitude;
    query.area.west = _selection.minimumLongitude;
    query.area.east = _selection.maximumLongitude;
    query.minimumDepthKm = _selection.minimumDepthKm;
    query.maximumDepthKm = _selection.maximumDepthKm;
    query.minimumMagnitude = _selection.minimumMagnitude;
    query.maximumMagnitude = _selection.maximumMagnitude;
    query.words = address.words();

    IO::FdsnService service(address);
    const RunningService::Guard guard(_service, [&] { service.cancel(); });
    const auto source = [&](const IO::EventReadHandler &handler, QString *error) {
        return service.readEvents(query, handler, error);
    };
    return IO::importEvents(database, service.name(), source,
                            [this](qint64, qint64) { return !_interrupted; });
}

void EventsCommand::interrupt()
{
    _interrupted = true;
    _service.interrupt();
}

bool EventsCommand::list(const IO::DatabaseInterfacePtr &database)
{
    QString error;
    if (!IO::EventArchive::checkSchema(*database, &error)) {
        printError(error);
        return false;
    }
    if (_form == QLatin1String("json"))
        return printJson(database);
    if (_form.isEmpty())
        return printTable(database);

    QFile output;
    return output.open(stdout, QIODevice::WriteOnly) &&
           report(IO::exportEvents(database, _selection, _form, output, interruptible()));
}

IO::EventExportHandler EventsCommand::interruptible() const
{
    IO::EventExportHandler handler;
    handler.progress = [this](int, int) { return !_interrupted; };
    return handler;
}

bool EventsCommand::report(const IO::EventExportResult &result, const QString &name) const
{
    if (!result.ok) {
        const QString cause = result.error.isEmpty() ? tr("interrupted") : result.error;
        printError(name.isEmpty() ? cause : tr("%1: %2").arg(name, cause));
    }
    return result.ok;
}

bool EventsCommand::printJson(const IO::DatabaseInterfacePtr &database)
{
    QString error;
    QString separator = QStringLiteral("[");
    Output output;
    bool printed = true;
    const bool read = IO::EventArchive(database).forEach(
        _selection,
        [&](const DataModel::EventPtr &event) {
            const QJsonDocument object(IO::EventLine::Of(*event).toJson());
            printed = output.add(separator + QLatin1Char('\n') +
                                 QString::fromUtf8(object.toJson(QJsonDocument::Compact)));
            separator = QStringLiteral(",");
            return printed && !_interrupted;
        },
        &error);
    if (!error.isEmpty())
        printError(error);
    const QString end =
        separator == QLatin1String("[") ? QStringLiteral("[]\n") : QStringLiteral("\n]\n");
    return printed && output.add(end) && output.flush() && read;
}

bool EventsCommand::printTable(const IO::DatabaseInterfacePtr &database)
{
    QString error;
    int count = 0;
    Output output;
    bool printed = true;
    const bool read = IO::EventArchive(database).forEach(
        _selection,
        [&](const DataModel::EventPtr &event) {
            ++count;
            printed = output.add(tableLine(IO::EventLine::Of(*event)));
            return printed && !_interrupted;
        },
        &error);
    if (!error.isEmpty())
        printError(error);
    return printed && output.add(tr("%1 events\n").arg(count)) && output.flush() && read;
}

bool EventsCommand::exportFile(const IO::DatabaseInterfacePtr &database)
{
    const QString &name = _files.first();
    QString error;
    if (!IO::EventArchive::checkSchema(*database, &error)) {
        printError(tr("%1: %2").arg(name, error));
        return false;
    }
    return report(IO::exportEvents(database, _selection, _form, name, interruptible()), name);
}

} // namespace Tool
} // namespace Tellarix
