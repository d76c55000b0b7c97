// Start-up on prepared program folders, then the board display and skin
// cutting on the window it leaves, with a skin whose every pixel is known. What start-up does with
// damaged files is the fault suite's.
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QFileInfo>
#include <QMenuBar>
#include <QTest>

namespace {

bool ShowsSkinArea(const QLabel &image, const SkinRect &r)
{
    return image.pixmap().toImage().convertToFormat(QImage::Format_RGB32)
        == KnownSkin().copy(r.x, r.y, r.width, r.height);
}

} // namespace

class tst_Window : public QObject
{
    Q_OBJECT
private slots:
    void startUpShowsAnEmptyWindowAndKeepsAUsableSkin_data();
    void startUpShowsAnEmptyWindowAndKeepsAUsableSkin();
    void everyImageGetsItsPlaceAndItsRectangleOfTheSkin();
};

void tst_Window::startUpShowsAnEmptyWindowAndKeepsAUsableSkin_data()
{
    QTest::addColumn<QByteArray>("settings"); // none on a first run
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("first-run") << QByteArray() << QByteArray("default.bmp\r\n");
    QTest::newRow("skin-present") << QByteArray("other.bmp,ignored\r\nline two\r\n")
                                  << QByteArray("other.bmp\r\n");
    QTest::newRow("skin-missing") << QByteArray("gone.bmp\r\n") << QByteArray("default.bmp\r\n");
}

void tst_Window::startUpShowsAnEmptyWindowAndKeepsAUsableSkin()
{
    QFETCH(QByteArray, settings);
    QFETCH(QByteArray, after);
    ProgramFolder folder;
    QVERIFY(folder.Write("saved", "a plain file of that name is left alone"));
    QVERIFY(QFile::copy(folder.File("skins/default.bmp"), folder.File("skins/other.bmp")));
    if (!settings.isEmpty())
        QVERIFY(folder.Write("qvl.ini", settings));
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(QFileInfo(folder.File("saved")).isFile());
    QCOMPARE(folder.Read("qvl.ini"), after);
    QVERIFY(platform.Shown().isEmpty());
    QVERIFY(form.isVisible() && !form.mnuSaveGame->isEnabled());
    for (QWidget *image : form.centralWidget()->findChildren<ImageControl *>())
        QVERIFY(!image->isVisible());
    QCOMPARE(form.lblStatus->text(), QString());
    QCOMPARE(form.centralWidget()->size(), QSize(408, 405));
    // Each item with its keys; "off" when disabled, "[ ]" when it can be checked.
    QStringList captions;
    for (QAction *menu : form.menuBar()->actions())
        for (QAction *item : QList<QAction *> {menu} + menu->menu()->actions()) {
            QStringList keys;
            for (const QKeySequence &key : item->shortcuts())
                keys << key.toString();
            captions << (item->isSeparator()
                    ? QStringLiteral("-")
                    : QStringList {item->text(), keys.join(", "), item->isEnabled() ? "" : "off",
                        item->isCheckable() ? "[ ]" : ""}
                          .join(' ')
                          .trimmed());
        }
    QCOMPARE(captions,
        (QStringList {"&File", "&New Game", "&Load Game", "&Save Game  off", "-", "Set S&kin", "-",
            "E&xit", "&Game", "&Undo Ctrl+Z off", "&Redo Ctrl+Y, Ctrl+Shift+Z off",
            "Re&start Level Ctrl+R off", "-", "&Hint Ctrl+H off",
            "Show &Fewest Steps Left Ctrl+F  [ ]", "&Help", "H&ow to Play", "-", "&About"}));
}

void tst_Window::everyImageGetsItsPlaceAndItsRectangleOfTheSkin()
{
    ProgramFolder folder({"2345/2345/6117/.008/.009"});
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QCOMPARE(form.frameGeometry().x(), (1280 - form.frameGeometry().width()) / 2);
    ChooseLevel(form, 0);
    const QList<std::tuple<QLabel *, QPoint, SkinRect>> expected = {
        {form.imgUpFrame, {10, 10}, {0, 0, 280, 20}},
        {form.imgLeftFrame, {10, 30}, {0, 20, 20, 300}},
        {form.imgRightFrame, {270, 30}, {260, 20, 20, 300}},
        {form.imgExit, {10, 330}, {0, 320, 280, 20}}, {form.imgTitle, {310, 10}, {280, 0, 90, 340}},
        {form.imgPieces[0], {90, 210}, {20, 20, 120, 120}}, // code 31
        {form.imgPieces[1], {90, 150}, {20, 140, 120, 60}},
        {form.imgPieces[2], {30, 30}, {20, 200, 60, 120}},
        {form.imgPieces[4], {150, 30}, {80, 200, 60, 120}},
        {form.imgPieces[3], {90, 30}, {140, 200, 60, 120}},
        {form.imgPieces[5], {210, 30}, {200, 200, 60, 120}},
        {form.imgPieces[6], {30, 150}, {200, 140, 60, 60}},
        {form.imgPieces[9], {210, 270}, {200, 140, 60, 60}}, // code 43
    };
    for (const auto &[image, at, rect] : expected) {
        QCOMPARE(image->pos(), at);
        QVERIFY2(ShowsSkinArea(*image, rect),
            qPrintable(QString::number(rect.x) + "," + QString::number(rect.y)));
    }
    QVERIFY(form.imgPieces[0]->isVisible() && !form.imgCong->isVisible());
    form.ShowCongratulation();
    QCOMPARE(form.imgCong->pos(), QPoint(19, 182)); // (405 - 40) halved, truncated
    QVERIFY(ShowsSkinArea(*form.imgCong, {0, 340, 370, 40}));
    // A larger picture is used only in its top-left part, and kept as the setting.
    QVERIFY(KnownSkin(500, 400).save(folder.File("skins/large.bmp"), "BMP"));
    form.ApplySkin("large.bmp");
    QVERIFY(platform.Shown().isEmpty());
    QVERIFY(ShowsSkinArea(*form.imgPieces[0], {20, 20, 120, 120}));
    QCOMPARE(folder.Read("qvl.ini"), QByteArray("large.bmp\r\n"));
}

QTEST_MAIN(tst_Window)
#include "tst_Window.moc"
