// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/worlddata.h>

#include <tellarix/core/environment.h>
#include <tellarix/core/logging.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDataStream>
#include <QFile>
#include <QtEndian>

#include <algorithm>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

constexpr char Magic[] = "Tellarix world map ";
constexpr char Header[] =
    "Tellarix world map 1\nSPDX-License-Identifier: LicenseRef-Public-Domain\n";
constexpr int DigestLength = 20;
/** Of a block in the table of contents. */
constexpr int EntryLength = 14 + DigestLength;
/** No block of ours comes near to it; one that claims more is damaged. */
constexpr quint32 LargestBlock = 1u << 26;
constexpr int HighestRank = 15;

QString translated(const char *text)
{
    return QCoreApplication::translate("Tellarix::Gui::Map::WorldData", text);
}

QByteArray digestOf(const QByteArray &data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha1);
}

/** Takes numbers of one to five bytes of seven bits each, lowest first, off the front of a block.
 *  Behind its end, and behind a number that is too long, there are only zeros. */
class NumberReader
{
public:
    explicit NumberReader(const QByteArray &data)
        : _next(reinterpret_cast<const uchar *>(data.constData())), _end(_next + data.size())
    {}

    bool failed() const { return _failed; }
    int bytesLeft() const { return static_cast<int>(_end - _next); }

    quint32 number()
    {
        quint32 result = 0;
        for (int shift = 0; shift < 35 && _next != _end; shift += 7) {
            const uchar byte = *_next++;
            result |= static_cast<quint32>(byte & 127) << shift;
            if (byte < 128)
                return result;
        }
        _failed = true;
        _next = _end;
        return 0;
    }

    /** Of either sign: 0, -1, 1, -2, ... are 0, 1, 2, 3. */
    qint32 step()
    {
        const quint32 value = number();
        return static_cast<qint32>(value >> 1) ^ -static_cast<qint32>(value & 1);
    }

    /** A number of things that take at least @p bytesEach; 0 if there can't be so many. */
    int count(int bytesEach)
    {
        const quint32 value = number();
        if (value <= static_cast<quint32>(bytesLeft() / bytesEach))
            return static_cast<int>(value);
        _failed = true;
        return 0;
    }

    QByteArray bytes(int length)
    {
        const QByteArray result(reinterpret_cast<const char *>(_next), length);
        _next += length;
        return result;
    }

private:
    const uchar *_next;
    const uchar *_end;
    bool _failed{false};
};

/** Sums steps up; places beyond the globe's edges fail. */
class Coordinate
{
public:
    Coordinate(int degrees, int stepsPerDegree) : _limit(degrees * stepsPerDegree) {}

    qint32 moved(qint32 step)
    {
        _value += step;
        if (_value < -_limit || _value > _limit) {
            _failed = true;
            _value = 0;
        }
        return static_cast<qint32>(_value);
    }
    bool failed() const { return _failed; }

private:
    qint64 _limit;
    qint64 _value{0};
    bool _failed{false};
};

bool isStepsPerDegree(quint32 steps)
{
    return steps >= 1 && steps <= 1000000;
}

WorldBox boxOf(const WorldNode *nodes, int count)
{
    WorldBox box{nodes->east, nodes->east, nodes->north, nodes->north};
    for (int i = 1; i < count; ++i) {
        box.west = std::min(box.west, nodes[i].east);
        box.east = std::max(box.east, nodes[i].east);
        box.south = std::min(box.south, nodes[i].north);
        box.north = std::max(box.north, nodes[i].north);
    }
    return box;
}

void addBoxes(WorldShapes *shapes)
{
    for (WorldShapes::Shape &shape : shapes->shapes) {
        shape.firstChunk = shapes->chunks.size();
        for (int i = 0; i < shape.count; i += WorldShapes::ChunkLength) {
            shapes->chunks.append(boxOf(shapes->nodes.constData() + shape.first + i,
                                        std::min(WorldShapes::ChunkLength, shape.count - i)));
        }
        shape.box = boxOf(shapes->nodes.constData() + shape.first, shape.count);
    }
}

/** Ranks and counts of the shapes; false if they aren't @p nodeCount together. */
bool readShapes(WorldShapes *shapes, NumberReader &reader, int shapeCount, int nodeCount)
{
    shapes->shapes.resize(shapeCount);
    int first = 0;
    for (WorldShapes::Shape &shape : shapes->shapes) {
        const quint32 rank = reader.number();
        const quint32 count = reader.number();
        if (rank > HighestRank || count < 2 || count > static_cast<quint32>(nodeCount - first))
            return false;
        shape.rank = static_cast<int>(rank);
        shape.first = first;
        shape.count = static_cast<int>(count);
        first += shape.count;
    }
    return first == nodeCount;
}

} // namespace

bool decodeWorldShapes(WorldShapes *shapes, QString *error, const QByteArray &data)
{
    *error = translated("the shapes are damaged");
    NumberReader reader(data);
    const quint32 steps = reader.number();
    const int shapeCount = reader.count(2);
    const int nodeCount = reader.count(2);
    WorldShapes result;
    if (!isStepsPerDegree(steps) || reader.failed() ||
        !readShapes(&result, reader, shapeCount, nodeCount))
        return false;

    result.stepsPerDegree = static_cast<int>(steps);
    result.nodes.resize(nodeCount);
    Coordinate longitude(180, result.stepsPerDegree);
    for (WorldNode &node : result.nodes)
        node.east = longitude.moved(reader.step());
    Coordinate latitude(90, result.stepsPerDegree);
    for (WorldNode &node : result.nodes)
        node.north = latitude.moved(reader.step());
    if (reader.failed() || longitude.failed() || latitude.failed() || reader.bytesLeft())
        return false;

    addBoxes(&result);
    *shapes = std::move(result);
    error->clear();
    return true;
}

bool decodeWorldPlaces(QVector<WorldPlace> *places, QString *error, const QByteArray &data)
{
    *error = translated("the towns are damaged");
    NumberReader reader(data);
    const quint32 steps = reader.number();
    const int count = reader.count(4);
    if (!isStepsPerDegree(steps) || reader.failed())
        return false;

    QVector<WorldPlace> result(count);
    for (WorldPlace &place : result) {
        const quint32 rank = reader.number();
        Coordinate longitude(180, static_cast<int>(steps));
        Coordinate latitude(90, static_cast<int>(steps));
        place.position.setX(longitude.moved(reader.step()) / double(steps));
        place.position.setY(latitude.moved(reader.step()) / double(steps));
        place.capital = rank & 1;
        place.rank = static_cast<int>(rank >> 1);
        place.name = QString::fromUtf8(reader.bytes(reader.count(1)));
        if (reader.failed() || longitude.failed() || latitude.failed() || place.rank > HighestRank)
            return false;
    }
    if (reader.bytesLeft())
        return false;

    *places = std::move(result);
    error->clear();
    return true;
}

QString WorldData::installedFile()
{
    return QString::fromStdString(Environment::Instance()->shareDirectory()) +
           QStringLiteral("/map/world.dat");
}

std::shared_ptr<const WorldData> WorldData::installed()
{
    static const auto data = std::make_shared<const WorldData>();
    return data;
}

WorldData::WorldData(const QString &fileName) : _fileName(fileName)
{
    if (!readContents())
        _blocks = {};
}

WorldData::~WorldData() = default;

QString WorldData::error() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _error;
}

void WorldData::report(const QString &error) const
{
    const QString message = translated("%1: %2; the map lacks what it holds").arg(_fileName, error);
    qCWarning(Log::gui, "%s", qPrintable(message));
    if (_error.isEmpty())
        _error = message;
}

bool WorldData::readContents()
{
    QFile file(_fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        report(file.errorString());
        return false;
    }
    constexpr int HeaderLength = sizeof(Header) - 1;
    QByteArray head = file.read(HeaderLength + 2);
    if (!head.startsWith(Header)) {
        report(head.startsWith(Magic) ? translated("its version is not known")
                                      : translated("it is no world map"));
        return false;
    }
    const int count = head.size() < HeaderLength + 2
                          ? 0
                          : qFromBigEndian<quint16>(head.constData() + HeaderLength);
    head += file.read(count * EntryLength);
    if (count == 0 || file.read(DigestLength) != digestOf(head)) {
        report(translated("its table of contents is damaged"));
        return false;
    }

    QDataStream stream(head.mid(HeaderLength + 2));
    for (int i = 0; i < count; ++i) {
        quint8 scale = 0, kind = 0;
        Block block;
        block.digest.resize(DigestLength);
        stream >> scale >> kind >> block.offset >> block.length >> block.plainLength;
        stream.readRawData(block.digest.data(), DigestLength);
        if (scale < ScaleCount && kind < KindCount && block.plainLength <= LargestBlock)
            _blocks[scale][kind] = block;
    }
    return true;
}

bool WorldData::unpack(QByteArray *data, QString *error, const Block &block) const
{
    QFile file(_fileName);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(block.offset)) {
        *error = file.errorString();
        return false;
    }
    // Qt wants the length before the packed data.
    QByteArray packed(4, 0);
    qToBigEndian(block.plainLength, packed.data());
    const QByteArray body = file.read(qMin<qint64>(block.length, file.size()));
    if (digestOf(body) != block.digest) {
        *error = translated("the checksum at byte %1 is wrong").arg(block.offset);
        return false;
    }
    *data = qUncompress(packed + body);
    *error = translated("the data at byte %1 can't be unpacked").arg(block.offset);
    return static_cast<quint32>(data->size()) == block.plainLength;
}

std::shared_ptr<const WorldShapes> WorldData::shapes(Scale scale, Kind kind) const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    auto &kept = _shapes[scale][kind];
    if (kept)
        return kept;

    const auto shapes = std::make_shared<WorldShapes>();
    const Block &block = _blocks[scale][kind];
    QByteArray data;
    QString error;
    if (block.length > 0 && kind != Places &&
        !(unpack(&data, &error, block) && decodeWorldShapes(shapes.get(), &error, data)))
        report(error);
    kept = shapes;
    return kept;
}

std::shared_ptr<const QVector<WorldPlace>> WorldData::places() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_places)
        return _places;

    const auto places = std::make_shared<QVector<WorldPlace>>();
    const Block &block = _blocks[Coarse][Places];
    QByteArray data;
    QString error;
    if (block.length > 0 &&
        !(unpack(&data, &error, block) && decodeWorldPlaces(places.get(), &error, data)))
        report(error);
    _places = places;
    return _places;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
