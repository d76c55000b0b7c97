// Enhanced metafiles are turned into SVG by libemf2svg and drawn by Qt SVG.
#include "Metafiles.h"

#include "PictureBudget.h"
#include "PictureFormats.h"

#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <emf2svg.h>

namespace {

// Where the picture lies on its reference device, in device pixels.
struct Placement
{
    qint64 x, y, width, height;
};

constexpr double HundredthsOfMmPerInch = 2540;
constexpr double ScreenPixelsPerInch = 96;

qint64 Whole(double v)
{
    return qint64(std::llround(std::clamp(v, -1e9, 1e9)));
}

// The records are drawn on the reference device: its size in pixels and in
// millimetres (or micrometres, when the header is long enough to hold them)
// places the frame (0.01 mm) among its pixels. Without a usable device the
// bounds (inclusive pixels) serve.
Placement PlaceEmf(QByteArrayView file)
{
    const qint32 boundsLeft = LeI32(file, 8), boundsTop = LeI32(file, 12);
    const qint32 boundsRight = LeI32(file, 16), boundsBottom = LeI32(file, 20);
    const double frameLeft = LeI32(file, 24), frameTop = LeI32(file, 28);
    const double frameRight = LeI32(file, 32), frameBottom = LeI32(file, 36);
    const double devicePixelsX = LeI32(file, 72), devicePixelsY = LeI32(file, 76);
    double deviceMicronsX = LeI32(file, 80) * 1000.0, deviceMicronsY = LeI32(file, 84) * 1000.0;
    if (Le32(file, 4) >= 108 && LeI32(file, 100) > 0 && LeI32(file, 104) > 0) {
        deviceMicronsX = LeI32(file, 100);
        deviceMicronsY = LeI32(file, 104);
    }
    if (devicePixelsX > 0 && devicePixelsY > 0 && deviceMicronsX > 0 && deviceMicronsY > 0
        && frameRight > frameLeft && frameBottom > frameTop) {
        const double perUnitX = devicePixelsX / deviceMicronsX * 10; // pixels per 0.01 mm
        const double perUnitY = devicePixelsY / deviceMicronsY * 10;
        return {Whole(frameLeft * perUnitX), Whole(frameTop * perUnitY),
            Whole((frameRight - frameLeft) * perUnitX), Whole((frameBottom - frameTop) * perUnitY)};
    }
    return {boundsLeft, boundsTop, qint64(boundsRight) - boundsLeft + 1,
        qint64(boundsBottom) - boundsTop + 1};
}

// The picture's size on a screen: the frame is its physical size, and a
// screen has 96 pixels to the inch whatever device the picture was drawn
// for (a drawing program's reference device may well have 1200). Without a
// frame the picture is as large as its place on the device.
QSize ScreenSize(QByteArrayView file, const Placement &place)
{
    const double frameWidth = double(LeI32(file, 32)) - LeI32(file, 24);
    const double frameHeight = double(LeI32(file, 36)) - LeI32(file, 28);
    if (frameWidth <= 0 || frameHeight <= 0)
        return {int(std::clamp<qint64>(place.width, -1, 1 << 30)),
            int(std::clamp<qint64>(place.height, -1, 1 << 30))};
    const auto pixels = [](double hundredths) {
        return int(std::clamp<qint64>(
            Whole(hundredths * ScreenPixelsPerInch / HundredthsOfMmPerInch), -1, 1 << 30));
    };
    return {pixels(frameWidth), pixels(frameHeight)};
}

} // namespace

QImage DrawEmf(QByteArrayView file, QString *reason, qreal scale)
{
    const Placement place = PlaceEmf(file);
    const QSize size = ScreenSize(file, place);
    if (size.width() < 1 || size.height() < 1 || size.width() > MaxMetafileSide
        || size.height() > MaxMetafileSide)
        return Fail(reason,
            QStringLiteral("an EMF picture of %1 x %2 pixels is no skin")
                .arg(size.width())
                .arg(size.height()));
    if (place.width < 1 || place.height < 1)
        return Fail(reason, QStringLiteral("the EMF picture has no place on its device"));
    // The work is that of the pixels drawn, on a scaled screen too.
    if (const QString why = CheckEmfWork(file, (QSizeF(size) * scale).toSize()); !why.isEmpty())
        return Fail(reason, why);

    // The converter maps the header's bounds onto the SVG it writes, so
    // they are set to the picture's own place: one SVG unit is then one
    // device pixel, with the frame's corner at the origin.
    QByteArray bytes = file.toByteArray();
    const auto setBound = [&bytes](int at, qint64 v) {
        qToLittleEndian<qint32>(qint32(std::clamp<qint64>(v, std::numeric_limits<qint32>::min(),
                                    std::numeric_limits<qint32>::max())),
            bytes.data() + at);
    };
    setBound(8, place.x);
    setBound(12, place.y);
    setBound(16, place.x + place.width);
    setBound(20, place.y + place.height);

    char emptyNameSpace[] = "";
    generatorOptions options {};
    options.nameSpace = emptyNameSpace;
    options.svgDelimiter = true;
    options.imgWidth = double(place.width);
    options.imgHeight = double(place.height);
    char *svg = nullptr;
    size_t length = 0;
    const int converted = emf2svg(bytes.data(), size_t(bytes.size()), &svg, &length, &options);
    const QByteArray text(svg, qsizetype(svg ? length : 0));
    std::free(svg);
    if (!converted || text.isEmpty())
        return Fail(reason, QStringLiteral("the EMF library cannot read the picture"));

    QSvgRenderer renderer(text);
    if (!renderer.isValid())
        return Fail(reason, QStringLiteral("the EMF library cannot read the picture"));
    // Device pixels onto screen pixels, and those onto the screen's own.
    renderer.setViewBox(QRectF(0, 0, double(place.width), double(place.height)));
    QImage picture((QSizeF(size) * scale).toSize(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return picture;
}
