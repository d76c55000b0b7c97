#include "PictureBudget.h"

#include <QList>
#include <QRect>

#include <algorithm>

namespace {

constexpr quint32 WmfPlaceableKey = 0x9AC6CDD7;
constexpr qsizetype WmfPlaceableSize = 22, WmfHeaderSize = 18;

QString TooMuch(const char *what)
{
    return QStringLiteral("the picture %1 than a skin may cost").arg(QLatin1String(what));
}

// Calls `each(at, type or function, size in bytes)` for every record up to
// the end record; the records were found whole (PictureFormats.h).
template<typename Each>
void EachEmfRecord(QByteArrayView file, Each each)
{
    for (qsizetype at = 0; at + 8 <= file.size();) {
        const quint32 type = Le32(file, at), size = Le32(file, at + 4);
        if (type == 14 || size < 8 || size > file.size() - at)
            return;
        each(at, type, qsizetype(size));
        at += size;
    }
}

template<typename Each>
void EachWmfRecord(QByteArrayView file, Each each)
{
    qsizetype at = (file.size() >= 4 && Le32(file, 0) == WmfPlaceableKey ? WmfPlaceableSize : 0)
        + WmfHeaderSize;
    while (at + 6 <= file.size()) {
        const qint64 size = qint64(Le32(file, at)) * 2;
        const quint16 function = Le16(file, at + 4);
        if (function == 0 || size < 6 || size > file.size() - at)
            return;
        each(at, function, qsizetype(size));
        at += size;
    }
}

// EMF records that only change the state a later drawing uses.
bool EmfStateOnly(quint32 type)
{
    return (type >= 9 && type <= 40) || (type >= 48 && type <= 52) || (type >= 57 && type <= 61)
        || (type >= 65 && type <= 68) || type == 70 || type == 75 || type == 82 || type == 95
        || (type >= 98 && type <= 101) || type == 115;
}

enum class WmfKind { State, Mapping, Box, Points, PolyPoints, LineTo, MoveTo, Whole };

// How a WMF record draws: not at all, by changing how coordinates map, in
// a box given by its last four parameters, along points, or somewhere its
// parameters do not bound (text, fills, regions, and what is unknown).
WmfKind KindOf(quint16 function)
{
    switch (function) {
    case 0x020B: // SETWINDOWORG
    case 0x020C: // SETWINDOWEXT
    case 0x020D: // SETVIEWPORTORG
    case 0x020E: // SETVIEWPORTEXT
    case 0x020F: // OFFSETWINDOWORG
    case 0x0211: // OFFSETVIEWPORTORG
    case 0x0410: // SCALEWINDOWEXT
    case 0x0412: // SCALEVIEWPORTEXT
    case 0x0103: // SETMAPMODE
    case 0x0127: // RESTOREDC
        return WmfKind::Mapping;
    case 0x041B: // RECTANGLE
    case 0x0418: // ELLIPSE
    case 0x061C: // ROUNDRECT
    case 0x0817: // ARC
    case 0x081A: // PIE
    case 0x0830: // CHORD
        return WmfKind::Box;
    case 0x0324: // POLYGON
    case 0x0325: // POLYLINE
        return WmfKind::Points;
    case 0x0538: // POLYPOLYGON
        return WmfKind::PolyPoints;
    case 0x0213:
        return WmfKind::LineTo;
    case 0x0214:
        return WmfKind::MoveTo;
    case 0x0102: // SETBKMODE
    case 0x0104: // SETROP2
    case 0x0106: // SETPOLYFILLMODE
    case 0x0107: // SETSTRETCHBLTMODE
    case 0x0108: // SETTEXTCHAREXTRA
    case 0x0201: // SETBKCOLOR
    case 0x0209: // SETTEXTCOLOR
    case 0x012E: // SETTEXTALIGN
    case 0x001E: // SAVEDC
    case 0x012D: // SELECTOBJECT
    case 0x01F0: // DELETEOBJECT
    case 0x02FA: // CREATEPENINDIRECT
    case 0x02FC: // CREATEBRUSHINDIRECT
    case 0x02FB: // CREATEFONTINDIRECT
    case 0x00F7: // CREATEPALETTE
    case 0x0234: // SELECTPALETTE
    case 0x0035: // REALIZEPALETTE
    case 0x0037: // SETPALENTRIES
    case 0x0231: // SETMAPPERFLAGS
    case 0x0626: // ESCAPE
    case 0x012C: // SELECTCLIPREGION
    case 0x0415: // EXCLUDECLIPRECT
    case 0x0416: // INTERSECTCLIPRECT
    case 0x0220: // OFFSETCLIPRGN
        return WmfKind::State;
    default:
        return WmfKind::Whole;
    }
}

struct Drawn
{
    int segment;
    QRect box; // empty: anywhere on the device
};

void Extend(QRect &box, int x, int y)
{
    const QRect point(x, y, 1, 1);
    box = box.isEmpty() ? point : box.united(point);
}

double Area(const QRect &box)
{
    return double(box.width()) * box.height();
}

} // namespace

QString CheckMetafileRecords(PictureFormat format, QByteArrayView file)
{
    if (file.size() > MaxMetafileBytes)
        return TooMuch("file is larger");
    qsizetype records = 0;
    const auto count = [&records](qsizetype, quint32, qsizetype) { ++records; };
    if (format == PictureFormat::Emf)
        EachEmfRecord(file, count);
    else
        EachWmfRecord(file, count);
    return records > MaxMetafileRecords ? TooMuch("has more records") : QString();
}

QString CheckEmfWork(QByteArrayView file, QSize device)
{
    const qint64 whole = qint64(device.width()) * device.height();
    qint64 work = 0;
    bool inPath = false; // a path's pieces draw only when it is filled or stroked
    EachEmfRecord(file, [&](qsizetype, quint32 type, qsizetype) {
        if (type == 59)
            inPath = true;
        else if (type == 60 || type == 68)
            inPath = false;
        else if (!inPath && type != 1 && !EmfStateOnly(type))
            work += whole;
    });
    return work > MaxEmfPixelWork ? TooMuch("draws more") : QString();
}

// The library fits everything the metafile draws onto the device: within a
// stretch of records that share one mapping, a record can fill no more of
// it than its box's share of all their boxes.
QString CheckWmfWork(QByteArrayView file, QSize device)
{
    QList<Drawn> drawn;
    QList<QRect> segments {QRect()};
    QPoint current;
    EachWmfRecord(file, [&](qsizetype at, quint16 function, qsizetype size) {
        const qsizetype params = at + 6, words = (size - 6) / 2;
        const auto param = [&](qsizetype i) { return int(LeI16(file, params + 2 * i)); };
        QRect box;
        switch (KindOf(function)) {
        case WmfKind::State:
            return;
        case WmfKind::Mapping:
            if (!segments.last().isEmpty())
                segments.append(QRect());
            return;
        case WmfKind::MoveTo:
            if (words >= 2)
                current = QPoint(param(1), param(0));
            return;
        case WmfKind::LineTo:
            if (words >= 2) {
                Extend(box, current.x(), current.y());
                current = QPoint(param(1), param(0));
                Extend(box, current.x(), current.y());
            }
            break;
        case WmfKind::Box:
            if (words >= 4) {
                Extend(box, param(words - 1), param(words - 2));
                Extend(box, param(words - 3), param(words - 4));
            }
            break;
        case WmfKind::Points:
        case WmfKind::PolyPoints: {
            qsizetype first = 1, points = words >= 1 ? param(0) & 0xFFFF : 0;
            if (KindOf(function) == WmfKind::PolyPoints) {
                first = 1 + points;
                qsizetype total = 0;
                for (qsizetype i = 1; i <= points && i < words; ++i)
                    total += param(i) & 0xFFFF;
                points = total;
            }
            for (qsizetype i = 0; i < points && first + 2 * i + 1 < words; ++i)
                Extend(box, param(first + 2 * i), param(first + 2 * i + 1));
            break;
        }
        case WmfKind::Whole:
            break;
        }
        if (!box.isEmpty())
            segments.last() = segments.last().united(box);
        drawn.append({int(segments.size() - 1), box});
    });
    const double whole = double(device.width()) * device.height();
    double work = 0;
    for (const Drawn &d : drawn) {
        const QRect &all = segments[d.segment];
        work += d.box.isEmpty() || all.isEmpty() ? whole : whole * Area(d.box) / Area(all);
    }
    return work > double(MaxWmfPixelWork) ? TooMuch("draws more") : QString();
}

QString CheckJpegWork(QByteArrayView file)
{
    qint64 pixels = 0;
    int scans = 0;
    for (qsizetype at = 2; at + 4 <= file.size();) {
        if (quint8(file[at]) != 0xFF) {
            ++at;
            continue;
        }
        const quint8 marker = quint8(file[at + 1]);
        if (marker == 0xFF || marker == 0x00 || marker == 0x01
            || (marker >= 0xD0 && marker <= 0xD7)) {
            at += marker == 0xFF ? 1 : 2;
            continue;
        }
        if (marker == 0xD9)
            break;
        const qsizetype length = qsizetype(quint8(file[at + 2])) << 8 | quint8(file[at + 3]);
        // Every frame header but those of the Huffman and arithmetic tables.
        const bool frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8
            && marker != 0xCC;
        if (frame && at + 9 <= file.size())
            pixels = std::max(pixels,
                qint64(quint8(file[at + 5]) << 8 | quint8(file[at + 6]))
                    * (quint8(file[at + 7]) << 8 | quint8(file[at + 8])));
        if (marker == 0xDA && ++scans > MaxJpegScans)
            return TooMuch("has more scans");
        at += 2 + length;
    }
    return qint64(scans) * pixels > MaxJpegScanWork ? TooMuch("has more scans") : QString();
}

QString CheckGifFrames(QByteArrayView file, qint64 maxPixels)
{
    if (file.size() < 13)
        return {};
    const qint64 width = Le16(file, 6), height = Le16(file, 8);
    if (width * height > maxPixels)
        return QStringLiteral("a picture of %1 x %2 pixels is too large for a skin")
            .arg(width)
            .arg(height);
    const auto table = [](quint8 flags) { return (flags & 0x80) ? 3 << ((flags & 7) + 1) : 0; };
    qsizetype at = 13 + table(quint8(file[10]));
    while (at < file.size()) {
        const quint8 kind = quint8(file[at++]);
        if (kind == 0x2C) {
            if (at + 9 > file.size())
                return {};
            const qint64 left = Le16(file, at), top = Le16(file, at + 2);
            if (left + Le16(file, at + 4) > width || top + Le16(file, at + 6) > height)
                return QStringLiteral("a frame of the GIF picture lies outside it");
            at += 9 + table(quint8(file[at + 8])) + 1;
        } else if (kind == 0x21) {
            ++at;
        } else {
            return {};
        }
        while (at < file.size() && file[at] != 0)
            at += 1 + quint8(file[at]);
        ++at;
    }
    return {};
}
