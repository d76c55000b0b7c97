// Skin pictures in every variant a paint program writes, made here by
// ImageMagick or our metafile writer and read back pixel for pixel; and
// damaged or hostile ones, which the loader refuses before decoding them.
#include "Metafile.h"
#include "skin/PictureFormats.h"
#include "skin/PictureLoader.h"
#include "support/HostilePictures.h"
#include "support/ProgramFolder.h"

#include <QDir>
#include <QProcess>
#include <QTest>
#include <QtEndian>

namespace {

// Up to `colours` colours in cells of `cell` pixels, laid out irregularly so
// that a row or column out of place shows, black and white first as a
// bilevel picture has them. 8-pixel cells have an odd width, so that every
// bitmap depth's rows end in padding; 40-pixel ones, which lossy pictures
// keep intact away from their edges, are no skin's size, for metafiles are
// drawn at their own.
QImage Drawn(int colours, int cell)
{
    QImage image(cell * 11 + 3, cell * 9, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int i = (x / cell * 5 + y / cell * 13 + x / cell * (y / cell)) % colours;
            image.setPixel(x, y,
                i < 2 ? qRgb(i * 255, i * 255, i * 255)
                      : qRgb(i * 37 & 0xFF, i * 91 & 0xFF, (i * 53 + 29) & 0xFF));
        }
    return image;
}

// An uncompressed BMP stored top row first instead.
QByteArray TopDown(QByteArray bmp)
{
    const qint32 height = LeI32(bmp, 22), at = LeI32(bmp, 10);
    const qsizetype stride = (bmp.size() - at) / height;
    const QByteArray bottomUp = bmp;
    for (int y = 0; y < height; ++y)
        bmp.replace(at + y * stride, stride, bottomUp.mid(at + (height - 1 - y) * stride, stride));
    qToLittleEndian<qint32>(-height, bmp.data() + 22);
    return bmp;
}

// A plain 4-bit BMP run-length encoded: each row an odd literal stretch
// with its unused half byte zero and padded to a word, as writers leave
// them, a run of one pixel, then runs of two alternating ones.
QByteArray RunLength4(const QByteArray &plain)
{
    const int pixels = int(Le32(plain, 10)), width = LeI32(plain, 18), height = LeI32(plain, 22);
    const int stride = (width * 4 + 31) / 32 * 4;
    QByteArray bmp = plain.left(pixels);
    qToLittleEndian<quint32>(2, bmp.data() + 30);
    const auto put = [&bmp](auto... bytes) { (bmp.append(char(bytes)), ...); };
    for (int y = 0; y < height; ++y) {
        const char *row = plain.constData() + pixels + y * stride;
        put(0, 5, row[0], row[1], row[2] & 0xF0, 0, 1, row[2] << 4);
        for (int x = 6; x < width; x += 2)
            put(std::min(2, width - x), row[x / 2]);
        put(0, 0);
    }
    put(0, 1);
    return bmp;
}

// `dpi`: the EMF's reference device, which must not change its size.
// `depth`: a WMF holding the picture as one bitmap of that depth instead.
QByteArray Metafile(
    const QImage &drawn, bool emf, int dpi = 96, int depth = 0, bool bitFields = false)
{
    MetafileDrawing drawing(drawn.size());
    drawing.SetReferenceDpi(dpi);
    if (depth)
        drawing.Add({.kind = MetaShape::Kind::Bitmap,
            .rings = {QPolygonF(QRectF(drawn.rect()))},
            .image = drawn,
            .bitmapDepth = depth,
            .bitFields = bitFields});
    for (int y = 0; y < drawn.height() && !depth; y += 40)
        for (int x = 0; x + 40 <= drawn.width(); x += 40)
            drawing.Add({.rings = {QPolygonF(QRectF(x, y, 40, 40)).mid(0, 4)},
                .fill = QColor(drawn.pixel(x, y))});
    return emf ? drawing.Emf() : drawing.Wmf();
}

struct Variant
{
    const char *file;
    int colours, cell; // for Drawn()
    QString convert; // ImageMagick's arguments; empty: made here
    // BMP: header size, bits, compression, so that the row tests what it
    // names; the old core header, whose size says what it is, only its size.
    QList<quint32> header;
    // The largest difference of a channel allowed, leaving out `margin`
    // pixels at the edges of cells, which lossy and vector pictures blur.
    int tolerance, margin = 0;
    int bitmapDepth = 0; // for a WMF of one bitmap
    bool bitFields = false;
};

const Variant Variants[] = {
    {"1-bit.bmp", 2, 8, "-type Bilevel -compress None BMP3:", {40, 1, 0}, 0},
    {"4-bit.bmp", 16, 8, "-type Palette -compress None BMP3:", {40, 4, 0}, 0},
    {"8-bit.bmp", 256, 8, "-type Palette -compress None BMP3:", {40, 8, 0}, 0},
    {"rle8.bmp", 256, 8, "-type Palette -compress RLE BMP3:", {40, 8, 1}, 0},
    {"rle4.bmp", 16, 8, "", {40, 4, 2}, 0},
    // Five bits of a channel are off by up to two steps of eight.
    {"16-bit.bmp", 256, 8, "-type TrueColor -define bmp:subtype=RGB565 BMP:", {124, 16, 3}, 16},
    {"24-bit.bmp", 256, 8, "-type TrueColor -compress None BMP3:", {40, 24, 0}, 0},
    {"top-down.bmp", 256, 8, "", {40, 24, 0}, 0},
    {"core-header.bmp", 256, 8, "-type Palette BMP2:", {12}, 0},
    {"interlaced.gif", 256, 8, "-interlace GIF GIF:", {}, 0},
    {"progressive.jpg", 8, 40, "-quality 90 -interlace Plane JPEG:", {}, 6, 8},
    {"tiles.wmf", 8, 40, "", {}, 0, 8},
    {"tiles.emf", 8, 40, "", {}, 0, 8},
    {"tiles-1200-dpi.emf", 8, 40, "", {}, 0, 8},
    // The library stretches bitmaps smoothly, rounding down by one step at
    // most, so only the cells' middles are compared. 32 bits is what a
    // drawing program writes for a picture placed in its drawing.
    {"bitmap-1.wmf", 2, 8, "", {}, 1, 2, 1},
    {"bitmap-8.wmf", 256, 8, "", {}, 1, 2, 8},
    {"bitmap-32.wmf", 256, 8, "", {}, 1, 2, 32},
    {"bitmap-32-bit-fields.wmf", 256, 8, "", {}, 1, 2, 32, true},
};

} // namespace

class tst_Pictures : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(folder_.File("skins")));
        for (const Variant &v : Variants) {
            const QString png = QStringLiteral("%1-%2.png").arg(v.colours).arg(v.cell);
            QVERIFY(Drawn(v.colours, v.cell).save(png));
            QVERIFY2(v.convert.isEmpty()
                    || QProcess::execute("convert", (png + ' ' + v.convert + v.file).split(' '))
                        == 0,
                "ImageMagick's convert is needed (scripts/setup.sh)");
            if (v.bitmapDepth)
                folder_.Write(QStringLiteral("skins/") + v.file,
                    Metafile(Drawn(v.colours, v.cell), false, 96, v.bitmapDepth, v.bitFields));
        }
        folder_.Write("skins/rle4.bmp", RunLength4(folder_.Read("skins/4-bit.bmp")));
        folder_.Write("skins/top-down.bmp", TopDown(folder_.Read("skins/24-bit.bmp")));
        folder_.Write("skins/tiles.wmf", Metafile(Drawn(8, 40), false));
        folder_.Write("skins/tiles.emf", Metafile(Drawn(8, 40), true));
        folder_.Write("skins/tiles-1200-dpi.emf", Metafile(Drawn(8, 40), true, 1200));
        QVERIFY(Drawn(2, 8).save("png.bmp", "PNG"));
    }

    void variantsReadAsDrawn_data()
    {
        QTest::addColumn<int>("variant");
        for (const Variant &v : Variants)
            QTest::newRow(v.file) << int(&v - Variants);
    }

    void variantsReadAsDrawn()
    {
        QFETCH(int, variant);
        const Variant &v = Variants[variant];
        const QByteArray bmp = folder_.Read(QStringLiteral("skins/") + v.file);
        const QList<quint32> header {Le32(bmp, 14), Le16(bmp, 28), Le32(bmp, 30)};
        QCOMPARE(header.first(v.header.size()), v.header);
        QString reason;
        const QImage read = LoadPicture(v.file, &reason).convertToFormat(QImage::Format_RGB32);
        QVERIFY2(!read.isNull(), qPrintable(reason));
        const QImage drawn = Drawn(v.colours, v.cell);
        QCOMPARE(read.size(), drawn.size());
        const auto inside
            = [&v](int at) { return at % v.cell >= v.margin && at % v.cell < v.cell - v.margin; };
        for (int y = 0; y < drawn.height(); ++y)
            for (int x = 0; x < drawn.width(); ++x) {
                const QRgb p = read.pixel(x, y), q = drawn.pixel(x, y);
                const int largest = std::max({std::abs(qRed(p) - qRed(q)),
                    std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
                if (inside(x) && inside(y) && largest > v.tolerance)
                    QFAIL(qPrintable(QStringLiteral("%1 at (%2, %3)").arg(largest).arg(x).arg(y)));
            }
    }

    void damagedFilesAreRefused_data()
    {
        QTest::addColumn<QString>("file");
        // Negative: that many bytes lost from its end; else where a 32-bit
        // field of its header is set to `value`.
        QTest::addColumn<int>("at");
        QTest::addColumn<uint>("value");
        // What the refusal says: a decoder that gives up on its own must not be
        // all that stands between a damaged file and the game.
        QTest::addColumn<QString>("says");
        for (const char *file : {"24-bit.bmp", "rle8.bmp", "rle4.bmp", "interlaced.gif",
                 "progressive.jpg", "tiles.wmf", "tiles.emf"})
            QTest::addRow("%s cut short", file) << QString(file) << -3 << 0u << "ends before";
        QTest::newRow("png named bmp") << "png.bmp" << 0 << 0u << "not a BMP";
        // 500000 pixels wide, which run-length data cannot contradict.
        QTest::newRow("rle8 huge") << "rle8.bmp" << 18 << 500000u << "pixels";
        // One unit of the placeable box to the inch, not 1536.
        QTest::newRow("wmf huge") << "tiles.wmf" << 14 << 1u << "pixels";
        // The frame's right edge 21 km away.
        QTest::newRow("emf huge") << "tiles.emf" << 32 << 0x7FFFFFFFu << "pixels";
        // Small files that would cost a decoder minutes or gigabytes.
        for (const HostilePicture &picture : HostilePictures())
            QTest::newRow(picture.name)
                << picture.name << 0 << 0u
                << (QByteArray(picture.name).startsWith("gif") ? "lies outside"
                                                               : "than a skin may cost");
    }

    void damagedFilesAreRefused()
    {
        QFETCH(QString, file);
        QFETCH(int, at);
        QFETCH(uint, value);
        QFETCH(QString, says);
        QByteArray bytes = folder_.Read("skins/" + file);
        for (const HostilePicture &picture : HostilePictures())
            if (file == picture.name)
                bytes = picture.make();
        if (at < 0)
            bytes.chop(-at);
        else if (at > 0)
            qToLittleEndian<quint32>(value, bytes.data() + at);
        folder_.Write("skins/damaged-" + file, bytes);
        QString reason;
        QVERIFY(LoadPicture("damaged-" + file, &reason).isNull());
        QVERIFY2(reason.contains(says), qPrintable(reason));
    }

private:
    ProgramFolder folder_; // the pictures are made among its skins
};

QTEST_MAIN(tst_Pictures)
#include "tst_Pictures.moc"
