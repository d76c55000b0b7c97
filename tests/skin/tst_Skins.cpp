// Every skin the game ships, as a player who chose it meets it: the game
// starts with it and each image shows its own rectangle of it; on a screen
// scaled twice (run with QT_SCALE_FACTOR=2), one device pixel to each pixel
// of its double-size rendering.
#include "app/ImageControl.h"
#include "app/frmMain.h"
#include "skin/PictureLoader.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QTest>

static const QDir Shipped(QStringLiteral(QUORVEL_SKINS_DIR));

class tst_Skins : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void shippedSkinStartsTheGame_data();
    void shippedSkinStartsTheGame();
    void scaledScreenShowsEveryDevicePixel_data();
    void scaledScreenShowsEveryDevicePixel();
};

// A gallery gone missing must not pass as a table of no rows.
void tst_Skins::initTestCase()
{
    const QStringList skins = Shipped.entryList(QDir::Files);
    QVERIFY2(skins.contains("default.bmp") && skins.size() >= 4
            && !Shipped.entryList({"*.emf", "*.wmf"}, QDir::Files).isEmpty(),
        qPrintable(Shipped.path()));
}

void tst_Skins::shippedSkinStartsTheGame_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : Shipped.entryList(QDir::Files))
        QTest::newRow(qPrintable(name)) << name;
}

void tst_Skins::shippedSkinStartsTheGame()
{
    QFETCH(QString, name);
    ProgramFolder folder;
    // Under a name of its own, beside the folder's usual default skin.
    QVERIFY(QFile::copy(Shipped.filePath(name), folder.File("skins/shipped-" + name)));
    QVERIFY(folder.Write("qvl.ini", "shipped-" + name.toLatin1() + "\r\n"));
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    // Kept, not repaired to the default; each image's rectangle is the
    // window's concern (tst_Window), reading each format the loader's.
    QVERIFY(platform.Shown().isEmpty());
    QCOMPARE(folder.Read("qvl.ini"), "shipped-" + name.toLatin1() + "\r\n");
}

void tst_Skins::scaledScreenShowsEveryDevicePixel_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : Shipped.entryList(QDir::Files))
        QTest::newRow(qPrintable(name)) << name;
    QTest::newRow("a skin of the player's") << "player.bmp";
}

void tst_Skins::scaledScreenShowsEveryDevicePixel()
{
    QFETCH(QString, name);
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    if (form.devicePixelRatioF() != 2)
        QSKIP("needs a screen scaled twice (QT_SCALE_FACTOR=2)");
    const bool shipped = name != "player.bmp";
    const QString fine = "@2x/" + name;
    if (shipped) {
        QFile::remove(folder.File("skins/" + name));
        QVERIFY(QFile::copy(Shipped.filePath(name), folder.File("skins/" + name)));
        QVERIFY(QDir(folder.File("skins")).mkdir("@2x"));
        QFile::copy(Shipped.filePath(fine), folder.File("skins/" + fine));
    } else {
        QVERIFY(KnownSkin().save(folder.File("skins/" + name), "BMP"));
    }
    QVERIFY(folder.Write("qvl.ini", name.toLatin1() + "\r\n"));
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 0);
    QVERIFY(platform.Shown().isEmpty());

    const QImage picture
        = LoadPicture(folder.File("skins/" + name)).convertToFormat(QImage::Format_RGB32);
    const QImage doubled = Shipped.exists(fine)
        ? LoadPicture(Shipped.filePath(fine)).convertToFormat(QImage::Format_RGB32)
        : picture.scaled(picture.size() * 2);
    const bool metafile = name.endsWith(".emf") || name.endsWith(".wmf");
    QVERIFY(metafile || doubled.size() == QSize(740, 760));
    QImage screen = form.centralWidget()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(screen.size(), QSize(816, 810));
    screen.setDevicePixelRatio(1); // compared in device pixels
    const QLabel *frames[]
        = {form.imgUpFrame, form.imgLeftFrame, form.imgRightFrame, form.imgExit, form.imgTitle};
    for (const SkinArea &area : SkinAreas) {
        if (area.target == SkinTarget::Cong)
            continue; // shown only when a game is won
        const QLabel *image
            = area.piece >= 0 ? form.imgPieces[area.piece] : frames[int(area.target)];
        const auto [x, y, width, height] = area.rect;
        // Where the player sees it and takes hold of it stays in logical pixels.
        QCOMPARE(image->size(), QSize(width, height));
        const QImage shown = screen.copy(QRect(image->pos() * 2, image->size() * 2));
        const QImage expected = doubled.copy(x * 2, y * 2, width * 2, height * 2);
        if (!shipped) // nothing finer: the picture itself, for the screen to scale
            QCOMPARE(image->pixmap().toImage().convertToFormat(QImage::Format_RGB32),
                picture.copy(x, y, width, height));
        else if (metafile)
            QVERIFY2(shown != expected, "a metafile is drawn anew, not enlarged");
        else
            QCOMPARE(shown, expected);
    }
}

QTEST_MAIN(tst_Skins)
#include "tst_Skins.moc"
