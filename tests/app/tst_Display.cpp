// The board display, the status line and skin cutting, on a real main window
// with a skin whose every pixel is known.
#include "app/ImageControl.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QLabel>
#include <QTest>

namespace {

// The image shows exactly the rectangle of the known skin it was cut from.
bool ShowsSkinArea(const QLabel &image, const SkinRect &rect)
{
    const QImage shown = image.pixmap().toImage().convertToFormat(QImage::Format_RGB32);
    return shown == KnownSkin().copy(rect.x, rect.y, rect.width, rect.height);
}

} // namespace

class tst_Display : public QObject
{
    Q_OBJECT
private slots:
    void everyImageGetsItsRectangleOfTheSkin();
    void blocksStandOnTheirCellsWhateverTheUnits_data();
    void blocksStandOnTheirCellsWhateverTheUnits();
    void congratulationIsCentredInTheClientArea_data();
    void congratulationIsCentredInTheClientArea();
    void statusLineShowsLevelNameAndSteps();
    void hidingTwiceChangesNothingElse();
};

void tst_Display::everyImageGetsItsRectangleOfTheSkin()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(ShowsSkinArea(*form.imgUpFrame, {0, 0, 280, 20}));
    QVERIFY(ShowsSkinArea(*form.imgLeftFrame, {0, 20, 20, 300}));
    QVERIFY(ShowsSkinArea(*form.imgRightFrame, {260, 20, 20, 300}));
    QVERIFY(ShowsSkinArea(*form.imgExit, {0, 320, 280, 20}));
    QVERIFY(ShowsSkinArea(*form.imgTitle, {280, 0, 90, 340}));
    QVERIFY(ShowsSkinArea(*form.imgCong, {0, 340, 370, 40}));
    QVERIFY(ShowsSkinArea(*form.imgPieces[0], {20, 20, 120, 120}));
    QVERIFY(ShowsSkinArea(*form.imgPieces[1], {20, 140, 120, 60}));
    // The vertical bars, from left to right in the picture: 2, 4, 3, 5.
    QVERIFY(ShowsSkinArea(*form.imgPieces[2], {20, 200, 60, 120}));
    QVERIFY(ShowsSkinArea(*form.imgPieces[4], {80, 200, 60, 120}));
    QVERIFY(ShowsSkinArea(*form.imgPieces[3], {140, 200, 60, 120}));
    QVERIFY(ShowsSkinArea(*form.imgPieces[5], {200, 200, 60, 120}));
    for (int i = 6; i <= 9; ++i)
        QVERIFY(ShowsSkinArea(*form.imgPieces[i], {200, 140, 60, 60}));
    // A larger picture is used only in its top-left part.
    KnownSkin(500, 400).save(folder.File("skins/large.bmp"), "BMP");
    form.ApplySkin("large.bmp");
    QVERIFY(platform.Shown().isEmpty());
    QCOMPARE(form.imgPieces[0]->pixmap().size(), QSize(120, 120));
    QCOMPARE(folder.Read("qvl.ini"), QByteArray("large.bmp\r\n"));
}

void tst_Display::blocksStandOnTheirCellsWhateverTheUnits_data()
{
    QTest::addColumn<float>("unitsPerPixel");
    QTest::newRow("1") << 1.0f;
    QTest::newRow("12") << 12.0f;
    QTest::newRow("15") << 15.0f;
}

void tst_Display::blocksStandOnTheirCellsWhateverTheUnits()
{
    QFETCH(float, unitsPerPixel);
    ProgramFolder folder({"2345/2345/6117/.008/.009"});
    ScriptedPlatform platform;
    platform.metrics.unitsPerPixelX = platform.metrics.unitsPerPixelY = unitsPerPixel;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 0);
    // Block 0 on code 31 and block 9 on code 43, in units and in pixels.
    QCOMPARE(form.imgPieces[0]->Left(), 90 * unitsPerPixel);
    QCOMPARE(form.imgPieces[0]->Top(), 210 * unitsPerPixel);
    QCOMPARE(form.imgPieces[0]->pos(), QPoint(90, 210));
    QCOMPARE(form.imgPieces[9]->pos(), QPoint(210, 270));
    QCOMPARE(form.imgPieces[9]->Left(), 210 * unitsPerPixel);
    QCOMPARE(form.imgUpFrame->pos(), QPoint(10, 10));
    QCOMPARE(form.imgLeftFrame->pos(), QPoint(10, 30));
    QCOMPARE(form.imgRightFrame->pos(), QPoint(270, 30));
    QCOMPARE(form.imgExit->pos(), QPoint(10, 330));
    QCOMPARE(form.imgTitle->pos(), QPoint(310, 10));
    QCOMPARE(form.imgTitle->Left(), 310 * unitsPerPixel);
    for (QWidget *image : form.imgPieces)
        QVERIFY(image->isVisible());
    QVERIFY(!form.imgCong->isVisible());
}

void tst_Display::congratulationIsCentredInTheClientArea_data()
{
    QTest::addColumn<float>("unitsPerPixel");
    QTest::newRow("1") << 1.0f;
    QTest::newRow("15") << 15.0f;
}

void tst_Display::congratulationIsCentredInTheClientArea()
{
    QFETCH(float, unitsPerPixel);
    ProgramFolder folder;
    ScriptedPlatform platform;
    platform.metrics.unitsPerPixelX = platform.metrics.unitsPerPixelY = unitsPerPixel;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    form.gameChanged = true;
    form.mnuSaveGame->setEnabled(true);
    form.ShowCongratulation();
    // 408 - 370 leaves 19 on each side; 405 - 40 = 365, halved and truncated.
    QCOMPARE(form.imgCong->pos(), QPoint(19, 182));
    QCOMPARE(form.imgCong->Left(), 19 * unitsPerPixel);
    QVERIFY(form.imgCong->isVisible());
    QVERIFY(!form.gameChanged);
    QVERIFY(!form.mnuSaveGame->isEnabled());
}

void tst_Display::statusLineShowsLevelNameAndSteps()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 0);
    QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 1 - Level 01  ")); // padding kept
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
    form.levels[69].levelName = QString::fromLatin1("Zero\0\0\0\0\0\0", 10);
    form.game.levelIndex = 69;
    form.game.steps = 123456;
    form.ShowStatus();
    QCOMPARE(form.lblStatus->text(), QString::fromLatin1("Level: 70 - Zero\0\0\0\0\0\0", 22));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 123456"));
}

void tst_Display::hidingTwiceChangesNothingElse()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 3);
    const QString status = form.lblStatus->text();
    form.HideBoard();
    form.HideBoard();
    for (QWidget *image : form.imgPieces)
        QVERIFY(!image->isVisible());
    QVERIFY(!form.imgCong->isVisible() && !form.imgTitle->isVisible());
    QCOMPARE(form.lblStatus->text(), status);
    QVERIFY(form.mnuSaveGame->isEnabled());
    // Showing the board again does not bring back a banner the callers hid.
    form.ShowCongratulation();
    form.ShowBoard();
    QVERIFY(form.imgCong->isVisible());
}

QTEST_MAIN(tst_Display)
#include "tst_Display.moc"
