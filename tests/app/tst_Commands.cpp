// The game-management commands as the player meets them: the save dialog's
// questions and the file it writes, the offer to save before a game is left,
// loading, and choosing a skin in the file chooser.
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "dialogs/frmFile.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// The blocks of "2003/2003/4115/4.75/86.9" as a saved game holds them, after
// the steps, the level and the name.
const QByteArray Blocks("\x01\0\x15\0\0\0\x03\0\x14\0\x17\0\x29\0\x20\0\x28\0\x2B\0", 20);
const QByteArray SavedAtLevelTwo = QByteArray("\x19\0\0\0\1\0Saved Two ", 16) + Blocks;

// Queues answers by letter: O ok, Y yes, N no, C cancel.
void Answers(ScriptedPlatform &platform, const QString &letters)
{
    for (const QChar letter : letters)
        platform.Reply(Answer(QString("OYNC").indexOf(letter)));
}

// A program started on a fresh folder, every level "2003/2003/4115/4675/8..9".
struct Game
{
    // Acts on the dialog the next command opens, once its event loop runs,
    // and keeps its caption; should none open, the act goes with the window.
    void OnDialog(const std::function<void(QDialog *)> &act = &QDialog::reject)
    {
        QTimer::singleShot(0, &form, [this, act] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                opened = dialog->windowTitle();
                act(dialog);
            }
        });
    }
    ScriptedPlatform platform;
    ProgramFolder folder;
    frmMain form {platform, folder.path()};
    bool started = StartUp(form, platform, folder);
    QString opened;
};

} // namespace

class tst_Commands : public QObject
{
    Q_OBJECT
private slots:
    void saveAsksUntilTheNameIsUsable_data();
    void saveAsksUntilTheNameIsUsable();
    void leavingAChangedGameOffersToSave_data();
    void leavingAChangedGameOffersToSave();
    void chooserAnswers_data();
    void chooserAnswers();
    void anInstalledGameKeepsThePlayersFilesInTheirFolder();
};

void tst_Commands::saveAsksUntilTheNameIsUsable_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QString>("answers");
    QTest::addColumn<QStringList>("boxes"); // <path> the file of the last name typed
    QTest::addColumn<QString>("saved"); // the file's name, empty when nothing is written
    const QString proceed = "Quorvel - Saving | Are you sure you want to proceed without saving?";
    const QString tooLong
        = "Quorvel - Saving | Name too long.\r\nPlease limit the name to 32 characters.";
    const QString illegal = "Quorvel - Saving | Illegal characters found in the name.";
    const QString overwrite = "Quorvel - Saving | File already exists. Overwrite it?";
    // Spaces, punctuation the file system takes and the code page's letters up to þ are fine.
    const QString x32 = QString("Caf\u00E9 \u20AC\u00FE <a|b> & (c) - ").leftJustified(32, 'x');
    // Each beyond 16 bits is one character, though none is in the code page.
    const QString faces = QString::fromUcs4(U"\U0001F600", 1).repeated(17);
    const auto row = [](const char *name, const QStringList &typed, const char *answers,
                         const QStringList &boxes, const QString &saved) {
        QTest::newRow(name) << typed << answers << boxes << saved;
    };
    row("cancel-then-give-up", {""}, "Y", {proceed}, "");
    row("cancel-then-ask-again", {"", "Mine"}, "N", {proceed}, "Mine");
    row("32-characters", {x32}, "", {}, x32);
    row("33-characters", {x32 + "x", "ab"}, "O", {tooLong}, "ab");
    row("too-long-and-forbidden", {"a." + QString(31, 'c'), "ab"}, "O", {tooLong}, "ab");
    row("control-character", {QString("a%1b").arg(QChar(0x1F)), "ab"}, "O", {illegal}, "ab");
    row("dot", {"a.b", "ab"}, "O", {illegal}, "ab");
    row("y-diaeresis", {"a\u00FFb", "ab"}, "O", {illegal}, "ab");
    row("17-characters-outside-the-code-page", {faces, "ab"}, "O", {illegal}, "ab");
    row("existing-no-then-yes", {"Old", "Old"}, "NY", {overwrite, overwrite}, "Old");
    row("write-refused", {"Dir"}, "O",
        {"Quorvel - Saving Error | An error occurred while attempting saving game data\r\n<path>"
         "\r\nGame not saved."},
        "");
}

void tst_Commands::saveAsksUntilTheNameIsUsable()
{
    QFETCH(QStringList, typed);
    QFETCH(QString, answers);
    QFETCH(QStringList, boxes);
    QFETCH(QString, saved);
    Game game;
    ChooseLevel(game.form, 4);
    DragBlock(game.form, 6, {1, 3}, {{1, 4}});
    game.folder.Write("saved/Old.sav", QByteArray(40, '\xEE')); // longer, from elsewhere
    QVERIFY(QDir(game.folder.File("saved")).mkdir("Dir.sav")); // no file can be written there
    for (const QString &text : typed)
        game.platform.Type(text);
    Answers(game.platform, answers);

    game.form.mnuSaveGame_Click();

    const QString path = QDir::toNativeSeparators(game.folder.File("saved/" + typed.last()));
    QCOMPARE(game.platform.Shown(), boxes.replaceInStrings("<path>", path + ".sav"));
    // Each prompt offers the name refused before it.
    QCOMPARE(game.platform.Asked().last(),
        "Quorvel - Saving Game | What is the name of the game? | " + typed.value(typed.size() - 2));
    const QByteArray written = QByteArray("\1\0\0\0\4\0Level 05  ", 16) + Blocks;
    // Written over from the start, never cut short.
    QCOMPARE(game.folder.Read("saved/Old.sav"),
        saved == "Old" ? written + QByteArray(4, '\xEE') : QByteArray(40, '\xEE'));
    if (!saved.isEmpty() && saved != "Old")
        QCOMPARE(game.folder.Read("saved/" + saved + ".sav"), written);
    QCOMPARE(game.form.gameChanged, saved.isEmpty());
    QVERIFY(game.platform.Done());
}

void tst_Commands::leavingAChangedGameOffersToSave_data()
{
    QTest::addColumn<QString>("command"); // as the prompt's title names it
    QTest::addColumn<QString>("answer"); // to the prompt, Y saving as "Kept"; none if unchanged
    QTest::addColumn<QString>("after"); // the chooser that opened, or "closed" for the window
    QTest::addColumn<bool>("changedAfter");
    // Loading counts the game as unchanged once the chooser is up, even when
    // it is then cancelled.
    for (const char *answer : {"", "Y", "N", "C"}) {
        const bool cancel = *answer == 'C', keepsUnsaved = cancel || *answer == 'N';
        QTest::addRow("new-game-%s", *answer ? answer : "unchanged")
            << "New Game" << answer << (cancel ? "" : "Choose Level") << keepsUnsaved;
        QTest::addRow("load-%s", *answer ? answer : "unchanged")
            << "Load game" << answer << (cancel ? "" : "Load Game") << cancel;
        QTest::addRow("exit-%s", *answer ? answer : "unchanged")
            << "Exit" << answer << (cancel ? "" : "closed") << keepsUnsaved;
    }
}

void tst_Commands::leavingAChangedGameOffersToSave()
{
    QFETCH(QString, command);
    QFETCH(QString, answer);
    QFETCH(QString, after);
    QFETCH(bool, changedAfter);
    Game game;
    game.form.gameChanged = !answer.isEmpty();
    Answers(game.platform, answer);
    if (answer == "Y")
        game.platform.Type("Kept");

    game.OnDialog();
    command == "New Game"        ? game.form.mnuNewGame_Click()
        : command == "Load game" ? game.form.mnuLoadGame_Click()
                                 : game.form.mnuExit_Click();

    // The offer to save comes only for a changed game, titled for its command.
    QCOMPARE(game.platform.Shown().join("").section(" | ", 0, 0),
        answer.isEmpty() ? "" : "Quorvel - " + command);
    QCOMPARE(game.form.isVisible() ? game.opened : "closed", after);
    QCOMPARE(game.form.gameChanged, changedAfter);
    QVERIFY(game.platform.Done());
}

void tst_Commands::chooserAnswers_data()
{
    QTest::addColumn<QString>("how"); // a saved game or skin picked, or what else the player does
    QTest::newRow("load") << "Resumed.sav";
    // The load chooser is cancelled in every row of the offer to save.
    QTest::newRow("skin") << "second.bmp";
    QTest::newRow("skin-cancel-button") << "cancel";
    QTest::newRow("skin-escape") << "escape";
    QTest::newRow("skin-close-control") << "close";
    QTest::newRow("skin-nothing-selected") << "";
    // Neither button is the default: Return on the selected "second.bmp" does nothing.
    QTest::newRow("skin-return") << "return";
    // A name the settings file cannot hold is refused before anything changes.
    QTest::newRow("skin-name-outside-the-code-page") << "\u591C.bmp";
    // Not a picture: the program ends, its setting kept.
    QTest::newRow("skin-no-picture") << "broken.bmp";
}

void tst_Commands::chooserAnswers()
{
    QFETCH(QString, how);
    Game game;
    const QString path = game.folder.File("saved/Resumed.sav");
    QVERIFY(game.folder.Write("saved/Resumed.sav", SavedAtLevelTwo));
    const bool outside = how.startsWith(QChar(0x591C));
    for (const QString &name :
        outside ? QStringList {"second.bmp", how} : QStringList {"second.bmp"})
        QVERIFY(KnownSkin().mirrored().save(game.folder.File("skins/" + name), "BMP"));
    for (const char *name : {"broken.bmp", "b.BMP", "A.gif", "c.jpeg", "d.JPG", "e.Dib", "f.wmf",
             "g.EMF", "h.png", "i.tif", "j.bmp.bak"})
        game.folder.Write(QStringLiteral("skins/") + name, "no picture");
    // Any rewrite of the settings file would drop the tail of this line.
    game.folder.Write("qvl.ini", "default.bmp, as before\r\n");
    const bool load = how.endsWith(".sav"), applied = how == "second.bmp";
    const bool ends = how == "broken.bmp";
    Answers(game.platform, ends || outside ? "O" : "");
    QStringList rows;
    bool stayedOpen = false, noDefault = false;
    game.OnDialog([&](QDialog *dialog) {
        auto *chooser = static_cast<frmFile *>(dialog);
        for (int i = 0; i < chooser->filList->count(); ++i)
            rows << chooser->filList->item(i)->text();
        noDefault = !chooser->cmdSet->isDefault() && !chooser->cmdCancel->isDefault();
        chooser->filList->setCurrentItem(
            chooser->filList->findItems(how == "return" ? "second.bmp" : how, {}).value(0));
        if (how == "return")
            QTest::keyClick(chooser->filList, Qt::Key_Return);
        else if (how == "escape")
            QTest::keyClick(chooser->filList, Qt::Key_Escape);
        else if (how == "close")
            chooser->close();
        else
            QTest::mouseClick(
                how == "cancel" ? chooser->cmdCancel : chooser->cmdSet, Qt::LeftButton);
        stayedOpen = chooser->isVisible();
        if (stayedOpen)
            QTest::mouseClick(chooser->cmdCancel, Qt::LeftButton);
    });

    load ? game.form.mnuLoadGame_Click() : game.form.mnuSetSkin_Click();

    QCOMPARE(rows,
        (load ? QStringList {"Resumed.sav"}
              : QStringList {"A.gif", "b.BMP", "broken.bmp", "c.jpeg", "d.JPG", "default.bmp",
                    "e.Dib", "f.wmf", "g.EMF", "second.bmp"}
                    + (outside ? QStringList {how} : QStringList {})));
    QVERIFY(noDefault);
    QCOMPARE(stayedOpen, how.isEmpty() || how == "return");
    // A saved game's full path, a skin's bare name, or nothing.
    QCOMPARE(game.form.absFilename, !how.contains('.') ? "" : load ? path : how);
    const QString box = ends
        ? "Quorvel - ERROR | An error has occurred while attempting to load picture \r\n"
            + game.folder.File("skins/broken.bmp")
        : outside ? "Quorvel - Set Skin | The skin " + how
            + " cannot be set: its name would be lost when the game starts again.\r\nThe "
              "settings file cannot hold the characters \u591C of its name."
                  : "";
    QCOMPARE(game.platform.Shown().join("").section("\r\n", 0, 1), box);
    // The game loaded, its level named as in the file, or the board left as it was.
    QCOMPARE(BoardPicture(game.form.game) + " | " + game.form.lblStatus->text() + " | "
            + game.form.lblSteps->text(),
        load ? "2003/2003/4115/4.75/86.9 | Level: 2 - Saved Two  | Steps: 25"
             : "0000/0000/0000/0000/0000 |  | ");
    QCOMPARE(game.folder.Read("qvl.ini"),
        QByteArray(applied ? "second.bmp\r\n" : "default.bmp, as before\r\n"));
    QCOMPARE(game.form.imgPieces[0]->pixmap().toImage().convertToFormat(QImage::Format_RGB32),
        (applied ? KnownSkin().mirrored() : KnownSkin()).copy(20, 20, 120, 120));
    QCOMPARE(game.form.Ended(), ends);
    QVERIFY(game.platform.Done());
}

// The installed data (levels, help page, shipped skins) is only read; the
// player's folder is made on first start and takes everything they write.
void tst_Commands::anInstalledGameKeepsThePlayersFilesInTheirFolder()
{
    ProgramFolder shipped;
    QVERIFY(KnownSkin().save(shipped.File("skins/shared.bmp"), "BMP"));
    QTemporaryDir home;
    const ProgramFolders folders(shipped.path(), home.filePath("data/quorvel"));
    const QStringList shippedFiles = QDir(shipped.File("skins")).entryList(QDir::Files);
    ScriptedPlatform platform;
    frmMain form(platform, folders);
    bool ok = false;
    InitAppFiles(folders, platform, ok);
    QVERIFY(ok);
    form.Form_Load();
    QVERIFY(!form.Ended() && platform.Shown().isEmpty());
    const QDir player(folders.player);
    const auto Settings = [&player] {
        QFile file(player.filePath("qvl.ini"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QVERIFY(player.exists("saved") && player.exists("skins"));
    QCOMPARE(Settings(), QByteArray("default.bmp\r\n"));

    // The player's own skin of a shipped name is the one listed and applied.
    QVERIFY(KnownSkin().mirrored().save(player.filePath("skins/shared.bmp"), "BMP"));
    QVERIFY(KnownSkin().mirrored().save(player.filePath("skins/mine.bmp"), "BMP"));
    QStringList rows;
    QTimer::singleShot(0, &form, [&rows] {
        auto *chooser = qobject_cast<frmFile *>(QApplication::activeModalWidget());
        QVERIFY(chooser);
        for (int i = 0; i < chooser->filList->count(); ++i)
            rows << chooser->filList->item(i)->text();
        chooser->filList->setCurrentItem(chooser->filList->findItems("shared.bmp", {}).value(0));
        QTest::mouseClick(chooser->cmdSet, Qt::LeftButton);
    });
    form.mnuSetSkin_Click();
    QCOMPARE(rows, (QStringList {"default.bmp", "mine.bmp", "shared.bmp"}));
    QCOMPARE(form.imgPieces[0]->pixmap().toImage().convertToFormat(QImage::Format_RGB32),
        KnownSkin().mirrored().copy(20, 20, 120, 120));
    QCOMPARE(Settings(), QByteArray("shared.bmp\r\n"));

    ChooseLevel(form, 0);
    platform.Type(QStringLiteral("Monday"));
    form.mnuSaveGame_Click();
    QVERIFY(QFileInfo(player.filePath("saved/Monday.sav")).isFile());
    form.mnuHTP_Click();
    QCOMPARE(platform.Opened(), QStringList {shipped.File("qvl.html")});
    QCOMPARE(QDir(shipped.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        (QStringList {"QVL.ZHN", "skins"}));
    QCOMPARE(QDir(shipped.File("skins")).entryList(QDir::Files), shippedFiles);
}

QTEST_MAIN(tst_Commands)
#include "tst_Commands.moc"
