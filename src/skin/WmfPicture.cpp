// Windows metafiles are played by libwmf onto its raster device.
#include "Metafiles.h"

#include "PictureBudget.h"
#include "PictureFormats.h"

#include <QPainter>

#include <cmath>

extern "C" {
#include <libwmf/api.h>
#include <libwmf/gd.h>
}

namespace {

constexpr quint32 PlaceableKey = 0x9AC6CDD7;

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

QImage DrawWmf(QByteArrayView file, QString *reason)
{
    Player player;
    wmfAPI_Options options {};
    options.function = wmf_gd_function;
    const unsigned long flags
        = WMF_OPT_FUNCTION | WMF_OPT_IGNORE_NONFATAL | WMF_OPT_NO_ERROR | WMF_OPT_NO_DEBUG;
    if (wmf_api_create(&player.api, flags, &options) != wmf_E_None)
        return Fail(reason, QStringLiteral("the WMF library could not start"));

    QByteArray bytes = file.toByteArray();
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
