// Start-up on prepared program folders: what is created, what is repaired,
// and the two fatal reports, over a window that is already on screen.
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QTest>

namespace {

const QString LevelError
    = QStringLiteral("Quorvel - Error | An error has occurred while attempting "
                     "loading data file\r\n%1/QVL.zhn\r\n%2");
const QString SkinError
    = QStringLiteral("Quorvel - ERROR | An error has occurred while attempting to "
                     "load picture \r\n%1\r\nMake sure the picture exists and is "
                     "of a correct format.");

} // namespace

class tst_Startup : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void firstRunPreparesTheFolderAndShowsAnEmptyWindow();
    void menusCarryTheirAccessKeys();
    void plainFileNamedSavedIsLeftAlone();
    void settingsAreReadAndRepaired_data();
    void settingsAreReadAndRepaired();
    void missingOrBrokenLevelFileEndsTheProgram_data();
    void missingOrBrokenLevelFileEndsTheProgram();
    void skinThatCannotBeCutEndsTheProgram_data();
    void skinThatCannotBeCutEndsTheProgram();
    void unwritableSettingsAreReported();
    void windowIsCentredOnTheScreen();
};

void tst_Startup::cleanup()
{
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()
        || std::none_of(QApplication::topLevelWidgets().cbegin(),
            QApplication::topLevelWidgets().cend(), [](QWidget *w) { return w->isVisible(); }));
}

void tst_Startup::firstRunPreparesTheFolderAndShowsAnEmptyWindow()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(QFileInfo(folder.File("saved")).isDir());
    QCOMPARE(folder.Read("qvl.ini"), QByteArray("default.bmp\r\n"));
    QVERIFY(platform.Shown().isEmpty());
    QCOMPARE(form.windowTitle(), QStringLiteral("Quorvel"));
    QVERIFY(form.isVisible());
    QVERIFY(!form.mnuSaveGame->isEnabled());
    for (QWidget *image : form.imgPieces)
        QVERIFY(!image->isVisible());
    for (QWidget *image : {form.imgUpFrame, form.imgLeftFrame, form.imgRightFrame, form.imgExit,
             form.imgTitle, form.imgCong})
        QVERIFY(!image->isVisible());
    QCOMPARE(form.lblStatus->text(), QString());
    QCOMPARE(form.lblSteps->text(), QString());
    QCOMPARE(form.centralWidget()->size(), QSize(408, 405));
    QCOMPARE(form.levels[69].levelName, QStringLiteral("Level 70  "));
    QCOMPARE(form.game.steps, 0);
    QVERIFY(!form.gameChanged);
    QVERIFY(platform.Done());
}

void tst_Startup::menusCarryTheirAccessKeys()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QStringList captions;
    for (QAction *menu : form.menuBar()->actions()) {
        captions << menu->text();
        for (QAction *item : menu->menu()->actions())
            captions << (item->isSeparator() ? QStringLiteral("-") : item->text());
    }
    QCOMPARE(captions,
        (QStringList {"&File", "&New Game", "&Load Game", "&Save Game", "-", "Set S&kin", "-",
            "E&xit", "&Help", "H&ow to Play", "-", "&About"}));
}

void tst_Startup::plainFileNamedSavedIsLeftAlone()
{
    ProgramFolder folder;
    folder.Write("saved", "not a folder");
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    QVERIFY(QFileInfo(folder.File("saved")).isFile());
    QCOMPARE(folder.Read("saved"), QByteArray("not a folder"));
}

void tst_Startup::settingsAreReadAndRepaired_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("extraSkin"); // a second picture in skins/
    QTest::addColumn<QByteArray>("afterInit");
    QTest::addColumn<QByteArray>("afterLoad");
    QTest::newRow("names-a-present-skin")
        << QByteArray("other.bmp,ignored\r\nsecond line\r\n") << "other.bmp"
        << QByteArray("other.bmp,ignored\r\nsecond line\r\n") << QByteArray("other.bmp\r\n");
    QTest::newRow("quoted-with-comma")
        << QByteArray("  \"sea, blue.bmp\"\r\n") << "sea, blue.bmp"
        << QByteArray("  \"sea, blue.bmp\"\r\n") << QByteArray("sea, blue.bmp\r\n");
    QTest::newRow("comma-cuts-the-name")
        << QByteArray("sea, blue.bmp\r\n") << "sea, blue.bmp" << QByteArray("default.bmp\r\n")
        << QByteArray("default.bmp\r\n");
    QTest::newRow("names-a-missing-skin")
        << QByteArray("gone.bmp\r\n") << QString() << QByteArray("default.bmp\r\n")
        << QByteArray("default.bmp\r\n");
    QTest::newRow("empty") << QByteArray() << QString() << QByteArray("default.bmp\r\n")
                           << QByteArray("default.bmp\r\n");
    QTest::newRow("binary") << QByteArray("\x00\xFF\x01\r\n", 4) << QString()
                            << QByteArray("default.bmp\r\n") << QByteArray("default.bmp\r\n");
    QTest::newRow("leaves-the-skins-folder")
        << QByteArray("../QVL.ZHN\r\n") << QString() << QByteArray("default.bmp\r\n")
        << QByteArray("default.bmp\r\n");
    QTest::newRow("names-a-folder")
        << QByteArray("sub\r\n") << "sub/" << QByteArray("default.bmp\r\n")
        << QByteArray("default.bmp\r\n");
}

void tst_Startup::settingsAreReadAndRepaired()
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
    QVERIFY(platform.Shown().isEmpty());
}

void tst_Startup::missingOrBrokenLevelFileEndsTheProgram_data()
{
    QTest::addColumn<QByteArray>("levelFile"); // empty: no file at all
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << QByteArray() << "2 No such file or directory";
    QTest::newRow("short") << QByteArray(2099, ' ')
                           << "62 Input past end of file: 2099 bytes where 2100 were expected";
}

void tst_Startup::missingOrBrokenLevelFileEndsTheProgram()
{
    QFETCH(QByteArray, levelFile);
    QFETCH(QString, error);
    ProgramFolder folder;
    QFile::remove(folder.File("QVL.ZHN"));
    if (!levelFile.isEmpty())
        folder.Write("QVL.ZHN", levelFile);
    folder.Write("qvl.ini", "default.bmp,kept as it was\r\n");
    ScriptedPlatform platform;
    platform.Reply(Answer::Ok);
    frmMain form(platform, folder.path());
    bool shownOverTheWindow = false;
    platform.OnMessage(
        [&](const ScriptedPlatform::Call &) { shownOverTheWindow = form.isVisible(); });
    QVERIFY(!StartUp(form, platform, folder));
    QCOMPARE(platform.Shown(), QStringList {LevelError.arg(folder.path(), error)});
    QCOMPARE(platform.Calls().first().icon, Icon::Critical);
    QVERIFY(shownOverTheWindow);
    QVERIFY(form.Ended());
    QVERIFY(!form.isVisible());
    QCOMPARE(
        folder.Read("qvl.ini"), QByteArray("default.bmp,kept as it was\r\n")); // nothing written
    QVERIFY(platform.Done());
}

void tst_Startup::skinThatCannotBeCutEndsTheProgram_data()
{
    QTest::addColumn<QString>("skin"); // written as default.bmp; empty: no skins folder
    QTest::newRow("no-skins-folder") << QString();
    QTest::newRow("not-a-picture") << "text";
    QTest::newRow("too-small") << "small";
}

void tst_Startup::skinThatCannotBeCutEndsTheProgram()
{
    QFETCH(QString, skin);
    ProgramFolder folder({"2003/2003/4115/4675/8..9"}, !skin.isEmpty());
    if (skin == "text")
        folder.Write("skins/default.bmp", "this is no picture");
    if (skin == "small")
        KnownSkin(369, 380).save(folder.File("skins/default.bmp"), "BMP");
    ScriptedPlatform platform;
    platform.Reply(Answer::Ok);
    frmMain form(platform, folder.path());
    QVERIFY(!StartUp(form, platform, folder));
    QVERIFY(QFileInfo(folder.File("skins")).isDir());
    QCOMPARE(platform.Shown(), QStringList {SkinError.arg(folder.File("skins/default.bmp"))});
    QCOMPARE(platform.Calls().first().icon, Icon::Critical);
    QVERIFY(form.Ended());
}

void tst_Startup::unwritableSettingsAreReported()
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

void tst_Startup::windowIsCentredOnTheScreen()
{
    ProgramFolder folder;
    ScriptedPlatform platform;
    platform.metrics = {15, 15, 15360, 11520};
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    const QRect outer = form.frameGeometry();
    QCOMPARE(outer.x(), (1024 - outer.width()) / 2);
    QCOMPARE(outer.y(), (768 - outer.height()) / 2);
}

QTEST_MAIN(tst_Startup)
#include "tst_Startup.moc"
