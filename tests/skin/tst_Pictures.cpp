// Skin pictures in every variant a paint program writes, made here by
// ImageMagick or our metafile writer and read back pixel for pixel; and
// damaged or hostile ones, which the loader refuses before decoding them.
#include "Metafile.h"
#include "skin/PictureFormats.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"
#include "support/HostilePictures.h"
#include "support/ProgramFolder.h"

#include <QDir>
#include <QProcess>
#include <QTest>
#include <QtEndian>

namespace {

// "2", "16", "256": exactly that many colours, laid out irregularly so that
// a row or column out of place shows; "unique": no two pixels alike;
// "squares": flat 40-pixel squares, which lossy pictures keep intact away
// from their edges; "tiles": the squares at a size that is no skin's, for
// metafiles, which are drawn at their own size; "cells" and a number:
// 8-pixel cells of that many colours, an odd width so that every bitmap
// depth's rows end in padding. Black and white come first, as a bilevel
// picture has them.
QImage Drawn(const QString &source)
{
    if (source == "unique")
        return KnownSkin();
    if (source.startsWith("cells")) {
        QImage image(13 * 8 + 3, 9 * 8, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const int i = (x / 8 * 5 + y / 8 * 13 + x / 8 * (y / 8)) % source.mid(5).toInt();
                image.setPixel(x, y,
                    i < 2 ? qRgb(i * 255, i * 255, i * 255)
                          : qRgb(i * 37 & 0xFF, i * 91 & 0xFF, (i * 53 + 29) & 0xFF));
            }
        return image;
    }
    const bool flat = source == "squares" || source == "tiles";
    QImage image(
        source == "tiles" ? QSize(440, 360) : QSize(SkinWidth, SkinHeight), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int i = flat ? (x / 40 + y / 40 * 3) % 8
                               : (x / 3 + y / 5 * 7 + x * y / 97) % source.toInt();
            image.setPixel(x, y,
                qRgb(-i & 0xFF, (i * (i - 1) * 53 - i) & 0xFF, (i * (i - 1) * 97 - i) & 0xFF));
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
    const qsizetype pixels = Le32(plain, 10), stride = (SkinWidth * 4 + 31) / 32 * 4;
    QByteArray bmp = plain.left(pixels);
    qToLittleEndian<quint32>(2, bmp.data() + 30);
    const auto put = [&bmp](auto... bytes) { (bmp.append(char(bytes)), ...); };
    for (int y = 0; y < SkinHeight; ++y) {
        const char *row = plain.constData() + pixels + y * stride;
        put(0, 5, row[0], row[1], row[2] & 0xF0, 0, 1, row[2] << 4);
        for (int x = 6; x < SkinWidth; x += 2)
            put(2, row[x / 2]);
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
    if (depth) {
        MetaShape bitmap;
        bitmap.kind = MetaShape::Kind::Bitmap;
        bitmap.rings = {QPolygonF(QRectF(drawn.rect()))};
        bitmap.image = drawn;
        bitmap.bitmapDepth = depth;
        bitmap.bitFields = bitFields;
        drawing.Add(bitmap);
    }
    for (int y = 0; y < drawn.height() && !depth; y += 40)
        for (int x = 0; x < drawn.width(); x += 40) {
            MetaShape square;
            square.rings = {QPolygonF(QRectF(x, y, 40, 40)).mid(0, 4)};
            square.fill = QColor(drawn.pixel(x, y));
            drawing.Add(square);
        }
    return emf ? drawing.Emf() : drawing.Wmf();
}

// The largest difference of a channel between two pictures of one size,
// leaving out `margin` pixels at the edges of flat squares of `square`
// pixels, which lossy and vector pictures blur.
int LargestDifference(const QImage &read, const QImage &drawn, int square = 1, int margin = 0)
{
    const auto inside = [=](int v) { return v % square >= margin && v % square < square - margin; };
    int largest = 0;
    for (int y = 0; y < drawn.height(); ++y)
        for (int x = 0; x < drawn.width(); ++x) {
            if (!inside(x) || !inside(y))
                continue;
            const QRgb p = read.pixel(x, y), q = drawn.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)),
                std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    return largest;
}

struct Variant
{
    const char *file;
    QString source; // for Drawn()
    QString convert; // ImageMagick's arguments; empty: made here
    QList<quint32> header; // BMP: header size, bits, compression; so the row tests what it names
    int tolerance;
    int bitmapDepth = 0; // for a WMF of one bitmap
    bool bitFields = false;
};

const Variant Variants[] = {
    {"1-bit.bmp", "2", "-type Bilevel -compress None BMP3:", {40, 1, 0}, 0},
    {"4-bit.bmp", "16", "-type Palette -compress None BMP3:", {40, 4, 0}, 0},
    {"8-bit.bmp", "256", "-type Palette -compress None BMP3:", {40, 8, 0}, 0},
    {"rle8.bmp", "256", "-type Palette -compress RLE BMP3:", {40, 8, 1}, 0},
    {"rle4.bmp", "16", "", {40, 4, 2}, 0},
    // Five bits of a channel are off by up to two steps of eight.
    {"16-bit.bmp", "unique", "-type TrueColor -define bmp:subtype=RGB565 BMP:", {124, 16, 3}, 16},
    {"24-bit.bmp", "unique", "-type TrueColor -compress None BMP3:", {40, 24, 0}, 0},
    {"32-bit.bmp", "unique", "-alpha set -define bmp3:alpha=true BMP3:", {40, 32, 0}, 0},
    {"top-down.bmp", "unique", "", {40, 24, 0}, 0},
    {"core-header.bmp", "256", "-type Palette BMP2:", {12, 8, 0}, 0},
    {"8-bit.dib", "256", "-type Palette -compress None BMP3:", {40, 8, 0}, 0},
    {"interlaced.gif", "256", "-interlace GIF GIF:", {}, 0},
    {"progressive.jpg", "squares", "-quality 90 -interlace Plane JPEG:", {}, 6},
    {"tiles.wmf", "tiles", "", {}, 0},
    {"tiles.emf", "tiles", "", {}, 0},
    {"tiles-1200-dpi.emf", "tiles", "", {}, 0},
    // The library stretches bitmaps smoothly, rounding down by one step at
    // most, so only the cells' middles are compared; five bits of a channel
    // are off by up to a step of eight. 32 bits is what a drawing program
    // writes for a picture placed in its drawing.
    {"bitmap-1.wmf", "cells2", "", {}, 1, 1},
    {"bitmap-4.wmf", "cells16", "", {}, 1, 4},
    {"bitmap-8.wmf", "cells256", "", {}, 1, 8},
    {"bitmap-16.wmf", "cells1000", "", {}, 8, 16},
    {"bitmap-16-bit-fields.wmf", "cells1000", "", {}, 8, 16, true},
    {"bitmap-24.wmf", "cells1000", "", {}, 1, 24},
    {"bitmap-32.wmf", "cells1000", "", {}, 1, 32},
    {"bitmap-32-bit-fields.wmf", "cells1000", "", {}, 1, 32, true},
};

} // namespace

class tst_Pictures : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void variantsReadAsDrawn_data();
    void variantsReadAsDrawn();
    void damagedFilesAreRefused_data();
    void damagedFilesAreRefused();

private:
    ProgramFolder folder_; // the pictures are made among its skins
};

void tst_Pictures::initTestCase()
{
    QVERIFY(QDir::setCurrent(folder_.File("skins")));
    for (const Variant &v : Variants) {
        QVERIFY(QFile::exists(v.source + ".png") || Drawn(v.source).save(v.source + ".png"));
        const QStringList args = (v.source + ".png " + v.convert + v.file).split(' ');
        QVERIFY2(v.convert.isEmpty() || QProcess::execute("convert", args) == 0,
            "ImageMagick's convert is needed (scripts/setup.sh)");
    }
    folder_.Write("skins/rle4.bmp", RunLength4(folder_.Read("skins/4-bit.bmp")));
    folder_.Write("skins/top-down.bmp", TopDown(folder_.Read("skins/24-bit.bmp")));
    folder_.Write("skins/tiles.wmf", Metafile(Drawn("tiles"), false));
    folder_.Write("skins/tiles.emf", Metafile(Drawn("tiles"), true));
    folder_.Write("skins/tiles-1200-dpi.emf", Metafile(Drawn("tiles"), true, 1200));
    for (const Variant &v : Variants)
        if (v.bitmapDepth)
            folder_.Write(QStringLiteral("skins/") + v.file,
                Metafile(Drawn(v.source), false, 96, v.bitmapDepth, v.bitFields));
    QVERIFY(Drawn("256").save("png.bmp", "PNG"));
}

void tst_Pictures::variantsReadAsDrawn_data()
{
    QTest::addColumn<int>("variant");
    for (const Variant &v : Variants)
        QTest::newRow(v.file) << int(&v - Variants);
}

void tst_Pictures::variantsReadAsDrawn()
{
    QFETCH(int, variant);
    const auto &[file, source, convert, header, tolerance, depth, bitFields] = Variants[variant];
    // Bits and compression lie elsewhere in the old core header.
    const QByteArray bmp = folder_.Read(QStringLiteral("skins/") + file);
    const bool core = Le32(bmp, 14) == 12;
    if (!header.isEmpty())
        QCOMPARE(
            (QList<quint32> {Le32(bmp, 14), Le16(bmp, core ? 24 : 28), core ? 0 : Le32(bmp, 30)}),
            header);
    QString reason;
    const QImage read = LoadPicture(file, &reason).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(!read.isNull(), qPrintable(reason));
    const QImage drawn = Drawn(source);
    QCOMPARE(read.size(), drawn.size());
    const bool flat = source == "squares" || source == "tiles";
    const int largest = LargestDifference(read, drawn,
        flat        ? 40
            : depth ? 8
                    : 1,
        flat        ? 8
            : depth ? 2
                    : 0);
    QVERIFY2(largest <= tolerance, qPrintable(QString::number(largest)));
}

void tst_Pictures::damagedFilesAreRefused_data()
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
    // 100000 pixels wide, which run-length data cannot contradict.
    QTest::newRow("rle8 huge") << "rle8.bmp" << 18 << 100000u << "pixels";
    // One unit of the placeable box to the inch, not 1536.
    QTest::newRow("wmf huge") << "tiles.wmf" << 14 << 1u << "pixels";
    // The frame's right edge 21 km away.
    QTest::newRow("emf huge") << "tiles.emf" << 32 << 0x7FFFFFFFu << "pixels";
    QTest::newRow("empty") << "empty.bmp" << 0 << 0u << "not a BMP";
    QTest::newRow("missing") << "missing.bmp" << 0 << 0u << "no such file";
    // Small files that would cost a decoder minutes or gigabytes.
    for (const HostilePicture &picture : HostilePictures())
        QTest::newRow(picture.name)
            << picture.name << 0 << 0u
            << (QByteArray(picture.name).startsWith("gif") ? "lies outside"
                                                           : "than a skin may cost");
}

void tst_Pictures::damagedFilesAreRefused()
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
    if (file != "missing.bmp")
        folder_.Write("skins/damaged-" + file, bytes);
    QString reason;
    QVERIFY(LoadPicture("damaged-" + file, &reason).isNull());
    QVERIFY2(reason.contains(says), qPrintable(reason));
}

QTEST_MAIN(tst_Pictures)
#include "tst_Pictures.moc"
