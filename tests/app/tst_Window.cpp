// Start-up on prepared program folders, then the board display, the status
// line and skin cutting on the window it leaves, with a skin whose every
// pixel is known. What start-up does with damaged files is the fault suite's.
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "skin/SkinLayout.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
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
    void firstRunPreparesTheFolderAndShowsAnEmptyWindow();
    void settingsAreReadAndRepaired_data();
    void settingsAreReadAndRepaired();
    void unwritableSettingsAreReported();
    void everyImageGetsItsRectangleOfTheSkin();
    void blocksStandOnTheirCellsWhateverTheUnits_data();
    void blocksStandOnTheirCellsWhateverTheUnits();
    void statusLineKeepsTheNamesPadding();
};

void tst_Window::firstRunPreparesTheFolderAndShowsAnEmptyWindow()
{
    ProgramFolder folder;
    folder.Write("saved", "a plain file of that name is left alone");
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(QFileInfo(folder.File("saved")).isFile());
    QCOMPARE(folder.Read("qvl.ini"), QByteArray("default.bmp\r\n"));
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

void tst_Window::settingsAreReadAndRepaired_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("extraSkin");
    QTest::addColumn<QByteArray>("afterInit");
    QTest::addColumn<QByteArray>("afterLoad");
    const QByteArray reset = "default.bmp\r\n";
    QTest::newRow("present-skin") << QByteArray("other.bmp,ignored\r\nline two\r\n") << "other.bmp"
                                  << QByteArray("other.bmp,ignored\r\nline two\r\n")
                                  << QByteArray("other.bmp\r\n");
    QTest::newRow("quoted-with-comma")
        << QByteArray("  \"sea, blue.bmp\"\r\n") << "sea, blue.bmp"
        << QByteArray("  \"sea, blue.bmp\"\r\n") << QByteArray("\"sea, blue.bmp\"\r\n");
    QTest::newRow("comma-cuts-the-name")
        << QByteArray("sea, blue.bmp\r\n") << "sea, blue.bmp" << reset << reset;
    QTest::newRow("missing-skin") << QByteArray("gone.bmp\r\n") << QString() << reset << reset;
    QTest::newRow("empty") << QByteArray() << QString() << reset << reset;
    QTest::newRow("leaves-the-skins-folder")
        << QByteArray("../QVL.ZHN\r\n") << QString() << reset << reset;
    QTest::newRow("names-a-folder") << QByteArray("sub\r\n") << "sub/" << reset << reset;
}

void tst_Window::settingsAreReadAndRepaired()
{
    QFETCH(QByteArray, settings);
    QFETCH(QString, extraSkin);
    QFETCH(QByteArray, afterInit);
    QFETCH(QByteArray, afterLoad);
    ProgramFolder folder;
    folder.Write("qvl.ini", settings);
    if (extraSkin.endsWith('/'))
        QDir(folder.File("skins")).mkdir(extraSkin.chopped(1));
    else if (!extraSkin.isEmpty())
        QVERIFY(QFile::copy(folder.File("skins/default.bmp"), folder.File("skins/" + extraSkin)));
    ScriptedPlatform platform;
    bool ok = false;
    InitAppFiles(folder.path(), platform, ok);
    QVERIFY(ok);
    QCOMPARE(folder.Read("qvl.ini"), afterInit);
    frmMain form(platform, folder.path());
    form.Form_Load();
    QVERIFY(!form.Ended());
    QCOMPARE(folder.Read("qvl.ini"), afterLoad);
}

void tst_Window::unwritableSettingsAreReported()
{
    ProgramFolder folder;
    QDir(folder.path()).mkdir("qvl.ini"); // a folder where the file should be
    ScriptedPlatform platform;
    platform.Reply(Answer::Ok);
    bool ok = true;
    InitAppFiles(folder.path(), platform, ok);
    QVERIFY(!ok);
    QCOMPARE(platform.Calls().size(), 1);
    QCOMPARE(platform.Calls().first().title, QStringLiteral("Quorvel - Error"));
    QVERIFY(platform.Calls().first().text.contains(folder.File("qvl.ini")));
}

void tst_Window::everyImageGetsItsRectangleOfTheSkin()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    const QList<std::pair<QLabel *, SkinRect>> expected
        = {{form.imgUpFrame, {0, 0, 280, 20}}, {form.imgLeftFrame, {0, 20, 20, 300}},
            {form.imgRightFrame, {260, 20, 20, 300}}, {form.imgExit, {0, 320, 280, 20}},
            {form.imgTitle, {280, 0, 90, 340}}, {form.imgCong, {0, 340, 370, 40}},
            {form.imgPieces[0], {20, 20, 120, 120}}, {form.imgPieces[1], {20, 140, 120, 60}},
            {form.imgPieces[2], {20, 200, 60, 120}}, {form.imgPieces[4], {80, 200, 60, 120}},
            {form.imgPieces[3], {140, 200, 60, 120}}, {form.imgPieces[5], {200, 200, 60, 120}},
            {form.imgPieces[6], {200, 140, 60, 60}}, {form.imgPieces[9], {200, 140, 60, 60}}};
    for (const auto &[image, rect] : expected)
        QVERIFY2(ShowsSkinArea(*image, rect),
            qPrintable(QString::number(rect.x) + "," + QString::number(rect.y)));
    // A larger picture is used only in its top-left part, and kept as the setting.
    KnownSkin(500, 400).save(folder.File("skins/large.bmp"), "BMP");
    form.ApplySkin("large.bmp");
    QVERIFY(platform.Shown().isEmpty());
    QVERIFY(ShowsSkinArea(*form.imgPieces[0], {20, 20, 120, 120}));
    QCOMPARE(folder.Read("qvl.ini"), QByteArray("large.bmp\r\n"));
}

void tst_Window::blocksStandOnTheirCellsWhateverTheUnits_data()
{
    QTest::addColumn<float>("u");
    QTest::newRow("1") << 1.0f;
    QTest::newRow("12") << 12.0f;
    QTest::newRow("15") << 15.0f;
}

void tst_Window::blocksStandOnTheirCellsWhateverTheUnits()
{
    QFETCH(float, u);
    ProgramFolder folder({"2345/2345/6117/.008/.009"});
    ScriptedPlatform platform;
    platform.metrics.unitsPerPixelX = platform.metrics.unitsPerPixelY = u;
    platform.metrics.width = 1024 * u;
    platform.metrics.height = 768 * u;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QCOMPARE(form.frameGeometry().x(), (1024 - form.frameGeometry().width()) / 2);
    ChooseLevel(form, 0);
    QCOMPARE(form.imgPieces[0]->Left(), 90 * u); // code 31
    QCOMPARE(form.imgPieces[0]->pos(), QPoint(90, 210));
    QCOMPARE(form.imgPieces[9]->pos(), QPoint(210, 270)); // code 43
    QCOMPARE(form.imgTitle->Left(), 310 * u);
    for (const auto &[image, at] :
        std::initializer_list<std::pair<QWidget *, QPoint>> {{form.imgUpFrame, {10, 10}},
            {form.imgLeftFrame, {10, 30}}, {form.imgRightFrame, {270, 30}},
            {form.imgExit, {10, 330}}, {form.imgTitle, {310, 10}}})
        QCOMPARE(image->pos(), at);
    QVERIFY(form.imgPieces[0]->isVisible() && !form.imgCong->isVisible());
    form.ShowCongratulation();
    QCOMPARE(form.imgCong->pos(), QPoint(19, 182)); // (405 - 40) halved, truncated
    QCOMPARE(form.imgCong->Left(), 19 * u);
    QVERIFY(!form.mnuSaveGame->isEnabled() && !form.gameChanged);
}

void tst_Window::statusLineKeepsTheNamesPadding()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 0);
    QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 1 - Level 01  "));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
    form.levels[69].levelName = QString::fromLatin1("Zero\0\0\0\0\0\0", 10);
    form.game.levelIndex = 69;
    form.game.steps = 123456;
    form.ShowStatus();
    QCOMPARE(form.lblStatus->text(), QString::fromLatin1("Level: 70 - Zero\0\0\0\0\0\0", 22));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 123456"));
}

QTEST_MAIN(tst_Window)
#include "tst_Window.moc"
