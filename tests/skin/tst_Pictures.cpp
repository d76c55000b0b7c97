// Skin pictures in every format and variant a paint program writes, made
// here by ImageMagick or our metafile writer, read back pixel for pixel; and
// what the loader refuses.
#include "Metafile.h"
#include "SvgSource.h"
#include "skin/PictureClip.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <functional>

namespace {

const QString SkinError
    = QStringLiteral("Quorvel - ERROR | An error has occurred while attempting to "
                     "load picture \r\n%1\r\nMake sure the picture exists and is "
                     "of a correct format.");

QRgb Colour(int index, int count)
{
    if (count == 2)
        return index ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
    return qRgb((index * 53) & 0xFF, (index * 101 + 40) & 0xFF, (index * 197 + 90) & 0xFF);
}

// Colours laid out irregularly, so that a row or column out of place shows.
int ColourAt(int x, int y, int count)
{
    return (x / 3 + y / 5 * 7 + x * y / 97) % count;
}

// A skin-sized picture of exactly `count` colours.
QImage Colours(int count)
{
    QImage image(SkinWidth, SkinHeight, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, Colour(ColourAt(x, y, count), count));
    return image;
}

// Flat 40-pixel squares of eight colours, for lossy pictures.
QImage Squares()
{
    QImage image(SkinWidth, SkinHeight, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, Colour((x / 40 + y / 40 * 3) % 8, 8));
    return image;
}

QImage Source(const QString &name)
{
    if (name == "squares")
        return Squares();
    if (name == "unique")
        return KnownSkin();
    return Colours(name.toInt());
}

// The largest difference of any channel of any pixel, considering only
// pixels for which `counts` is true.
int LargestDifference(
    const QImage &a, const QImage &b, const std::function<bool(int, int)> &counts = {})
{
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            if (counts && !counts(x, y))
                continue;
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)),
                std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    return largest;
}

QByteArray ReadFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WriteFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// An uncompressed bottom-up BMP stored top row first instead.
QByteArray TopDown(QByteArray bmp)
{
    const qint32 width = qFromLittleEndian<qint32>(bmp.constData() + 18);
    const qint32 height = qFromLittleEndian<qint32>(bmp.constData() + 22);
    const int bits = qFromLittleEndian<quint16>(bmp.constData() + 28);
    const quint32 at = qFromLittleEndian<quint32>(bmp.constData() + 10);
    const int stride = (width * bits + 31) / 32 * 4;
    QByteArray rows;
    for (int y = height - 1; y >= 0; --y)
        rows += bmp.mid(at + y * stride, stride);
    bmp.replace(at, rows.size(), rows);
    qToLittleEndian<qint32>(-height, bmp.data() + 22);
    return bmp;
}

// A 4-bit run-length BMP of Colours(16), as paint programs write them: runs
// of one colour, and each row starting with a literal stretch.
QByteArray RunLength4()
{
    const QImage image = Colours(16);
    QByteArray data;
    for (int y = image.height() - 1; y >= 0; --y) {
        const auto at = [y](int x) { return ColourAt(x, y, 16); };
        data += char(0), data += char(5);
        data += char(at(0) << 4 | at(1)), data += char(at(2) << 4 | at(3)),
            data += char(at(4) << 4);
        data += char(0);
        for (int x = 5; x < image.width();) {
            int run = 1;
            while (x + run < image.width() && run < 255 && at(x + run) == at(x))
                ++run;
            data += char(run), data += char(at(x) << 4 | at(x));
            x += run;
        }
        data += char(0), data += char(0);
    }
    data += char(0), data += char(1);
    QByteArray file(14 + 40 + 64, '\0');
    file[0] = 'B', file[1] = 'M';
    qToLittleEndian<quint32>(quint32(file.size() + data.size()), file.data() + 2);
    qToLittleEndian<quint32>(quint32(file.size()), file.data() + 10);
    const quint32 header[] = {40, quint32(image.width()), quint32(image.height()), 1 | 4 << 16, 2,
        quint32(data.size()), 2835, 2835, 16, 0};
    for (int i = 0; i < 10; ++i)
        qToLittleEndian<quint32>(header[i], file.data() + 14 + 4 * i);
    for (int i = 0; i < 16; ++i)
        qToLittleEndian<quint32>(Colour(i, 16) & 0xFFFFFF, file.data() + 54 + 4 * i);
    return file + data;
}

// The header's size, bits per pixel and compression, to be sure a row tests
// the variant it names.
QString BmpVariant(const QByteArray &bmp)
{
    const quint32 size = qFromLittleEndian<quint32>(bmp.constData() + 14);
    if (size == 12)
        return QStringLiteral("12/%1/0").arg(qFromLittleEndian<quint16>(bmp.constData() + 24));
    const qint32 height = qFromLittleEndian<qint32>(bmp.constData() + 22);
    return QStringLiteral("%1/%2/%3%4")
        .arg(size)
        .arg(qFromLittleEndian<quint16>(bmp.constData() + 28))
        .arg(qFromLittleEndian<quint32>(bmp.constData() + 30))
        .arg(height < 0 ? "/top-down" : "");
}

// Flat rectangles on white: a strip along the top, the big block's place,
// its neighbour and a square in the far corner.
QList<std::pair<QRect, QColor>> Rectangles(QSize size)
{
    return {{QRect(0, 0, size.width(), 20), QColor(0x40, 0x20, 0x10)},
        {QRect(20, 20, 120, 120), QColor(0xC0, 0x20, 0x20)},
        {QRect(140, 20, 120, 120), QColor(0x20, 0x60, 0xC0)},
        {QRect(size.width() - 30, size.height() - 30, 30, 30), QColor(0x10, 0xA0, 0x40)}};
}

// The rectangles as a metafile, or drawn straight into pixels.
QByteArray RectanglesAs(const QString &format, QSize size)
{
    MetafileDrawing drawing(size);
    for (const auto &[rect, colour] : Rectangles(size)) {
        MetaShape shape;
        shape.rings = {QPolygonF(QRectF(rect)).mid(0, 4)};
        shape.fill = colour;
        drawing.Add(shape);
    }
    return format == "emf" ? drawing.Emf() : drawing.Wmf();
}

QImage RectanglesDrawn(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (const auto &[rect, colour] : Rectangles(size))
        painter.fillRect(rect, colour);
    return image;
}

// The file of `variant` (or a metafile of rectangles) damaged as `damage`
// says: "cut N" keeps N bytes (all but -N), "garbage" keeps only the
// format's signature, "huge" and "empty" change the size in the header.
QByteArray Damaged(const QString &variant, const QString &damage, const QString &path)
{
    QByteArray bytes;
    const bool metafile = variant == "emf" || variant == "wmf";
    if (metafile)
        bytes = RectanglesAs(variant, QSize(SkinWidth, SkinHeight));
    else if (!variant.isEmpty())
        bytes = ReadFile(path);
    else if (damage == "text")
        bytes = "this is no picture\r\n";
    const QString format = metafile ? variant
        : bytes.startsWith("BM")    ? "bmp"
        : bytes.startsWith("GIF")   ? "gif"
                                    : "jpeg";

    if (damage.startsWith("cut")) {
        const int at = damage.section(' ', 1).toInt();
        bytes.truncate(at < 0 ? bytes.size() + at : at);
    } else if (damage == "garbage") {
        const int keep = format == "emf" ? 44 : format == "wmf" ? 40 : format == "bmp" ? 2 : 6;
        for (qsizetype i = keep; i < bytes.size(); ++i)
            bytes[i] = char((i * 7919 + 13) % 251);
    } else if (damage == "huge" || damage == "empty") {
        const int side = damage == "huge" ? 30000 : 0;
        if (format == "bmp" && qFromLittleEndian<quint32>(bytes.constData() + 14) == 12) {
            qToLittleEndian<quint16>(side, bytes.data() + 18);
            qToLittleEndian<quint16>(side, bytes.data() + 20);
        } else if (format == "bmp") {
            qToLittleEndian<qint32>(side, bytes.data() + 18);
            qToLittleEndian<qint32>(side, bytes.data() + 22);
        } else if (format == "gif") { // the screen the picture lies on
            qToLittleEndian<quint16>(side, bytes.data() + 6);
            qToLittleEndian<quint16>(side, bytes.data() + 8);
        } else if (format == "jpeg") {
            const qsizetype frame = std::max(bytes.indexOf("\xFF\xC0"), bytes.indexOf("\xFF\xC2"));
            qToBigEndian<quint16>(side, bytes.data() + frame + 5);
            qToBigEndian<quint16>(side, bytes.data() + frame + 7);
        } else if (format == "emf") {
            qToLittleEndian<qint32>(side * 26, bytes.data() + 32); // frame, in 0.01 mm
            qToLittleEndian<qint32>(side * 26, bytes.data() + 36);
            if (!side) {
                qToLittleEndian<qint32>(-1, bytes.data() + 16); // bounds that hold nothing
                qToLittleEndian<qint32>(-1, bytes.data() + 20);
            }
        } else { // the placeable box, at 96 units to the inch
            qToLittleEndian<qint16>(side ? 32000 : 0, bytes.data() + 10);
            qToLittleEndian<qint16>(side ? 32000 : 0, bytes.data() + 12);
            qToLittleEndian<quint16>(96, bytes.data() + 14);
        }
    }
    return bytes;
}

struct Variant
{
    const char *name;
    QString source; // what Source() draws
    QStringList convert; // ImageMagick's arguments, the last naming the output; empty: made here
    QString header; // BMP: header size/bits/compression[/top-down]
    int tolerance;
};

const QStringList Palette {"-type", "Palette", "-compress", "None"};
const QList<Variant> Variants = {
    {"bmp-1-bit", "2", {"-type", "Bilevel", "-compress", "None", "BMP3:x.bmp"}, "40/1/0", 0},
    {"bmp-4-bit", "16", Palette + QStringList {"BMP3:x.bmp"}, "40/4/0", 0},
    {"bmp-8-bit", "256", Palette + QStringList {"BMP3:x.bmp"}, "40/8/0", 0},
    {"bmp-rle8", "256", {"-type", "Palette", "-compress", "RLE", "BMP3:x.bmp"}, "40/8/1", 0},
    {"bmp-rle4", "16", {}, "40/4/2", 0},
    // Five bits of a channel are off by up to two steps of eight.
    {"bmp-16-bit-565", "unique",
        {"-type", "TrueColor", "-define", "bmp:subtype=RGB565", "BMP:x.bmp"}, "124/16/3", 16},
    {"bmp-16-bit-555", "unique",
        {"-type", "TrueColor", "-define", "bmp:subtype=RGB555", "BMP:x.bmp"}, "124/16/3", 16},
    {"bmp-24-bit", "unique", {"-type", "TrueColor", "-compress", "None", "BMP3:x.bmp"}, "40/24/0",
        0},
    {"bmp-32-bit", "unique", {"-alpha", "set", "-define", "bmp3:alpha=true", "BMP3:x.bmp"},
        "40/32/0", 0},
    {"bmp-32-bit-fields", "unique", {"-type", "TrueColorAlpha", "BMP:x.bmp"}, "124/32/3", 0},
    {"bmp-top-down-24", "unique", {"-type", "TrueColor", "-compress", "None", "BMP3:x.bmp"},
        "40/24/0/top-down", 0},
    {"bmp-top-down-4", "16", Palette + QStringList {"BMP3:x.bmp"}, "40/4/0/top-down", 0},
    {"os2-core-1", "2", {"-type", "Bilevel", "BMP2:x.bmp"}, "12/1/0", 0},
    {"os2-core-4", "16", {"-type", "Palette", "BMP2:x.bmp"}, "12/4/0", 0},
    {"os2-core-8", "256", {"-type", "Palette", "BMP2:x.bmp"}, "12/8/0", 0},
    {"os2-core-24", "unique", {"-type", "TrueColor", "BMP2:x.bmp"}, "12/24/0", 0},
    {"dib-8-bit", "256", Palette + QStringList {"BMP3:x.dib"}, "40/8/0", 0},
    {"gif", "256", {"x.gif"}, "", 0},
    {"gif-interlaced", "16", {"-interlace", "GIF", "x.gif"}, "", 0},
    {"gif-named-bmp", "16", {"GIF:x.bmp"}, "", 0},
    // Lossy: judged on the flat squares, away from their edges.
    {"jpeg-baseline", "squares", {"-quality", "90", "x.jpg"}, "", 6},
    {"jpeg-progressive", "squares", {"-quality", "90", "-interlace", "Plane", "x.jpeg"}, "", 6},
    {"jpeg-named-dib", "squares", {"-quality", "90", "JPEG:x.dib"}, "", 6},
    {"png-named-bmp", "256", {"PNG:x.bmp"}, "", -1}, // no skin format: refused
};

} // namespace

class tst_Pictures : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void rasterVariantsReadAsDrawn_data();
    void rasterVariantsReadAsDrawn();
    void metafilesAreDrawnAtTheirOwnSize_data();
    void metafilesAreDrawnAtTheirOwnSize();
    void metafileDrawingMatchesItsSource_data();
    void metafileDrawingMatchesItsSource();
    void damagedFilesAreRefused_data();
    void damagedFilesAreRefused();

private:
    QTemporaryDir dir_;
    QHash<QString, QString> made_; // variant name -> file
};

// Every variant is drawn and written once: one ImageMagick run for each
// drawing writes all the variants made from it, the runs side by side.
void tst_Pictures::initTestCase()
{
    QVERIFY2(!QStandardPaths::findExecutable("convert").isEmpty(),
        "ImageMagick's convert is needed (scripts/setup.sh)");
    QVERIFY(dir_.isValid());
    QHash<QString, QStringList> runs; // drawing -> convert's arguments
    for (const Variant &v : Variants) {
        const QString target = v.convert.isEmpty() ? QStringLiteral("x.bmp") : v.convert.last();
        const QString out
            = dir_.filePath(QString::fromLatin1(v.name) + "." + target.section('.', -1));
        made_.insert(v.name, out);
        if (v.convert.isEmpty()) {
            WriteFile(out, RunLength4());
            continue;
        }
        QStringList &args = runs[v.source];
        if (args.isEmpty()) {
            const QString png = dir_.filePath(v.source + ".png");
            QVERIFY(Source(v.source).save(png));
            args << "-respect-parentheses" << png;
        }
        args << "("
             << "+clone" << v.convert.mid(0, v.convert.size() - 1) << "-write"
             << (target.contains(':') ? target.section(':', 0, 0) + ':' : QString()) + out
             << "+delete"
             << ")";
    }
    std::vector<std::unique_ptr<QProcess>> running;
    for (QStringList &args : runs) {
        running.push_back(std::make_unique<QProcess>());
        running.back()->start("convert", args << "null:");
    }
    for (const auto &process : running)
        QVERIFY(process->waitForFinished(30000) && process->exitCode() == 0);
    for (const Variant &v : Variants)
        if (QString(v.header).endsWith("top-down"))
            WriteFile(made_[v.name], TopDown(ReadFile(made_[v.name])));
}

void tst_Pictures::rasterVariantsReadAsDrawn_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("variant"); // BMP: header size/bits/compression
    QTest::addColumn<int>("tolerance");
    for (const Variant &v : Variants)
        QTest::newRow(v.name) << v.source << v.header << v.tolerance;
}

void tst_Pictures::rasterVariantsReadAsDrawn()
{
    QFETCH(QString, source);
    QFETCH(QString, variant);
    QFETCH(int, tolerance);
    const QString path = made_.value(QTest::currentDataTag());
    QVERIFY(QFileInfo(path).isFile());
    if (!variant.isEmpty())
        QCOMPARE(BmpVariant(ReadFile(path)), variant);

    QString reason;
    const QImage loaded = LoadPicture(path, &reason);
    if (tolerance < 0) {
        QVERIFY(loaded.isNull());
        return;
    }
    QVERIFY2(!loaded.isNull(), qPrintable(reason));
    QCOMPARE(loaded.size(), QSize(SkinWidth, SkinHeight));
    const QImage drawn = Source(source);
    const QImage read = loaded.convertToFormat(QImage::Format_RGB32);
    // Lossy pictures are judged away from the squares' edges.
    const auto inside = [&](int x, int y) {
        return source != "squares" || (x % 40 >= 8 && x % 40 < 32 && y % 40 >= 8 && y % 40 < 32);
    };
    QVERIFY(LargestDifference(read, drawn, inside) <= tolerance);

    // Cut as a skin is: the big block comes from its own place.
    PictureClip clip;
    clip.SetPicture(loaded);
    clip.SetClip(SkinAreas[6].rect);
    const QImage big = clip.Clip().toImage().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(big.size(), QSize(120, 120));
    if (tolerance == 0)
        QCOMPARE(big, drawn.copy(20, 20, 120, 120));
}

void tst_Pictures::metafilesAreDrawnAtTheirOwnSize_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QSize>("size"); // as drawn
    QTest::addColumn<QString>("header"); // how the header is changed
    QTest::addColumn<QSize>("expected");
    for (const char *format : {"emf", "wmf"}) {
        const QString f = QString::fromLatin1(format);
        QTest::newRow(qPrintable(f + "-skin")) << f << QSize(370, 380) << "" << QSize(370, 380);
        QTest::newRow(qPrintable(f + "-larger")) << f << QSize(420, 400) << "" << QSize(420, 400);
    }
    // The frame is 97.9 x 100.5 mm; at 300 pixels to the inch that is more pixels.
    QTest::newRow("emf-fine-device") << "emf" << QSize(370, 380) << "300dpi" << QSize(1156, 1188);
    // Twips (1440 to the inch) for the same box: 5920 x 6080 of them.
    QTest::newRow("wmf-twips") << "wmf" << QSize(370, 380) << "twips" << QSize(395, 405);
    // Without the placeable header only the library can tell a size; the
    // standard header alone must be enough to know the file for a WMF.
    QTest::newRow("wmf-standard-header") << "wmf" << QSize(370, 380) << "standard" << QSize();
}

void tst_Pictures::metafilesAreDrawnAtTheirOwnSize()
{
    QFETCH(QString, format);
    QFETCH(QSize, size);
    QFETCH(QString, header);
    QFETCH(QSize, expected);
    QByteArray bytes = RectanglesAs(format, size);
    QVERIFY(!bytes.isEmpty());
    if (header == "300dpi")
        for (const auto &[at, value] :
            {std::pair {72, 2480}, {76, 3508}, {80, 210}, {84, 297}, {100, 210000}, {104, 297000}})
            qToLittleEndian<qint32>(value, bytes.data() + at);
    if (header == "standard")
        bytes.remove(0, 22);
    if (header == "twips") {
        qToLittleEndian<quint16>(1440, bytes.data() + 14);
        quint16 sum = 0;
        for (int i = 0; i < 20; i += 2)
            sum ^= qFromLittleEndian<quint16>(bytes.constData() + i);
        qToLittleEndian<quint16>(sum, bytes.data() + 20);
    }
    // The name says nothing: the content does.
    const QString path = dir_.filePath(QTest::currentDataTag() + QStringLiteral(".bmp"));
    WriteFile(path, bytes);
    QString reason;
    const QImage loaded = LoadPicture(path, &reason);
    QVERIFY2(!loaded.isNull(), qPrintable(reason));
    if (expected.isValid())
        QCOMPARE(loaded.size(), expected);
    if (!header.isEmpty())
        return;
    // Edges fall on whole pixels: exact inside, and within a blended pixel at them.
    const QImage drawn = RectanglesDrawn(size);
    const QImage read = loaded.convertToFormat(QImage::Format_RGB32);
    const auto awayFromEdges = [&](int x, int y) {
        for (int dx = -1; dx <= 1; ++dx)
            for (int dy = -1; dy <= 1; ++dy)
                if (QRect(QPoint(), size).contains(x + dx, y + dy)
                    && drawn.pixel(x + dx, y + dy) != drawn.pixel(x, y))
                    return false;
        return true;
    };
    QCOMPARE(LargestDifference(read, drawn, awayFromEdges), 0);
    QVERIFY(LargestDifference(read, drawn) <= 160);
}

void tst_Pictures::metafileDrawingMatchesItsSource_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("emf") << "emf";
    QTest::newRow("wmf") << "wmf";
}

// The drawing a skin is made from, written by our tool and read back by
// the libraries, looks like the drawing itself.
void tst_Pictures::metafileDrawingMatchesItsSource()
{
    QFETCH(QString, format);
    QString error;
    const QByteArray svg = ReadFile(QFINDTESTDATA("curves.svg"));
    const std::optional<MetafileDrawing> drawing = ReadSvgSource(svg, "curves", &error);
    QVERIFY2(drawing, qPrintable(error));
    const QString path = dir_.filePath("curves." + format);
    WriteFile(path, format == "emf" ? drawing->Emf() : drawing->Wmf());
    const QImage loaded = LoadPicture(path, &error).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(!loaded.isNull(), qPrintable(error));

    QImage expected(SkinWidth, SkinHeight, QImage::Format_RGB32);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    QSvgRenderer(svg).render(&painter);
    painter.end();
    // Smoothing differs a little along edges; a shape out of place or
    // missing differs a lot, over many pixels.
    int off = 0;
    for (int y = 0; y < SkinHeight; ++y)
        for (int x = 0; x < SkinWidth; ++x) {
            const QRgb a = loaded.pixel(x, y), b = expected.pixel(x, y);
            off += std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                       std::abs(qBlue(a) - qBlue(b))})
                > 64;
        }
    QVERIFY2(off < SkinWidth * SkinHeight / 200, qPrintable(QString::number(off)));
}

void tst_Pictures::damagedFilesAreRefused_data()
{
    QTest::addColumn<QString>("variant"); // a file made for the variants, or a metafile
    QTest::addColumn<QString>("damage");
    for (const QString v :
        {"bmp-24-bit", "bmp-rle8", "os2-core-8", "gif", "jpeg-baseline", "jpeg-progressive"}) {
        QTest::newRow(qPrintable(v + "-cut-to-1000-bytes")) << v << "cut 1000";
        QTest::newRow(qPrintable(v + "-last-bytes-missing")) << v << "cut -3";
        QTest::newRow(qPrintable(v + "-garbage-after-magic")) << v << "garbage";
        QTest::newRow(qPrintable(v + "-huge")) << v << "huge";
    }
    for (const QString v : {"emf", "wmf"}) {
        QTest::newRow(qPrintable(v + "-cut-short")) << v << "cut -8";
        QTest::newRow(qPrintable(v + "-garbage-after-magic")) << v << "garbage";
        QTest::newRow(qPrintable(v + "-huge")) << v << "huge";
        QTest::newRow(qPrintable(v + "-no-size")) << v << "empty";
    }
    QTest::newRow("empty-file") << ""
                                << "";
    QTest::newRow("text-named-jpg") << ""
                                    << "text";
}

void tst_Pictures::damagedFilesAreRefused()
{
    QFETCH(QString, variant);
    QFETCH(QString, damage);
    const QString name = QTest::currentDataTag() + QString(damage == "text" ? ".jpg" : ".bmp");
    ProgramFolder folder;
    folder.Write("skins/" + name, Damaged(variant, damage, made_.value(variant)));
    QString reason;
    const QImage loaded = LoadPicture(folder.File("skins/" + name), &reason);
    QVERIFY2(loaded.isNull(),
        qPrintable(QStringLiteral("%1 x %2").arg(loaded.width()).arg(loaded.height())));
    QVERIFY(!reason.isEmpty());

    // A player who chose it meets the skin error, and the game ends.
    folder.Write("qvl.ini", name.toLatin1() + "\r\n");
    ScriptedPlatform platform;
    platform.Reply(Answer::Ok);
    frmMain form(platform, folder.path());
    QVERIFY(!StartUp(form, platform, folder));
    QCOMPARE(platform.Shown(),
        QStringList {SkinError.arg(QDir::toNativeSeparators(folder.File("skins/" + name)))});
    QCOMPARE(platform.Calls().first().icon, Icon::Critical);
    QVERIFY(form.Ended());
    QCOMPARE(folder.Read("qvl.ini"), name.toLatin1() + "\r\n");
}

QTEST_MAIN(tst_Pictures)
#include "tst_Pictures.moc"
