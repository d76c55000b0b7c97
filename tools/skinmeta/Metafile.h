// A drawing made of plain filled and stroked shapes, written out as an
// enhanced metafile (EMF) or a placeable Windows metafile (WMF). Skins come
// out of it at their pixel size, so a player's picture viewer shows them at
// the size the game cuts them.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPolygonF>
#include <QSize>
#include <QString>

struct MetaShape
{
    enum class Kind { Polygon, Polyline, Bitmap };
    Kind kind = Kind::Polygon;
    // Polygon: one or more closed rings, filled by the non-zero winding
    // rule, so a hole runs the other way round; Polyline: one open line.
    // Curves arrive already cut into short straight pieces.
    QList<QPolygonF> rings;
    QColor fill {}; // invalid: not filled
    QColor stroke {}; // invalid: no outline
    double strokeWidth = 1;
    // Bitmap (WMF only): `image` stretched over the rings' bounding box,
    // stored as a device-independent bitmap of `bitmapDepth` bits (1, 4, 8,
    // 16, 24 or 32), with its channels given by masks when `bitFields`
    // (16 bits: 5-6-5, else 5-5-5).
    QImage image {};
    int bitmapDepth = 24;
    bool bitFields = false;
};

class MetafileDrawing
{
public:
    // Coordinates are in pixels of a picture of `size`; they are stored in
    // steps of 1/Precision pixel so curves keep their shape.
    static constexpr int Precision = 16;

    explicit MetafileDrawing(QSize size, QString title = QString())
        : size_(size)
        , title_(std::move(title))
    { }

    void Add(const MetaShape &shape) { shapes_.append(shape); }
    // The EMF's reference device, in pixels to the inch. Its frame gives the
    // same size whatever the device; drawing programs often take 1200.
    void SetReferenceDpi(int dpi) { referenceDpi_ = dpi; }
    QSize Size() const { return size_; }
    const QList<MetaShape> &Shapes() const { return shapes_; }

    // Empty when the drawing does not fit the format (a coordinate out of
    // its 16-bit range); `error` then says where.
    QByteArray Emf(QString *error = nullptr) const;
    QByteArray Wmf(QString *error = nullptr) const;

private:
    QSize size_;
    QString title_;
    QList<MetaShape> shapes_;
    int referenceDpi_ = 96;
};
