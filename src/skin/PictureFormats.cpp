#include "PictureFormats.h"

#include <QtEndian>

namespace {

constexpr quint32 WmfPlaceableKey = 0x9AC6CDD7;
constexpr quint32 EmfSignature = 0x464D4520; // " EMF"
constexpr qsizetype WmfPlaceableSize = 22, WmfHeaderSize = 18;

quint8 At(QByteArrayView file, qsizetype at)
{
    return quint8(file[at]);
}

bool StandardWmfHeader(QByteArrayView file, qsizetype at)
{
    if (file.size() < at + WmfHeaderSize)
        return false;
    const quint16 type = Le16(file, at), words = Le16(file, at + 2), version = Le16(file, at + 4);
    return (type == 1 || type == 2) && words == 9 && (version == 0x0100 || version == 0x0300);
}

const QString Truncated = QStringLiteral("the file ends before the picture does");

} // namespace

quint16 Le16(QByteArrayView file, qsizetype at)
{
    return qFromLittleEndian<quint16>(file.data() + at);
}

quint32 Le32(QByteArrayView file, qsizetype at)
{
    return qFromLittleEndian<quint32>(file.data() + at);
}

PictureFormat SniffPicture(QByteArrayView file)
{
    if (file.startsWith("BM"))
        return PictureFormat::Bmp;
    if (file.startsWith("GIF87a") || file.startsWith("GIF89a"))
        return PictureFormat::Gif;
    if (file.startsWith("\xFF\xD8\xFF"))
        return PictureFormat::Jpeg;
    if (file.size() >= 4 && Le32(file, 0) == WmfPlaceableKey)
        return PictureFormat::Wmf;
    if (StandardWmfHeader(file, 0))
        return PictureFormat::Wmf;
    if (file.size() >= 44 && Le32(file, 0) == 1 && Le32(file, 40) == EmfSignature)
        return PictureFormat::Emf;
    return PictureFormat::Unknown;
}

// ---- BMP ---------------------------------------------------------------

namespace {

// Run-length data is complete when it reaches its end code, or has ended
// every row, before the file ends.
QString CheckRunLengths(QByteArrayView file, qsizetype at, qint64 rows, bool fourBits)
{
    qint64 row = 0;
    while (at + 2 <= file.size()) {
        const quint8 count = At(file, at), code = At(file, at + 1);
        at += 2;
        if (count > 0)
            continue; // a run of one value
        if (code == 1)
            return {}; // end of picture
        if (code == 0) {
            if (++row >= rows)
                return {};
            continue;
        }
        if (code == 2) { // move right and down
            if (at + 2 > file.size())
                break;
            row += At(file, at + 1);
            at += 2;
            continue;
        }
        // `code` literal pixels, padded to a whole word
        const qsizetype bytes = fourBits ? (code + 1) / 2 : code;
        at += bytes + (bytes & 1);
    }
    return Truncated;
}

} // namespace

QString CheckBmp(QByteArrayView file)
{
    if (file.size() < 26)
        return Truncated;
    const quint32 dataAt = Le32(file, 10);
    const quint32 headerSize = Le32(file, 14);
    qint64 width, height;
    quint16 bits;
    quint32 compression = 0;
    if (headerSize == 12) { // the old core header
        width = Le16(file, 18);
        height = Le16(file, 20);
        bits = Le16(file, 24);
    } else if (headerSize >= 16 && headerSize <= 124 && file.size() >= 34) {
        width = LeI32(file, 18);
        height = LeI32(file, 22);
        bits = Le16(file, 28);
        if (headerSize >= 20)
            compression = Le32(file, 30);
    } else {
        return QStringLiteral("the BMP header is damaged");
    }
    if (width <= 0 || height == 0)
        return QStringLiteral("the BMP header gives no size");

    enum { Rgb = 0, Rle8 = 1, Rle4 = 2, BitFields = 3, AlphaBitFields = 6 };
    // With the short header the colour masks follow it; pixels that start
    // among them are a writer's mistake.
    qint64 masks = 0;
    if (headerSize == 40 && compression == BitFields)
        masks = 12;
    if (headerSize == 40 && compression == AlphaBitFields)
        masks = 16;
    if (dataAt < 14 + headerSize + masks || dataAt > file.size())
        return QStringLiteral("the BMP pixel data is not where the header says");

    switch (compression) {
    case Rgb:
    case BitFields:
    case AlphaBitFields: {
        if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
            return QStringLiteral("the BMP header is damaged");
        const qint64 stride = (width * bits + 31) / 32 * 4;
        const qint64 rows = height < 0 ? -height : height;
        // Divided rather than multiplied: a header may claim sizes whose
        // product no integer holds.
        if (stride > (file.size() - qint64(dataAt)) / rows)
            return Truncated;
        return {};
    }
    case Rle8:
    case Rle4:
        // Compressed pictures are always stored bottom row first.
        if (height < 0 || bits != (compression == Rle8 ? 8 : 4))
            return QStringLiteral("the BMP header is damaged");
        return CheckRunLengths(file, dataAt, height, compression == Rle4);
    default:
        return QStringLiteral("the BMP compression is not one a skin can use");
    }
}

// ---- GIF ---------------------------------------------------------------

namespace {

// Skips a chain of data sub-blocks; false when the file ends inside it.
bool SkipSubBlocks(QByteArrayView file, qsizetype &at)
{
    while (at < file.size()) {
        const quint8 length = At(file, at++);
        if (length == 0)
            return true;
        at += length;
    }
    return false;
}

qsizetype ColourTable(quint8 flags)
{
    return (flags & 0x80) ? 3 << ((flags & 7) + 1) : 0;
}

} // namespace

QString CheckGif(QByteArrayView file)
{
    if (file.size() < 13)
        return Truncated;
    qsizetype at = 13 + ColourTable(At(file, 10));
    int pictures = 0;
    while (at < file.size()) {
        switch (At(file, at++)) {
        case 0x3B: // trailer
            return pictures ? QString() : QStringLiteral("the GIF file holds no picture");
        case 0x21: // extension: label, then its blocks
            ++at;
            if (!SkipSubBlocks(file, at))
                return Truncated;
            break;
        case 0x2C: // picture: its descriptor, colours and compressed data
            if (at + 9 > file.size())
                return Truncated;
            at += 9 + ColourTable(At(file, at + 8));
            ++at; // the code size
            if (!SkipSubBlocks(file, at))
                return Truncated;
            ++pictures;
            break;
        default:
            return QStringLiteral("the GIF file is damaged");
        }
    }
    return Truncated;
}

// ---- JPEG --------------------------------------------------------------

QString CheckJpeg(QByteArrayView file)
{
    qsizetype at = 2;
    while (true) {
        // Stray bytes between segments are skipped, as the decoder does.
        while (at < file.size() && At(file, at) != 0xFF)
            ++at;
        while (at < file.size() && At(file, at) == 0xFF)
            ++at;
        if (at >= file.size())
            return Truncated;
        const quint8 marker = At(file, at++);
        if (marker == 0xD9)
            return {}; // end of picture
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7))
            continue; // markers without a length
        if (at + 2 > file.size())
            return Truncated;
        const quint16 length = quint16(At(file, at) << 8 | At(file, at + 1));
        if (length < 2)
            return QStringLiteral("the JPEG file is damaged");
        at += length;
        if (at > file.size())
            return Truncated;
        if (marker != 0xDA)
            continue;
        // Compressed data follows a scan header, up to the next marker that
        // is neither a stuffed 0xFF nor a restart.
        while (at + 1 < file.size()) {
            const quint8 next = At(file, at + 1);
            if (At(file, at) == 0xFF && next != 0 && !(next >= 0xD0 && next <= 0xD7))
                break;
            ++at;
        }
        if (at + 1 >= file.size())
            return Truncated;
    }
}

// ---- metafiles ---------------------------------------------------------

QString CheckWmf(QByteArrayView file)
{
    qsizetype at = file.size() >= 4 && Le32(file, 0) == WmfPlaceableKey ? WmfPlaceableSize : 0;
    if (!StandardWmfHeader(file, at))
        return QStringLiteral("the WMF header is damaged");
    at += WmfHeaderSize;
    while (at + 6 <= file.size()) {
        const quint32 words = Le32(file, at);
        const quint16 function = Le16(file, at + 4);
        if (function == 0)
            return {}; // the end record
        if (words < 3)
            return QStringLiteral("the WMF records are damaged");
        if (qint64(words) * 2 > file.size() - at)
            return Truncated;
        at += qsizetype(words) * 2;
    }
    return Truncated;
}

QString CheckEmf(QByteArrayView file)
{
    constexpr quint32 EndRecord = 14;
    if (file.size() < 88 || Le32(file, 4) < 88)
        return QStringLiteral("the EMF header is damaged");
    qsizetype at = 0;
    while (at + 8 <= file.size()) {
        const quint32 type = Le32(file, at), size = Le32(file, at + 4);
        if (size < 8 || size % 4 != 0)
            return QStringLiteral("the EMF records are damaged");
        if (size > file.size() - at)
            return Truncated;
        if (type == EndRecord)
            return {};
        at += size;
    }
    return Truncated;
}
