// Writes the fuzzers' starting inputs with the game's own writers: a level
// file, saved games, settings lines, the player's record and small pictures in each format a skin
// may have (the build turns some of them into GIF and run-length BMP). The
// inputs that once broke a reader are kept here as well, so every run
// replays them.
//
//     quorvel-fuzz-seeds OUTPUT_FOLDER
#include "Metafile.h"
#include "files/CodePage.h"
#include "files/LevelFile.h"
#include "files/PlayerFile.h"
#include "files/SavedGame.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>

#include <cstdio>
#include <cstdlib>

namespace {

QString out;

void Write(const QString &name, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(out + QLatin1Char('/') + name).path());
    QFile file(out + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "quorvel-fuzz-seeds: cannot write %s\n", qPrintable(file.fileName()));
        std::exit(EXIT_FAILURE);
    }
}

void Save(const QString &name, const QImage &picture, const char *format, int quality = -1,
    bool progressive = false)
{
    QDir().mkpath(out + QStringLiteral("/picture"));
    QImageWriter writer(out + QStringLiteral("/picture/") + name, format);
    writer.setQuality(quality);
    writer.setProgressiveScanWrite(progressive);
    if (!writer.write(picture)) {
        std::fprintf(stderr, "quorvel-fuzz-seeds: %s\n", qPrintable(writer.errorString()));
        std::exit(EXIT_FAILURE);
    }
}

// The two layouts the tests play most: the usual start, and one step from
// the exit.
constexpr Layout Start = {1, 21, 0, 3, 20, 23, 31, 32, 40, 43};
constexpr Layout NearlySolved = {21, 1, 0, 3, 20, 23, 11, 12, 40, 43};

QByteArray LevelFile()
{
    LevelTable levels = ClearedLevels();
    for (int i = 0; i < LevelCount; ++i) {
        levels[i].levelName = QStringLiteral("Level %1").arg(i + 1);
        levels[i].codes = i % 2 ? NearlySolved : Start;
    }
    // Names with every kind of byte, and two layouts the board refuses.
    levels[2].levelName = FromAnsi(QByteArray("\x80\x81\xFF\0pad", 7));
    levels[3].codes[0] = 33;
    levels[4].codes[9] = levels[4].codes[8];
    return SerializeLevels(levels);
}

QByteArray SavedGame(const Layout &codes, int16_t level, int32_t steps, const QString &name)
{
    GameState game;
    game.levelIndex = level;
    game.steps = steps;
    game.SetUp(codes);
    return SerializeSavedGame(BuildSavedGame(game, name));
}

QImage Gradient(int width, int height, QImage::Format format)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.setPixel(
                x, y, qRgba(x * 255 / width, y * 255 / height, (x ^ y) & 0xFF, 128 + (x & 127)));
    return picture.convertToFormat(format);
}

QByteArray Metafile(bool enhanced)
{
    MetafileDrawing drawing(QSize(24, 20));
    MetaShape box;
    box.rings = {QPolygonF({{1, 1}, {23, 1}, {23, 19}, {1, 19}}),
        QPolygonF({{6, 6}, {6, 14}, {18, 14}, {18, 6}})};
    box.fill = QColor(32, 80, 160);
    box.stroke = QColor(48, 16, 8);
    MetaShape line;
    line.kind = MetaShape::Kind::Polyline;
    line.rings = {QPolygonF({{2, 18}, {12.5, 3.25}, {22, 18}})};
    line.stroke = QColor(16, 112, 64);
    line.strokeWidth = 2;
    drawing.Add(box);
    drawing.Add(line);
    return enhanced ? drawing.Emf() : drawing.Wmf();
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: quorvel-fuzz-seeds OUTPUT_FOLDER\n");
        return EXIT_FAILURE;
    }
    out = QString::fromLocal8Bit(argv[1]);

    const QByteArray levels = LevelFile();
    Write(QStringLiteral("levels/levels"), levels);
    Write(QStringLiteral("levels/short"), levels.left(LevelFileSize - 1));
    Write(QStringLiteral("levels/long"), levels + levels.left(30));

    Write(QStringLiteral("savedgame/start"), SavedGame(Start, 0, 0, QStringLiteral("Level 1   ")));
    const QByteArray nearly
        = SavedGame(NearlySolved, 69, 25, FromAnsi(QByteArray("\x8C\x9D\xFF\0x     ", 10)));
    Write(QStringLiteral("savedgame/nearly-solved"), nearly);
    Write(QStringLiteral("savedgame/short"), nearly.left(SavedGameSize - 1));
    Write(QStringLiteral("savedgame/long"), nearly + "tail of an older, longer file");

    const char *const lines[]
        = {"default.bmp\r\n", "  \"sea, blue.bmp\"\r\n", "other.bmp,ignored\r\nsecond\r\n",
            "../QVL.ZHN\r\n", "\"unclosed\r\nnext\"", "\x80\x9f\xff.gif\n"};
    for (size_t i = 0; i < std::size(lines); ++i)
        Write(QStringLiteral("settings/line-%1").arg(i), lines[i]);
    Write(QStringLiteral("settings/binary"), QByteArray("\0\xFF\x01,\r\n", 6));

    PlayerProgress progress;
    for (int i = 0; i < LevelCount; i += 3)
        progress.best[size_t(i)] = i * 7;
    progress.fewestStepsLeft = true;
    Write(QStringLiteral("player/record"), SerializePlayerFile(progress));
    Write(QStringLiteral("player/empty"), SerializePlayerFile({}));
    Write(QStringLiteral("player/by-hand"),
        "; kept by hand\n[ best ]\n 70 = 2147483647\n1=9\n1=8\n[Best\n2=1\n[view]\n"
        "feweststepsleft=TRUE\n");

    // Odd widths, so rows carry padding; every depth a bitmap may have.
    Save(QStringLiteral("mono.bmp"), Gradient(19, 13, QImage::Format_Mono), "bmp");
    Save(QStringLiteral("indexed.bmp"), Gradient(19, 13, QImage::Format_Indexed8), "bmp");
    Save(QStringLiteral("rgb.dib"), Gradient(19, 13, QImage::Format_RGB888), "bmp");
    Save(QStringLiteral("argb.bmp"), Gradient(19, 13, QImage::Format_ARGB32), "bmp");
    Save(QStringLiteral("baseline.jpg"), Gradient(17, 15, QImage::Format_RGB32), "jpeg", 60);
    Save(QStringLiteral("progressive.jpg"), Gradient(17, 15, QImage::Format_Grayscale8), "jpeg", 40,
        true);
    // One whole skin, so a picture that loads is cut as a skin is.
    Save(QStringLiteral("skin.jpg"), Gradient(370, 380, QImage::Format_RGB32), "jpeg", 5);
    Write(QStringLiteral("picture/shapes.wmf"), Metafile(false));
    Write(QStringLiteral("picture/shapes.emf"), Metafile(true));
    // Inputs that once went wrong, replayed by every run.
    // A WMF header asking for a record of 2 GB, reserved by the library.
    Write("picture/regress-wmf-huge-record",
        QByteArray::fromBase64(
            "183GmgAAAAAAAIABQAEABgAAAADRUQEACQAAA3VuaTIyMjh0AEJvbGQAFgAAAAAABAAAACAAAAA"
            "QcEAABAAAAC0BAgAEMQAAAPABAAAHAAAA/AIBAAAAAAAEAAQAAwAAAA=="));
    // The source of the GIF and run-length seeds, kept out of the corpus.
    QImage flat(40, 30, QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter(&flat).fillRect(5, 5, 20, 12, QColor(200, 40, 20));
    if (!flat.save(out + QStringLiteral("/flat.bmp"), "BMP"))
        return EXIT_FAILURE;
    return EXIT_SUCCESS;
}
