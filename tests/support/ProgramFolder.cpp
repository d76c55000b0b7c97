#include "ProgramFolder.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QtEndian>

Layout LayoutFromPicture(const char *picture)
{
    Layout codes;
    codes.fill(-1);
    for (int i = 0; picture[i]; ++i) {
        const int piece = picture[i] - '0';
        if (piece >= 0 && piece <= 9 && codes[size_t(piece)] == -1)
            codes[size_t(piece)] = int16_t(i / 5 * 10 + i % 5); // rows of four and a "/"
    }
    return codes;
}

QImage KnownSkin(int width, int height)
{
    QImage skin(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            skin.setPixel(x, y, qRgb(x & 0xFF, y & 0xFF, ((x >> 8) << 4) | (y >> 8)));
    return skin;
}

ProgramFolder::ProgramFolder(std::initializer_list<const char *> pictures, bool withSkin)
{
    std::vector<const char *> list(pictures);
    for (int i = 0; i < LevelCount; ++i) {
        levels[i].levelName = QStringLiteral("Level %1  ").arg(i + 1, 2, 10, QLatin1Char('0'));
        levels[i].codes = LayoutFromPicture(list[size_t(i) < list.size() ? size_t(i) : 0]);
    }
    Write(QStringLiteral("QVL.ZHN"), SerializeLevels(levels));
    if (withSkin
        && !(QDir(dir_.path()).mkdir(QStringLiteral("skins"))
            && KnownSkin().save(File(QStringLiteral("skins/default.bmp")), "BMP")))
        Refuse(QStringLiteral("skins/default.bmp"));
}

QByteArray ProgramFolder::Read(const QString &relative) const
{
    QFile file(File(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool ProgramFolder::Write(const QString &relative, const QByteArray &bytes) const
{
    QFile file(File(relative));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size())
        return true;
    Refuse(relative);
    return false;
}

void ProgramFolder::Refuse(const QString &relative) const
{
    const QByteArray what = "the test could not write " + QFile::encodeName(File(relative));
    // Outside a test function no failure can be recorded: the run stops.
    if (!QTest::currentTestFunction())
        qFatal("%s", what.constData());
    QTest::qFail(what.constData(), __FILE__, __LINE__);
}

QByteArray SavedGameBytes(
    int32_t steps, int16_t levelIndex, const QByteArray &levelName, const char *picture)
{
    QByteArray bytes(36, '\0');
    qToLittleEndian(steps, bytes.data());
    qToLittleEndian(levelIndex, bytes.data() + 4);
    bytes.replace(6, 10, levelName.leftJustified(10, ' ', true));
    const Layout codes = LayoutFromPicture(picture);
    for (size_t piece = 0; piece < codes.size(); ++piece)
        qToLittleEndian(codes[piece], bytes.data() + 16 + 2 * piece);
    return bytes;
}
