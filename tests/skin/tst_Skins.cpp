// Every skin the game ships, as a player who chose it meets it: the game
// starts with it, each image shows its own rectangle of it, and its block
// pictures keep to the rules the drawings follow.
#include "app/ImageControl.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QTest>

namespace {

const QDir Shipped(QStringLiteral(QUORVEL_SKINS_DIR));
const QStringList Patterns {"*.bmp", "*.dib", "*.gif", "*.jpg", "*.jpeg", "*.wmf", "*.emf"};

const QLabel *ImageOf(const frmMain &form, const SkinArea &area)
{
    switch (area.target) {
    case SkinTarget::UpFrame:
        return form.imgUpFrame;
    case SkinTarget::LeftFrame:
        return form.imgLeftFrame;
    case SkinTarget::RightFrame:
        return form.imgRightFrame;
    case SkinTarget::Exit:
        return form.imgExit;
    case SkinTarget::Title:
        return form.imgTitle;
    case SkinTarget::Cong:
        return form.imgCong;
    default:
        return form.imgPieces[area.piece];
    }
}

double Luminance(QRgb c)
{
    return 0.299 * qRed(c) + 0.587 * qGreen(c) + 0.114 * qBlue(c);
}

// The mean luminance of the ring of pixels `inset` pixels inside `rect`.
double RingLuminance(const QImage &picture, QRect rect, int inset)
{
    rect.adjust(inset, inset, -inset, -inset);
    double sum = 0;
    int count = 0;
    for (int x = rect.left(); x <= rect.right(); ++x, count += 2)
        sum += Luminance(picture.pixel(x, rect.top())) + Luminance(picture.pixel(x, rect.bottom()));
    for (int y = rect.top(); y <= rect.bottom(); ++y, count += 2)
        sum += Luminance(picture.pixel(rect.left(), y)) + Luminance(picture.pixel(rect.right(), y));
    return sum / count;
}

QRect RectOf(const SkinRect &r)
{
    return QRect(r.x, r.y, r.width, r.height);
}

} // namespace

class tst_Skins : public QObject
{
    Q_OBJECT
private slots:
    void galleryIsThere();
    void shippedSkinStartsTheGame_data();
    void shippedSkinStartsTheGame();
};

void tst_Skins::galleryIsThere()
{
    const QStringList skins = Shipped.entryList(Patterns, QDir::Files);
    QVERIFY2(skins.contains("default.bmp"), qPrintable(Shipped.path()));
    QVERIFY(skins.size() >= 4);
    QVERIFY(!Shipped.entryList({"*.emf", "*.wmf"}, QDir::Files).isEmpty());
}

void tst_Skins::shippedSkinStartsTheGame_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : Shipped.entryList(Patterns, QDir::Files))
        QTest::newRow(qPrintable(name)) << name;
}

void tst_Skins::shippedSkinStartsTheGame()
{
    QFETCH(QString, name);
    ProgramFolder folder;
    QFile::remove(folder.File("skins/" + name));
    QVERIFY(QFile::copy(Shipped.filePath(name), folder.File("skins/" + name)));
    folder.Write("qvl.ini", name.toLatin1() + "\r\n");
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(platform.Shown().isEmpty());
    QCOMPARE(folder.Read("qvl.ini"), name.toLatin1() + "\r\n");

    QString reason;
    const QImage picture
        = LoadPicture(Shipped.filePath(name), &reason).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(!picture.isNull(), qPrintable(reason));
    QCOMPARE(picture.size(), QSize(SkinWidth, SkinHeight));
    for (const SkinArea &area : SkinAreas) {
        const QImage shown
            = ImageOf(form, area)->pixmap().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(shown, picture.copy(RectOf(area.rect)));
    }

    // Each block picture ends in a dark edge, clearly darker than what lies
    // just inside it, so neighbours stay apart.
    QList<QRect> blocks;
    for (const SkinArea &area : SkinAreas)
        if (area.piece >= 0 && !blocks.contains(RectOf(area.rect)))
            blocks << RectOf(area.rect);
    blocks << RectOf(SecondBigBlock) << RectOf(SecondSmallBlock);
    for (const QRect &block : blocks) {
        const double edge = RingLuminance(picture, block, 0);
        const double face
            = std::max(RingLuminance(picture, block, 1), RingLuminance(picture, block, 2));
        QVERIFY2(edge < 64 && edge + 20 < face,
            qPrintable(QStringLiteral("block at %1,%2: edge %3, face %4")
                           .arg(block.x())
                           .arg(block.y())
                           .arg(edge)
                           .arg(face)));
    }
    // Pictures of one size that mean different blocks look different.
    const auto cut = [&](const QRect &r) { return picture.copy(r); };
    for (int i = 2; i <= 5; ++i)
        for (int j = i + 1; j <= 5; ++j)
            QVERIFY(cut(blocks[i]) != cut(blocks[j]));
    QVERIFY(cut(RectOf(SecondBigBlock)) != cut(blocks[0]));
    QVERIFY(cut(RectOf(SecondSmallBlock)) != cut(blocks[6]));
}

QTEST_MAIN(tst_Skins)
#include "tst_Skins.moc"
