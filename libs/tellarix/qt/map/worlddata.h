// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QByteArray>
#include <QPointF>
#include <QString>
#include <QVector>

#include <array>
#include <memory>
#include <mutex>

namespace Tellarix {
namespace Gui {
namespace Map {

/** A place in whole steps; WorldShapes tells how many of them are a degree. */
struct WorldNode
{
    qint32 east;
    qint32 north;
};

/** The least rectangle about some nodes, edges included. */
struct WorldBox
{
    qint32 west;
    qint32 east;
    qint32 south;
    qint32 north;
};

/** Rings or lines of one kind at one scale, in the order of the file. */
struct WorldShapes
{
    /** So many nodes share a box; the last ones of a shape may be fewer. */
    static constexpr int ChunkLength = 64;

    struct Shape
    {
        int rank; /**< 0 for what is shown first, 15 for what is shown last */
        int first;
        int count;
        int firstChunk;
        WorldBox box;
    };

    int stepsPerDegree{1};
    QVector<Shape> shapes;
    QVector<WorldNode> nodes; /**< of all shapes; a ring's last node isn't its first again */
    QVector<WorldBox> chunks; /**< of all shapes */
};

/** A town, most important ones first. */
struct WorldPlace
{
    QPointF position; /**< longitude in x, latitude in y */
    int rank;         /**< 0 for what is shown first, 15 for what is shown last */
    bool capital;     /**< of a country */
    QString name;
};

/** Reads what a block of shapes unpacks to; false, with both arguments unchanged but for @p error,
 *  if it is damaged. Takes no more memory than some times the data's. */
TELLARIX_GUI_API bool decodeWorldShapes(WorldShapes *shapes, QString *error,
                                        const QByteArray &data);
/** The same for places. */
TELLARIX_GUI_API bool decodeWorldPlaces(QVector<WorldPlace> *places, QString *error,
                                        const QByteArray &data);

/**
 * Coast lines, lakes, rivers, borders and towns from a file that comes with the framework.
 *
 * Each kind at each scale is read when it is first asked for. Objects of this class may be used by
 * several threads at once.
 */
class TELLARIX_GUI_API WorldData
{
public:
    /** How much is left out: drawn for maps of 1:110, 1:50 and 1:10 million. */
    enum Scale
    {
        Coarse,
        Medium,
        Fine
    };
    enum Kind
    {
        Land,            /**< rings; lakes belong to the land */
        Lakes,           /**< rings, with islands as rings the other way round */
        Rivers,          /**< lines */
        Borders,         /**< of countries; lines */
        DisputedBorders, /**< borders that not all sides agree on; lines */
        Provinces,       /**< borders within countries; lines, at the fine scale only */
        Places
    };
    static constexpr int ScaleCount = 3;
    static constexpr int KindCount = 7;

    /** Reads the table of contents. A file that can't be used is told to the log, and has nothing
     *  of any kind. */
    explicit WorldData(const QString &fileName = installedFile());
    ~WorldData();

    /** "map/world.dat" below the share directory. */
    static QString installedFile();
    /** The installed file's data, shared by all who ask. */
    static std::shared_ptr<const WorldData> installed();

    const QString &fileName() const { return _fileName; }
    /** What is wrong with the file, with its name; empty as long as nothing is. */
    QString error() const;

    /** Never null; without shapes if the file has none of the kind or they are damaged. */
    std::shared_ptr<const WorldShapes> shapes(Scale scale, Kind kind) const;
    /** Never null. */
    std::shared_ptr<const QVector<WorldPlace>> places() const;

private:
    struct Block
    {
        quint32 offset{0};
        quint32 length{0};      /**< in the file; 0 if there is none */
        quint32 plainLength{0}; /**< unpacked */
        QByteArray digest;
    };

    bool readContents();
    bool unpack(QByteArray *data, QString *error, const Block &block) const;
    void report(const QString &error) const;

    const QString _fileName;
    std::array<std::array<Block, KindCount>, ScaleCount> _blocks;

    mutable std::mutex _mutex; /**< guards what follows */
    mutable std::array<std::array<std::shared_ptr<const WorldShapes>, KindCount>, ScaleCount>
        _shapes;
    mutable std::shared_ptr<const QVector<WorldPlace>> _places;
    mutable QString _error;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
