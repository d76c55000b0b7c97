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

// The frame (0.01 mm) is the picture's extent; the reference device's size
// in pixels and in millimetres (or micrometres, when the header is long
// enough to hold them) turns it into pixels. Without a usable device the
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
        const auto whole = [](double v) { return qint64(std::llround(std::clamp(v, -1e9, 1e9))); };
        return {whole(frameLeft * perUnitX), whole(frameTop * perUnitY),
            whole((frameRight - frameLeft) * perUnitX), whole((frameBottom - frameTop) * perUnitY)};
    }
    return {boundsLeft, boundsTop, qint64(boundsRight) - boundsLeft + 1,
        qint64(boundsBottom) - boundsTop + 1};
}

} // namespace

QImage DrawEmf(QByteArrayView file, QString *reason)
{
    const Placement place = PlaceEmf(file);
    if (place.width < 1 || place.height < 1 || place.width > MaxMetafileSide
        || place.height > MaxMetafileSide)
        return Fail(reason,
            QStringLiteral("an EMF picture of %1 x %2 pixels is no skin")
                .arg(place.width)
                .arg(place.height));
    const QSize size(int(place.width), int(place.height));
    if (const QString why = CheckEmfWork(file, size); !why.isEmpty())
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
    options.imgWidth = double(size.width());
    options.imgHeight = double(size.height());
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
    renderer.setViewBox(QRectF(QPointF(0, 0), QSizeF(size)));
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    return picture;
}
