#include "Metafile.h"

#include <QPolygon>
#include <QtEndian>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace {

// Both formats are little-endian words and double words.
struct Bytes
{
    QByteArray data;

    void U16(quint32 v)
    {
        char b[2];
        qToLittleEndian<quint16>(quint16(v), b);
        data.append(b, 2);
    }
    void U32(quint32 v)
    {
        char b[4];
        qToLittleEndian<quint32>(v, b);
        data.append(b, 4);
    }
    void I16(int v) { U16(quint16(qint16(v))); }
    void I32(qint32 v) { U32(quint32(v)); }
    void F32(float v)
    {
        quint32 bits;
        std::memcpy(&bits, &v, 4);
        U32(bits);
    }
};

quint32 ColorRef(const QColor &color)
{
    return quint32(color.red()) | quint32(color.green()) << 8 | quint32(color.blue()) << 16;
}

std::optional<int> ToLogical(double pixels)
{
    const double units = std::round(pixels * MetafileDrawing::Precision);
    if (units < std::numeric_limits<qint16>::min() || units > std::numeric_limits<qint16>::max())
        return std::nullopt;
    return int(units);
}

// A shape's rings in logical units, with repeated points dropped.
std::optional<QList<QPolygon>> ToLogical(const MetaShape &shape)
{
    QList<QPolygon> rings;
    for (const QPolygonF &ring : shape.rings) {
        QPolygon points;
        for (const QPointF &p : ring) {
            const auto x = ToLogical(p.x()), y = ToLogical(p.y());
            if (!x || !y)
                return std::nullopt;
            if (points.isEmpty() || points.last() != QPoint(*x, *y))
                points.append(QPoint(*x, *y));
        }
        if (points.size() >= 2)
            rings.append(points);
    }
    if (rings.isEmpty())
        return std::nullopt;
    return rings;
}

QRect BoundsOf(const QList<QPolygon> &rings)
{
    QRect box;
    for (const QPolygon &ring : rings)
        box |= ring.boundingRect();
    return box;
}

void Points(Bytes &b, const QPolygon &ring)
{
    for (const QPoint &p : ring) {
        b.I16(p.x());
        b.I16(p.y());
    }
}

// What has to be selected to draw a shape; a change means new objects.
struct Style
{
    QColor fill, stroke;
    int penWidth = 0; // logical units

    bool SamePen(const Style &o) const { return stroke == o.stroke && penWidth == o.penWidth; }
};

Style StyleOf(const MetaShape &shape)
{
    Style s;
    s.fill = shape.kind == MetaShape::Kind::Polyline ? QColor() : shape.fill;
    s.stroke = shape.stroke;
    if (s.stroke.isValid())
        s.penWidth = std::max(1, int(std::lround(shape.strokeWidth * MetafileDrawing::Precision)));
    return s;
}

// A device-independent bitmap as a metafile holds it: the long header, the
// colour table (or the three channel masks), then the rows bottom-up, each
// padded to four bytes. Empty when the picture has more colours than the
// depth's table holds.
QByteArray Dib(const QImage &image, int depth, bool bitFields)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    QList<QRgb> table;
    for (int y = 0; depth <= 8 && y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            const QRgb p = rgb.pixel(x, y) & 0xFFFFFF;
            if (!table.contains(p)) {
                if (table.size() == 1 << depth)
                    return {};
                table.append(p);
            }
        }
    const int stride = (rgb.width() * depth + 31) / 32 * 4;
    Bytes b;
    b.U32(40);
    b.I32(rgb.width());
    b.I32(rgb.height());
    b.U16(1);
    b.U16(quint32(depth));
    b.U32(bitFields ? 3 : 0); // BI_BITFIELDS or BI_RGB
    b.U32(quint32(stride * rgb.height()));
    b.I32(3780); // 96 to the inch, in pixels per metre
    b.I32(3780);
    b.U32(quint32(table.size()));
    b.U32(0);
    if (bitFields)
        for (const quint32 mask : depth == 16 ? std::array<quint32, 3> {0xF800, 0x07E0, 0x001F}
                                              : std::array<quint32, 3> {0xFF0000, 0xFF00, 0xFF})
            b.U32(mask);
    for (const QRgb colour : table)
        b.U32(colour); // blue, green, red, zero
    for (int y = rgb.height() - 1; y >= 0; --y) {
        QByteArray row(stride, '\0');
        for (int x = 0; x < rgb.width(); ++x) {
            const QRgb p = rgb.pixel(x, y) & 0xFFFFFF;
            const int r = qRed(p), g = qGreen(p), bl = qBlue(p);
            if (depth <= 8) {
                const int bit = x * depth;
                row[bit / 8] = char(row[bit / 8] | table.indexOf(p) << (8 - depth - bit % 8));
            } else if (depth == 16) {
                const quint16 v = bitFields ? quint16((r >> 3) << 11 | (g >> 2) << 5 | bl >> 3)
                                            : quint16((r >> 3) << 10 | (g >> 3) << 5 | bl >> 3);
                qToLittleEndian<quint16>(v, row.data() + x * 2);
            } else {
                char *out = row.data() + x * (depth / 8);
                out[0] = char(bl);
                out[1] = char(g);
                out[2] = char(r);
            }
        }
        b.data += row;
    }
    return b.data;
}

QString OutOfRange(int index)
{
    return QStringLiteral("shape %1 is empty or lies outside the range a metafile can hold")
        .arg(index + 1);
}

// ---- enhanced metafile -------------------------------------------------

enum : quint32 {
    EMR_HEADER = 1,
    EMR_EOF = 14,
    EMR_SETPOLYFILLMODE = 19,
    EMR_SETWORLDTRANSFORM = 35,
    EMR_SELECTOBJECT = 37,
    EMR_CREATEBRUSHINDIRECT = 39,
    EMR_DELETEOBJECT = 40,
    EMR_BEGINPATH = 59,
    EMR_ENDPATH = 60,
    EMR_FILLPATH = 62,
    EMR_STROKEANDFILLPATH = 63,
    EMR_STROKEPATH = 64,
    EMR_SETGRAPHICSMODE = 67,
    EMR_POLYGON16 = 86,
    EMR_POLYLINE16 = 87,
    EMR_POLYPOLYGON16 = 91,
    EMR_EXTCREATEPEN = 95,
};
constexpr quint32 NullBrush = 0x80000005, NullPen = 0x80000008;
constexpr quint32 GM_ADVANCED = 2, WINDING = 2, PS_GEOMETRIC = 0x10000;
constexpr quint32 PenHandle = 1, BrushHandle = 2;

struct EmfRecords
{
    Bytes bytes;
    quint32 count = 0;

    void Add(quint32 type, const Bytes &body = {})
    {
        bytes.U32(type);
        bytes.U32(quint32(8 + body.data.size()));
        bytes.data += body.data;
        ++count;
    }
    void Handle(quint32 type, quint32 handle)
    {
        Bytes b;
        b.U32(handle);
        Add(type, b);
    }
};

// Records carry the device pixels they touch, inclusive; `scale` is the
// device's pixels to one of the drawing's.
void DeviceBounds(Bytes &b, const QRect &logical, double scale)
{
    const double P = MetafileDrawing::Precision / scale;
    b.I32(int(std::floor(logical.left() / P)));
    b.I32(int(std::floor(logical.top() / P)));
    b.I32(int(std::ceil(logical.right() / P)));
    b.I32(int(std::ceil(logical.bottom() / P)));
}

void ChangeStyle(EmfRecords &r, const std::optional<Style> &before, const Style &style)
{
    if (!before || !before->SamePen(style)) {
        r.Handle(EMR_SELECTOBJECT, NullPen);
        if (before && before->stroke.isValid())
            r.Handle(EMR_DELETEOBJECT, PenHandle);
        if (style.stroke.isValid()) {
            Bytes pen;
            pen.U32(PenHandle);
            pen.U32(0); // no pattern bitmap: offset and size of header and bits
            pen.U32(0);
            pen.U32(0);
            pen.U32(0);
            pen.U32(PS_GEOMETRIC); // solid, round ends and joins
            pen.U32(quint32(style.penWidth));
            pen.U32(0); // solid colour
            pen.U32(ColorRef(style.stroke));
            pen.U32(0);
            pen.U32(0); // no dashes
            r.Add(EMR_EXTCREATEPEN, pen);
            r.Handle(EMR_SELECTOBJECT, PenHandle);
        }
    }
    if (!before || before->fill != style.fill) {
        r.Handle(EMR_SELECTOBJECT, NullBrush);
        if (before && before->fill.isValid())
            r.Handle(EMR_DELETEOBJECT, BrushHandle);
        if (style.fill.isValid()) {
            Bytes brush;
            brush.U32(BrushHandle);
            brush.U32(0); // solid
            brush.U32(ColorRef(style.fill));
            brush.U32(0);
            r.Add(EMR_CREATEBRUSHINDIRECT, brush);
            r.Handle(EMR_SELECTOBJECT, BrushHandle);
        }
    }
}

} // namespace

QByteArray MetafileDrawing::Emf(QString *error) const
{
    constexpr int P = Precision;
    const double scale = referenceDpi_ / 96.0; // device pixels to a drawing's pixel
    EmfRecords r;
    // Logical units are 1/P pixel through the world transform, which
    // scales pen widths along with the shapes.
    r.Handle(EMR_SETGRAPHICSMODE, GM_ADVANCED);
    {
        Bytes b;
        const float unit = float(scale / P);
        for (const float v : {unit, 0.0f, 0.0f, unit, 0.0f, 0.0f})
            b.F32(v);
        r.Add(EMR_SETWORLDTRANSFORM, b);
    }
    r.Handle(EMR_SETPOLYFILLMODE, WINDING);

    std::optional<Style> current;
    for (int i = 0; i < shapes_.size(); ++i) {
        const MetaShape &shape = shapes_[i];
        const std::optional<QList<QPolygon>> rings = ToLogical(shape);
        if (!rings || shape.kind == MetaShape::Kind::Bitmap) {
            if (error)
                *error = rings ? QStringLiteral("shape %1: bitmaps go into WMF only").arg(i + 1)
                               : OutOfRange(i);
            return {};
        }
        const Style style = StyleOf(shape);
        ChangeStyle(r, current, style);
        current = style;

        const QRect box = BoundsOf(*rings);
        if (shape.kind == MetaShape::Kind::Polyline) {
            Bytes b;
            DeviceBounds(b, box, scale);
            b.U32(quint32(rings->first().size()));
            Points(b, rings->first());
            r.Add(EMR_POLYLINE16, b);
            continue;
        }
        // A filled figure goes through a path: filling a path paints the
        // inside only, where a plain polygon also gets a border that
        // fattens it by half a pixel in some players.
        r.Add(EMR_BEGINPATH);
        Bytes b;
        DeviceBounds(b, box, scale);
        if (rings->size() == 1) {
            b.U32(quint32(rings->first().size()));
            Points(b, rings->first());
            r.Add(EMR_POLYGON16, b);
        } else {
            quint32 total = 0;
            for (const QPolygon &ring : *rings)
                total += quint32(ring.size());
            b.U32(quint32(rings->size()));
            b.U32(total);
            for (const QPolygon &ring : *rings)
                b.U32(quint32(ring.size()));
            for (const QPolygon &ring : *rings)
                Points(b, ring);
            r.Add(EMR_POLYPOLYGON16, b);
        }
        r.Add(EMR_ENDPATH);
        Bytes paint;
        DeviceBounds(paint, box, scale);
        r.Add(!style.fill.isValid()      ? EMR_STROKEPATH
                : style.stroke.isValid() ? EMR_STROKEANDFILLPATH
                                         : EMR_FILLPATH,
            paint);
    }
    {
        Bytes b;
        b.U32(0); // no palette
        b.U32(16); // where it would start
        b.U32(20); // this record's size again, for readers going backwards
        r.Add(EMR_EOF, b);
    }

    // The header comes first but holds the totals. The frame is the
    // drawing's pixel size at 96 to the inch, on any reference device.
    constexpr int deviceWidthMm = 508, deviceHeightMm = 254; // 20 x 10 inches
    const int deviceWidth = 20 * referenceDpi_, deviceHeight = 10 * referenceDpi_; // pixels
    const QString text = QStringLiteral("Quorvel") + QChar() + title_ + QChar() + QChar();
    Bytes description;
    for (const QChar c : text)
        description.U16(c.unicode());
    while (description.data.size() % 4)
        description.data.append('\0');
    constexpr int headerSize = 108;
    const auto hundredthsOfMm
        = [](int pixels) { return qint32(std::lround(pixels * 2540.0 / 96)); };
    const auto devicePixels = [scale](int pixels) { return qint32(std::lround(pixels * scale)); };

    Bytes h;
    h.U32(EMR_HEADER);
    h.U32(quint32(headerSize + description.data.size()));
    h.I32(0); // bounds in device pixels, inclusive
    h.I32(0);
    h.I32(devicePixels(size_.width()) - 1);
    h.I32(devicePixels(size_.height()) - 1);
    h.I32(0); // frame in 0.01 mm
    h.I32(0);
    h.I32(hundredthsOfMm(size_.width()));
    h.I32(hundredthsOfMm(size_.height()));
    h.U32(0x464D4520); // " EMF"
    h.U32(0x00010000);
    h.U32(quint32(headerSize + description.data.size() + r.bytes.data.size()));
    h.U32(r.count + 1);
    h.U16(3); // handles: the reserved one, a pen and a brush
    h.U16(0);
    h.U32(quint32(text.size()));
    h.U32(headerSize);
    h.U32(0); // palette entries
    h.I32(deviceWidth);
    h.I32(deviceHeight);
    h.I32(deviceWidthMm);
    h.I32(deviceHeightMm);
    h.U32(0); // no pixel format, not OpenGL
    h.U32(0);
    h.U32(0);
    h.I32(deviceWidthMm * 1000);
    h.I32(deviceHeightMm * 1000);
    return h.data + description.data + r.bytes.data;
}

// ---- Windows metafile --------------------------------------------------

namespace {

enum : quint16 {
    META_EOF = 0x0000,
    META_SETMAPMODE = 0x0103,
    META_SETPOLYFILLMODE = 0x0106,
    META_SELECTOBJECT = 0x012D,
    META_DELETEOBJECT = 0x01F0,
    META_SETWINDOWORG = 0x020B,
    META_SETWINDOWEXT = 0x020C,
    META_CREATEPENINDIRECT = 0x02FA,
    META_CREATEBRUSHINDIRECT = 0x02FC,
    META_POLYGON = 0x0324,
    META_POLYLINE = 0x0325,
    META_POLYPOLYGON = 0x0538,
    META_STRETCHDIB = 0x0F43,
};
constexpr quint32 SRCCOPY = 0x00CC0020;
constexpr quint16 MM_ANISOTROPIC = 8, PS_NULL = 5, BS_NULL = 1;

struct WmfRecords
{
    Bytes bytes;
    quint32 largest = 3; // in words; the end record's size
    QList<bool> used; // the object table: a new object takes the lowest free slot

    void Add(quint16 function, const Bytes &params = {})
    {
        const quint32 words = 3 + quint32(params.data.size() / 2);
        bytes.U32(words);
        bytes.U16(function);
        bytes.data += params.data;
        largest = std::max(largest, words);
    }
    int Create(quint16 function, const Bytes &params)
    {
        Add(function, params);
        const qsizetype free = used.indexOf(false);
        if (free >= 0) {
            used[free] = true;
            return int(free);
        }
        used.append(true);
        return int(used.size() - 1);
    }
    void Object(quint16 function, int slot)
    {
        Bytes b;
        b.U16(quint16(slot));
        Add(function, b);
        if (function == META_DELETEOBJECT)
            used[slot] = false;
    }
};

} // namespace

QByteArray MetafileDrawing::Wmf(QString *error) const
{
    const auto width = ToLogical(size_.width()), height = ToLogical(size_.height());
    if (!width || !height) {
        if (error)
            *error = QStringLiteral("a Windows metafile cannot be %1 x %2 pixels")
                         .arg(size_.width())
                         .arg(size_.height());
        return {};
    }
    WmfRecords r;
    {
        Bytes b;
        b.U16(MM_ANISOTROPIC);
        r.Add(META_SETMAPMODE, b);
        Bytes fill;
        fill.U16(WINDING);
        r.Add(META_SETPOLYFILLMODE, fill);
    }
    for (const auto &[function, x, y] :
        {std::tuple {META_SETWINDOWORG, 0, 0}, std::tuple {META_SETWINDOWEXT, *width, *height}}) {
        Bytes b;
        b.I16(y);
        b.I16(x);
        r.Add(function, b);
    }

    std::optional<Style> current;
    int pen = -1, brush = -1;
    for (int i = 0; i < shapes_.size(); ++i) {
        const MetaShape &shape = shapes_[i];
        const std::optional<QList<QPolygon>> rings = ToLogical(shape);
        if (!rings) {
            if (error)
                *error = OutOfRange(i);
            return {};
        }
        if (shape.kind == MetaShape::Kind::Bitmap) {
            const QByteArray dib = Dib(shape.image, shape.bitmapDepth, shape.bitFields);
            if (dib.isEmpty()) {
                if (error)
                    *error = QStringLiteral("shape %1 has more colours than %2 bits hold")
                                 .arg(i + 1)
                                 .arg(shape.bitmapDepth);
                return {};
            }
            const QRect box = BoundsOf(*rings);
            Bytes b;
            b.U32(SRCCOPY);
            b.U16(0); // the colour table holds colours, not palette indices
            for (const int v : {shape.image.height(), shape.image.width(), 0, 0, box.height() - 1,
                     box.width() - 1, box.top(), box.left()})
                b.I16(v);
            b.data += dib;
            r.Add(META_STRETCHDIB, b);
            continue;
        }
        // A new object is selected before the old one goes, so nothing
        // selected is ever deleted.
        const Style style = StyleOf(shape);
        if (!current || !current->SamePen(style)) {
            Bytes b;
            b.U16(style.stroke.isValid() ? 0 : PS_NULL);
            b.I16(style.penWidth);
            b.I16(0);
            b.U32(ColorRef(style.stroke));
            const int made = r.Create(META_CREATEPENINDIRECT, b);
            r.Object(META_SELECTOBJECT, made);
            if (pen >= 0)
                r.Object(META_DELETEOBJECT, pen);
            pen = made;
        }
        if (!current || current->fill != style.fill) {
            Bytes b;
            b.U16(style.fill.isValid() ? 0 : BS_NULL);
            b.U32(ColorRef(style.fill));
            b.U16(0);
            const int made = r.Create(META_CREATEBRUSHINDIRECT, b);
            r.Object(META_SELECTOBJECT, made);
            if (brush >= 0)
                r.Object(META_DELETEOBJECT, brush);
            brush = made;
        }
        current = style;

        Bytes b;
        if (shape.kind == MetaShape::Kind::Polyline || rings->size() == 1) {
            b.U16(quint16(rings->first().size()));
            Points(b, rings->first());
            r.Add(shape.kind == MetaShape::Kind::Polyline ? META_POLYLINE : META_POLYGON, b);
            continue;
        }
        b.U16(quint16(rings->size()));
        for (const QPolygon &ring : *rings)
            b.U16(quint16(ring.size()));
        for (const QPolygon &ring : *rings)
            Points(b, ring);
        r.Add(META_POLYPOLYGON, b);
    }
    r.Add(META_EOF);

    // The placeable header gives the picture its size: its box in logical
    // units at 96 pixels to the inch.
    Bytes placeable;
    placeable.U32(0x9AC6CDD7);
    placeable.U16(0);
    placeable.I16(0);
    placeable.I16(0);
    placeable.I16(*width);
    placeable.I16(*height);
    placeable.U16(96 * Precision);
    placeable.U32(0);
    quint16 checksum = 0;
    for (qsizetype i = 0; i < placeable.data.size(); i += 2)
        checksum ^= qFromLittleEndian<quint16>(placeable.data.constData() + i);
    placeable.U16(checksum);

    Bytes header;
    header.U16(1); // the type nearly every WMF file carries
    header.U16(9); // header words
    header.U16(0x0300);
    header.U32(quint32(9 + r.bytes.data.size() / 2));
    header.U16(quint16(r.used.size()));
    header.U32(r.largest);
    header.U16(0);
    return placeable.data + header.data + r.bytes.data;
}
