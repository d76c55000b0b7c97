// Windows metafiles are played by libwmf onto its raster device.
#include "Metafiles.h"

#include "PictureBudget.h"
#include "PictureFormats.h"

#include <QPainter>
#include <QtEndian>

#include <cmath>

extern "C" {
#include <libwmf/api.h>
#include <libwmf/gd.h>
}

namespace {

constexpr quint32 PlaceableKey = 0x9AC6CDD7;
constexpr qsizetype PlaceableSize = 22, HeaderSize = 18;

// ---- bitmaps the library can draw ---------------------------------------

// The library draws device-independent bitmaps of some depths only: a
// 32-bit one, as drawing programs write, comes out white. Every bitmap a
// blit record holds is therefore rewritten as a plain 24-bit one first.

// Records that carry a bitmap, and where in them it starts (bytes from the
// record's start); the blits also come without one, as a plain fill.
struct BitmapRecord
{
    quint16 function;
    qsizetype bitmapAt;
    qsizetype colourUsageAt; // -1: the record has none and its colours are RGB
};
constexpr BitmapRecord BitmapRecords[] = {
    {0x0F43, 28, 10}, // META_STRETCHDIB
    {0x0B41, 26, -1}, // META_DIBSTRETCHBLT
    {0x0940, 22, -1}, // META_DIBBITBLT
};

// Far more than a skin needs; a larger bitmap is left to the library.
constexpr qint64 MaxBitmapPixels = qint64(16) << 20;

// The pixels of a bitmap as the BMP reader sees it once given a file header;
// a null image when it holds no bitmap the reader takes.
QImage ReadBitmap(QByteArrayView dib)
{
    if (dib.size() < 12)
        return {};
    const quint32 headerSize = Le32(dib, 0);
    const bool core = headerSize == 12;
    if (!core && (headerSize < 40 || dib.size() < 40))
        return {};
    const qint64 width = core ? Le16(dib, 4) : LeI32(dib, 4);
    const qint64 height = std::abs(qint64(core ? LeI16(dib, 6) : LeI32(dib, 8)));
    const int bits = Le16(dib, core ? 10 : 14);
    const quint32 compression = core ? 0 : Le32(dib, 16);
    const quint32 used = core ? 0 : Le32(dib, 32);
    if (width < 1 || height < 1 || width * height > MaxBitmapPixels || used > 256)
        return {};
    // The colour table follows the header (and, in the oldest long header,
    // the three masks of a bit-field bitmap).
    qint64 colours = used ? used : bits <= 8 ? qint64(1) << bits : 0;
    qint64 tableAt = headerSize;
    if (headerSize == 40 && compression == 3)
        tableAt += 12;
    const qint64 pixelsAt = tableAt + colours * (core ? 3 : 4);
    QByteArray bmp("BM");
    bmp.resize(14);
    qToLittleEndian<quint32>(quint32(14 + dib.size()), bmp.data() + 2);
    qToLittleEndian<quint32>(0, bmp.data() + 6);
    qToLittleEndian<quint32>(quint32(14 + pixelsAt), bmp.data() + 10);
    bmp.append(dib.data(), dib.size());
    QImage image;
    if (!image.loadFromData(bmp, "BMP"))
        return {};
    return image.convertToFormat(QImage::Format_RGB32);
}

// A bottom-up 24-bit bitmap with a plain header and no colour table.
QByteArray TrueColourBitmap(const QImage &image)
{
    const int stride = (image.width() * 3 + 3) / 4 * 4;
    QByteArray dib(40 + qsizetype(stride) * image.height(), '\0');
    char *h = dib.data();
    qToLittleEndian<quint32>(40, h);
    qToLittleEndian<qint32>(image.width(), h + 4);
    qToLittleEndian<qint32>(image.height(), h + 8);
    qToLittleEndian<quint16>(1, h + 12);
    qToLittleEndian<quint16>(24, h + 14);
    qToLittleEndian<quint32>(quint32(stride * image.height()), h + 20);
    for (int y = 0; y < image.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        char *out = h + 40 + qsizetype(image.height() - 1 - y) * stride;
        for (int x = 0; x < image.width(); ++x) {
            *out++ = char(qBlue(row[x]));
            *out++ = char(qGreen(row[x]));
            *out++ = char(qRed(row[x]));
        }
    }
    return dib;
}

// The metafile with every bitmap the library might not draw made 24-bit,
// the header's totals following the records' new sizes. The caller has
// checked that the records are whole.
QByteArray WithTrueColourBitmaps(QByteArrayView file)
{
    const qsizetype headerAt = Le32(file, 0) == PlaceableKey ? PlaceableSize : 0;
    QByteArray out = file.first(headerAt + HeaderSize).toByteArray();
    quint32 largest = 3;
    qsizetype at = headerAt + HeaderSize;
    while (at + 6 <= file.size()) {
        const quint32 words = Le32(file, at);
        const quint16 function = Le16(file, at + 4);
        if (function == 0 || words < 3 || qint64(words) * 2 > file.size() - at)
            break;
        QByteArray record = file.sliced(at, qsizetype(words) * 2).toByteArray();
        at += record.size();
        for (const BitmapRecord &kind : BitmapRecords) {
            if (function != kind.function || record.size() <= kind.bitmapAt
                || (kind.colourUsageAt >= 0 && Le16(record, kind.colourUsageAt) != 0))
                continue;
            const QImage pixels = ReadBitmap(QByteArrayView(record).sliced(kind.bitmapAt));
            if (pixels.isNull())
                continue;
            record = record.first(kind.bitmapAt) + TrueColourBitmap(pixels);
            qToLittleEndian<quint32>(quint32(record.size() / 2), record.data());
        }
        largest = std::max(largest, quint32(record.size() / 2));
        out += record;
    }
    // The end record, and whatever follows it, as they were.
    out += file.sliced(at).toByteArray();
    qToLittleEndian<quint32>(quint32((out.size() - headerAt) / 2), out.data() + headerAt + 6);
    qToLittleEndian<quint32>(
        std::max(largest, Le32(file, headerAt + 12)), out.data() + headerAt + 12);
    return out;
}

// The library's raster device draws without smoothing, so the picture is
// drawn larger and scaled down, as far as memory allows.
int Oversampling(QSize size)
{
    constexpr qint64 budget = qint64(64) << 20; // bytes
    for (const int factor : {4, 2})
        if (qint64(size.width()) * factor * size.height() * factor * 4 <= budget)
            return factor;
    return 1;
}

struct Player
{
    wmfAPI *api = nullptr;
    ~Player()
    {
        if (api)
            wmf_api_destroy(api);
    }
};

QSize WmfPixelSize(QByteArrayView file)
{
    // Only a placeable header says how large the picture is: its box in
    // logical units and how many of them make an inch; screens have 96
    // pixels to the inch.
    if (file.size() < 22 || Le32(file, 0) != PlaceableKey)
        return {};
    const double inch = Le16(file, 14);
    if (inch <= 0)
        return {};
    const double width = std::abs(double(LeI16(file, 10)) - LeI16(file, 6));
    const double height = std::abs(double(LeI16(file, 12)) - LeI16(file, 8));
    return QSize(int(std::lround(width * 96 / inch)), int(std::lround(height * 96 / inch)));
}

} // namespace

QImage DrawWmf(QByteArrayView file, QString *reason, qreal scale)
{
    Player player;
    wmfAPI_Options options {};
    options.function = wmf_gd_function;
    const unsigned long flags
        = WMF_OPT_FUNCTION | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    if (wmf_api_create(&player.api, flags, &options) != wmf_E_None)
        return Fail(reason, QStringLiteral("the WMF library could not start"));

    QByteArray bytes = WithTrueColourBitmaps(file);
    wmfD_Rect box {};
    if (wmf_mem_open(
            player.api, reinterpret_cast<unsigned char *>(bytes.data()), long(bytes.size()))
            != wmf_E_None
        || wmf_scan(player.api, 0, &box) != wmf_E_None)
        return Fail(reason, QStringLiteral("the WMF library cannot read the picture"));

    // A metafile without a placeable header has no size of its own; the
    // library's reading of its extents at screen resolution stands in.
    QSize size = WmfPixelSize(file);
    if (!size.isValid()) {
        unsigned int width = 0, height = 0;
        if (wmf_display_size(player.api, &width, &height, 96, 96) != wmf_E_None)
            return Fail(reason, QStringLiteral("the WMF picture has no size"));
        size = QSize(int(std::min(width, 1u << 30)), int(std::min(height, 1u << 30)));
    }
    if (size.width() < 1 || size.height() < 1 || size.width() > MaxMetafileSide
        || size.height() > MaxMetafileSide)
        return Fail(reason,
            QStringLiteral("a WMF picture of %1 x %2 pixels is no skin")
                .arg(size.width())
                .arg(size.height()));

    size = (QSizeF(size) * scale).toSize();
    // The device hands its picture over as PNG through a sink and frees
    // its own image; an image handed over raw could not be freed here.
    const int factor = Oversampling(size);
    if (const QString why = CheckWmfWork(file, size * factor); !why.isEmpty())
        return Fail(reason, why);
    QByteArray png;
    wmf_gd_t *device = WMF_GD_GetData(player.api);
    device->type = wmf_gd_png;
    device->flags |= WMF_GD_OUTPUT_MEMORY | WMF_GD_OWN_BUFFER;
    device->sink.context = &png;
    device->sink.function = [](void *context, char *buffer, int length) {
        static_cast<QByteArray *>(context)->append(buffer, length);
        return length;
    };
    device->bbox = box;
    device->width = unsigned(size.width() * factor);
    device->height = unsigned(size.height() * factor);
    QImage played;
    if (wmf_play(player.api, 0, &box) != wmf_E_None || !played.loadFromData(png, "png")
        || played.size() != size * factor)
        return Fail(reason, QStringLiteral("the WMF library cannot draw the picture"));
    // What the metafile leaves undrawn is white, as for the other metafiles.
    QImage drawn(played.size(), QImage::Format_RGB32);
    drawn.fill(Qt::white);
    QPainter(&drawn).drawImage(0, 0, played);
    if (factor == 1)
        return drawn;
    return drawn.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
