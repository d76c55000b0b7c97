// Every skin the game ships, as a player who chose it meets it: the game
// starts with it and each image stands in its place and shows its own
// rectangle of it; on a screen scaled twice (run with QT_SCALE_FACTOR=2), one
// device pixel to each pixel of its double-size rendering.
#include "app/ImageControl.h"
#include "app/frmMain.h"
#include "skin/PictureClip.h"
#include "skin/PictureLoader.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QTest>

namespace {

const QDir Shipped(QStringLiteral(QUORVEL_SKINS_DIR));
const char *const Level = "2345/2345/6117/.008/.009";

// Where each image stands with Level on the board, and its part of the skin:
// frame and title around the grid of 60-pixel cells from (20, 20), whose
// bars go to blocks 2, 4, 3 and 5 from the left and whose one small block
// serves all four.
QList<std::tuple<const QLabel *, QPoint, QRect>> Parts(const frmMain &form)
{
    return {{form.imgUpFrame, {10, 10}, {0, 0, 280, 20}},
        {form.imgLeftFrame, {10, 30}, {0, 20, 20, 300}},
        {form.imgRightFrame, {270, 30}, {260, 20, 20, 300}},
        {form.imgExit, {10, 330}, {0, 320, 280, 20}}, {form.imgTitle, {310, 10}, {280, 0, 90, 340}},
        {form.imgPieces[0], {90, 210}, {20, 20, 120, 120}},
        {form.imgPieces[1], {90, 150}, {20, 140, 120, 60}},
        {form.imgPieces[2], {30, 30}, {20, 200, 60, 120}},
        {form.imgPieces[4], {150, 30}, {80, 200, 60, 120}},
        {form.imgPieces[3], {90, 30}, {140, 200, 60, 120}},
        {form.imgPieces[5], {210, 30}, {200, 200, 60, 120}},
        {form.imgPieces[6], {30, 150}, {200, 140, 60, 60}},
        {form.imgPieces[7], {210, 150}, {200, 140, 60, 60}},
        {form.imgPieces[8], {210, 210}, {200, 140, 60, 60}},
        {form.imgPieces[9], {210, 270}, {200, 140, 60, 60}}};
}

QImage Shown(const QLabel &image)
{
    return image.pixmap().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class tst_Skins : public QObject
{
    Q_OBJECT
private slots:
    void everyImageGetsItsPlaceAndItsPartOfTheSkin()
    {
        ProgramFolder folder({Level});
        ScriptedPlatform platform;
        frmMain form(platform, folder.path());
        QVERIFY(StartUp(form, platform));
        ChooseLevel(form, 0);
        for (const auto &[image, at, part] : Parts(form)) {
            QCOMPARE(image->pos(), at);
            QCOMPARE(Shown(*image), KnownSkin().copy(part));
        }
        form.ShowCongratulation();
        QCOMPARE(form.imgCong->pos(), QPoint(19, 182)); // (405 - 40) halved, truncated
        QCOMPARE(Shown(*form.imgCong), KnownSkin().copy(0, 340, 370, 40));
        // A larger picture is used only in its top-left part, and kept as the setting.
        QVERIFY(KnownSkin(500, 400).save(folder.File("skins/large.bmp"), "BMP"));
        form.ApplySkin("large.bmp");
        QCOMPARE(Shown(*form.imgPieces[0]), KnownSkin().copy(20, 20, 120, 120));
        QCOMPARE(folder.Read("qvl.ini"), QByteArray("large.bmp\r\n"));
    }

    // A picture a pixel short of a skin lacks part of its title or banner.
    void aPartBeyondThePictureCannotBeCut()
    {
        PictureClip clip;
        clip.SetPicture(KnownSkin(369, 380));
        clip.SetClip(280, 0, 90, 340); // the title, along the right edge
        QVERIFY(clip.Clip().isNull());
        clip.SetPicture(KnownSkin(370, 379));
        clip.SetClip(0, 340, 370, 40); // the banner, along the bottom
        QVERIFY(clip.Clip().isNull());
    }

    void scaledScreenShowsEveryDevicePixel_data()
    {
        QTest::addColumn<QString>("name");
        // Named, so that a gallery gone missing cannot pass as a table of no rows.
        for (const char *name : {"default.bmp", "garden.gif", "night.emf", "paper.dib", "sea.jpg"})
            QTest::newRow(name) << name;
        QTest::newRow("a skin of the player's") << "player.bmp";
    }

    void scaledScreenShowsEveryDevicePixel()
    {
        QFETCH(QString, name);
        const bool shipped = name != "player.bmp";
        const bool metafile = name.endsWith(".emf") || name.endsWith(".wmf");
        // No default skin to fall back on, should this one be refused.
        ProgramFolder folder({Level}, false);
        ScriptedPlatform platform;
        frmMain form(platform, folder.path());
        if (form.devicePixelRatioF() != 2)
            QSKIP("needs a screen scaled twice (QT_SCALE_FACTOR=2)");
        const QString fine = "@2x/" + name;
        QVERIFY(QDir(folder.path()).mkpath("skins/@2x"));
        QVERIFY(shipped ? QFile::copy(Shipped.filePath(name), folder.File("skins/" + name))
                        : KnownSkin().save(folder.File("skins/" + name), "BMP"));
        // Each shipped raster skin comes with one twice its size; metafiles are drawn anew.
        QCOMPARE(QFile::copy(Shipped.filePath(fine), folder.File("skins/" + fine)),
            shipped && !metafile);
        QVERIFY(folder.Write("qvl.ini", name.toLatin1() + "\r\n"));
        QVERIFY(StartUp(form, platform));
        ChooseLevel(form, 0);

        const QImage picture
            = LoadPicture(folder.File("skins/" + name)).convertToFormat(QImage::Format_RGB32);
        const QImage doubled = Shipped.exists(fine)
            ? LoadPicture(Shipped.filePath(fine)).convertToFormat(QImage::Format_RGB32)
            : picture.scaled(picture.size() * 2);
        QImage screen
            = form.centralWidget()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(screen.size(), QSize(816, 810));
        screen.setDevicePixelRatio(1); // compared in device pixels
        for (const auto &[image, at, cut] : Parts(form)) {
            // Where the player sees it and takes hold of it stays in logical pixels.
            QCOMPARE(QRect(image->pos(), image->size()), QRect(at, cut.size()));
            const QImage shown = screen.copy(QRect(image->pos() * 2, image->size() * 2));
            const QImage expected = doubled.copy(QRect(cut.topLeft() * 2, cut.size() * 2));
            if (!shipped) // nothing finer: the picture itself, for the screen to scale
                QCOMPARE(Shown(*image), picture.copy(cut));
            else if (metafile)
                QVERIFY2(shown != expected, "a metafile is drawn anew, not enlarged");
            else
                QCOMPARE(shown, expected);
        }
    }
};

QTEST_MAIN(tst_Skins)
#include "tst_Skins.moc"
