#include "PictureLoader.h"

#include "Metafiles.h"
#include "PictureBudget.h"
#include "PictureFormats.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <cmath>
#include <cstdlib>

namespace {

// A skin uses 370 x 380 pixels; anything needing more than this is no skin.
constexpr int AllocationLimitMiB = 64;
constexpr qint64 AllocationLimit = qint64(AllocationLimitMiB) << 20;

// The decoder is named, never guessed: Qt would also take a text file that
// happens to look like one of its many other formats.
QImage ReadRaster(const QByteArray &bytes, const char *format, QString *reason)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setDecideFormatFromContent(false);
    reader.setAutoTransform(false);
    reader.setAllocationLimit(AllocationLimitMiB);
    // The header's size is refused before a single pixel is decoded. A
    // bitmap stored top row first reports a negative height.
    const QSize size = reader.size();
    const qint64 width = size.width(), height = std::abs(size.height());
    if (width <= 0 || height <= 0)
        return Fail(reason, QStringLiteral("the picture has no size"));
    if (width * height * 4 > AllocationLimit)
        return Fail(reason,
            QStringLiteral("a picture of %1 x %2 pixels is too large for a skin")
                .arg(width)
                .arg(height));
    QImage picture = reader.read();
    if (picture.isNull())
        return Fail(reason, reader.errorString());
    return picture;
}

} // namespace

namespace {

// Metafiles are drawn `metafileScale` times their own size.
QImage Decode(const QString &path, QString *reason, qreal metafileScale, PictureFormat *format)
{
    if (!QFileInfo(path).isFile())
        return Fail(reason, QStringLiteral("no such file"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Fail(reason, file.errorString());
    // A file larger than the largest picture allowed, with room for its
    // headers, cannot be a skin.
    if (file.size() > AllocationLimit + (qint64(1) << 20))
        return Fail(reason, QStringLiteral("the file is too large for a skin"));
    const QByteArray bytes = file.readAll();
    file.close();

    QString damage;
    const PictureFormat sniffed = SniffPicture(bytes);
    if (format)
        *format = sniffed;
    switch (sniffed) {
    case PictureFormat::Bmp:
        damage = CheckBmp(bytes);
        return damage.isEmpty() ? ReadRaster(bytes, "bmp", reason) : Fail(reason, damage);
    case PictureFormat::Gif:
        damage = CheckGif(bytes);
        if (damage.isEmpty())
            damage = CheckGifFrames(bytes, AllocationLimit / 4);
        return damage.isEmpty() ? ReadRaster(bytes, "gif", reason) : Fail(reason, damage);
    case PictureFormat::Jpeg:
        damage = CheckJpeg(bytes);
        if (damage.isEmpty())
            damage = CheckJpegWork(bytes);
        return damage.isEmpty() ? ReadRaster(bytes, "jpeg", reason) : Fail(reason, damage);
    case PictureFormat::Wmf:
        damage = CheckWmf(bytes);
        if (damage.isEmpty())
            damage = CheckMetafileRecords(PictureFormat::Wmf, bytes);
        return damage.isEmpty() ? DrawWmf(bytes, reason, metafileScale) : Fail(reason, damage);
    case PictureFormat::Emf:
        damage = CheckEmf(bytes);
        if (damage.isEmpty())
            damage = CheckMetafileRecords(PictureFormat::Emf, bytes);
        return damage.isEmpty() ? DrawEmf(bytes, reason, metafileScale) : Fail(reason, damage);
    case PictureFormat::Unknown:
        break;
    }
    return Fail(reason, QStringLiteral("not a BMP, GIF, JPEG, WMF or EMF picture"));
}

} // namespace

QImage LoadPicture(const QString &path, QString *reason)
{
    return Decode(path, reason, 1, nullptr);
}

QImage LoadFinePicture(
    const QString &path, const QImage &picture, qreal devicePixelRatio, qreal &scale)
{
    scale = 1;
    if (picture.isNull() || devicePixelRatio <= 1)
        return {};
    PictureFormat format = PictureFormat::Unknown;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        format = SniffPicture(file.read(64));
    file.close();
    QImage fine;
    qreal fineScale = 1;
    if (format == PictureFormat::Wmf || format == PictureFormat::Emf) {
        // Every rectangle of the skin layout lies on tens of pixels, so a
        // tenth of a device pixel keeps every cut on whole pixels.
        fineScale = std::round(devicePixelRatio * 10) / 10;
        if (fineScale > 1)
            fine = Decode(path, nullptr, fineScale, nullptr);
    } else if (devicePixelRatio >= 1.5) {
        const QFileInfo info(path);
        fineScale = 2;
        fine = Decode(
            info.dir().filePath(QStringLiteral("@2x/") + info.fileName()), nullptr, 1, nullptr);
    }
    if (fine.isNull() || fine.size() != (QSizeF(picture.size()) * fineScale).toSize())
        return {};
    scale = fineScale;
    return fine;
}
