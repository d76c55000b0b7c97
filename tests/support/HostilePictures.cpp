#include "HostilePictures.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

namespace {

struct Bytes
{
    QByteArray data;
    void U8(int v) { data.append(char(v)); }
    void U16(int v) { U8(v & 0xFF), U8((v >> 8) & 0xFF); }
    void U32(qint64 v) { U16(int(v & 0xFFFF)), U16(int((v >> 16) & 0xFFFF)); }
};

// Rectangles over the whole of a `side`-pixel picture on a reference device
// of 96 pixels to the inch (3780 pixels in a metre).
QByteArray EmfRectangles(int side, qint64 count)
{
    Bytes b;
    const qint64 frame = (qint64(side) * 100000 + 1890) / 3780; // 0.01 mm
    b.U32(1), b.U32(108);
    b.U32(0), b.U32(0), b.U32(side - 1), b.U32(side - 1);
    b.U32(0), b.U32(0), b.U32(frame), b.U32(frame);
    b.U32(0x464D4520), b.U32(0x10000);
    b.U32(108 + 24 * count + 20), b.U32(count + 2);
    b.U16(1), b.U16(0), b.U32(0), b.U32(0), b.U32(0);
    b.U32(3780), b.U32(3780), b.U32(1000), b.U32(1000);
    b.U32(0), b.U32(0), b.U32(0), b.U32(1000000), b.U32(1000000);
    b.data.reserve(b.data.size() + 24 * count + 20);
    for (qint64 i = 0; i < count; ++i)
        b.U32(43), b.U32(24), b.U32(0), b.U32(0), b.U32(side), b.U32(side);
    b.U32(14), b.U32(20), b.U32(0), b.U32(16), b.U32(20);
    return b.data;
}

QByteArray WmfRectangles(int side, int count)
{
    Bytes b;
    const int placeable[] = {0xCDD7, 0x9AC6, 0, 0, 0, side, side, 96, 0, 0};
    int sum = 0;
    for (const int word : placeable)
        b.U16(word), sum ^= word;
    b.U16(sum);
    const qint64 words = 9 + 5 + 5 + 7 * qint64(count) + 3;
    b.U16(1), b.U16(9), b.U16(0x0300), b.U32(words), b.U16(0), b.U32(7), b.U16(0);
    b.U32(5), b.U16(0x020B), b.U16(0), b.U16(0);
    b.U32(5), b.U16(0x020C), b.U16(side), b.U16(side);
    for (int i = 0; i < count; ++i)
        b.U32(7), b.U16(0x041B), b.U16(side), b.U16(side), b.U16(0), b.U16(0);
    b.U32(3), b.U16(0);
    return b.data;
}

// A progressive JPEG whose last scan comes `scans` times.
QByteArray JpegScans(int side, int scans)
{
    // One flat colour keeps every scan to a few bytes.
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(qRgb(90, 140, 200));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(true);
    writer.write(image);
    const QByteArray jpeg = buffer.data();
    const qsizetype last = jpeg.lastIndexOf("\xFF\xDA"), end = jpeg.size() - 2;
    return jpeg.left(end) + jpeg.mid(last, end - last).repeated(scans - 1) + "\xFF\xD9";
}

// A 370 x 380 screen and one frame of 65535 x 65535 pixels, its data one
// run after another of a clear code and two pixels, in 3-bit codes: eight
// runs to nine bytes, and one more.
QByteArray GifHugeFrame()
{
    Bytes b;
    b.data = "GIF89a";
    b.U16(370), b.U16(380), b.U8(0x80), b.U8(0), b.U8(0);
    b.U8(0), b.U8(0), b.U8(0), b.U8(255), b.U8(255), b.U8(255);
    b.U8(0x2C), b.U16(0), b.U16(0), b.U16(65535), b.U16(65535), b.U8(0), b.U8(2);
    const QByteArray codes = QByteArray("\x44\x88\x10\x21\x42\x84\x08\x11\x22").repeated(322222)
        + QByteArray("\x44\0", 2);
    for (qsizetype at = 0; at < codes.size(); at += 255) {
        const QByteArray block = codes.mid(at, 255);
        b.U8(int(block.size())), b.data.append(block);
    }
    b.U8(0), b.U8(0x3B);
    return b.data;
}

} // namespace

const QList<HostilePicture> &HostilePictures()
{
    static const QList<HostilePicture> all = {
        {"emf-many-records", [] { return EmfRectangles(400, 2600000); }},
        {"emf-large-drawing", [] { return EmfRectangles(4096, 2000); }},
        {"wmf-large-drawing", [] { return WmfRectangles(400, 2000); }},
        {"jpeg-repeated-scans", [] { return JpegScans(4096, 2000); }},
        {"jpeg-many-scans", [] { return JpegScans(400, 50000); }},
        {"gif-frame-beyond-its-screen", [] { return GifHugeFrame(); }},
    };
    return all;
}
