// The game-management commands as the player meets them: the save dialog's
// questions and the file it writes, the offer to save before a game is left,
// loading, the file chooser, leaving the program and choosing a skin.
#include "app/ImageControl.h"
#include "dialogs/frmFile.h"
#include "dialogs/frmLevel.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <string>

namespace {

const char *const Start = "2003/2003/4115/4675/8..9"; // every level but the second
const char *const NearlySolved = "2113/2673/4005/4005/8..9"; // the second: one step from the exit
const char *const AfterOneStep = "2003/2003/4115/4.75/86.9"; // block 6 one cell down
const QString SavePrompt = "Would you like to save the current game?";
const QString Proceed
    = "Quorvel - Saving | Are you sure you want to proceed without saving? | question yes-no";
const QString TooLong = "Quorvel - Saving | Name too long.\r\nPlease limit the name to 32 "
                        "characters. | exclamation ok";
const QString Illegal = "Quorvel - Saving | Illegal characters found in the name. | exclamation ok";
const QString Overwrite = "Quorvel - Saving | File already exists. Overwrite it? | question yes-no";
// Steps 25 at level 1 named "Saved One ", the blocks as in AfterOneStep.
const QByteArray SavedAtLevelOne("\x19\0\0\0\0\0Saved One \x01\0\x15\0\0\0\x03\0\x14\0\x17\0\x29\0"
                                 "\x20\0\x28\0\x2B\0",
    36);

// Every box as "title | text | icon buttons": a wrong icon or button set fails too.
QStringList Boxes(const ScriptedPlatform &platform)
{
    const char *icons[] = {"critical", "question", "exclamation", "information"};
    const char *buttons[] = {"ok", "yes-no", "yes-no-cancel"};
    QStringList boxes;
    for (const ScriptedPlatform::Call &call : platform.Calls())
        boxes << call.title + " | " + call.text + " | " + icons[int(call.icon)] + " "
                + buttons[int(call.buttons)];
    return boxes;
}

// Queues answers by letter: Y yes, N no, C cancel, O ok.
void Answers(ScriptedPlatform &platform, const QString &letters)
{
    for (const QChar letter : letters)
        platform.Reply(letter == 'Y' ? Answer::Yes
                : letter == 'N'      ? Answer::No
                : letter == 'C'      ? Answer::Cancel
                                     : Answer::Ok);
}

QStringList Rows(const QListWidget *list)
{
    QStringList rows;
    for (int i = 0; i < list->count(); ++i)
        rows << list->item(i)->text();
    return rows;
}

QImage PictureOf(const QLabel *image)
{
    return image->pixmap().toImage().convertToFormat(QImage::Format_RGB32);
}

using Act = std::function<void(QDialog *)>;

// Acts on the real dialogs a command opens, one act per dialog in order, and
// keeps their captions. A dialog nobody expected is cancelled, so the test
// fails on the captions instead of hanging.
class Dialogs
{
public:
    explicit Dialogs(std::initializer_list<Act> acts = {})
        : acts_(acts)
    {
        QObject::connect(&timer_, &QTimer::timeout, [this] { Poll(); });
        timer_.start(10);
    }
    QStringList captions;

private:
    void Poll()
    {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible() || dialog == last_)
            return;
        last_ = dialog;
        captions << dialog->windowTitle();
        if (acts_.isEmpty())
            dialog->reject();
        else
            acts_.takeFirst()(dialog);
    }
    QList<Act> acts_;
    QPointer<QDialog> last_;
    QTimer timer_;
};

// Confirms the named file in the file chooser; `before` runs once it is selected.
Act PickFile(const QString &name, std::function<void()> before = {})
{
    return [name, before](QDialog *dialog) {
        auto *chooser = qobject_cast<frmFile *>(dialog);
        const auto found = chooser ? chooser->filList->findItems(name, Qt::MatchExactly)
                                   : QList<QListWidgetItem *>();
        if (found.isEmpty())
            return dialog->reject();
        chooser->filList->setCurrentItem(found.first());
        if (before)
            before();
        QTest::mouseClick(chooser->cmdSet, Qt::LeftButton);
    };
}

// A program started on a fresh folder, as start-up leaves it.
struct Game
{
    explicit Game(std::initializer_list<const char *> pictures = {Start, NearlySolved})
        : folder(pictures)
        , form(platform, folder.path())
    {
        QVERIFY(StartUp(form, platform, folder));
    }
    // Block 6 one cell down: the game has changed.
    void Step() { DragBlock(form, 6, {1, 3}, {{1, 4}}); }
    QString Saved(const QString &name) const { return folder.File("saved/" + name + ".sav"); }
    ScriptedPlatform platform;
    ProgramFolder folder;
    frmMain form;
};

} // namespace

class tst_Commands : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void cleanup() { QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty()); }

    void saveAsksUntilTheNameIsUsable_data();
    void saveAsksUntilTheNameIsUsable();
    void savedFileHoldsStepsLevelNameAndBlocks();
    void failedWriteKeepsTheGameUnsaved_data();
    void failedWriteKeepsTheGameUnsaved();
    void leavingAChangedGameOffersToSave_data();
    void leavingAChangedGameOffersToSave();
    void loadingRestoresTheSavedGame();
    void damagedSavedGameIsRefused_data();
    void damagedSavedGameIsRefused();
    void chooserAsTheCommandsOpenIt_data();
    void chooserAsTheCommandsOpenIt();
    void chooserAnswers_data();
    void chooserAnswers();
    void setSkinAppliesAtOnceAndRemembersIt_data();
    void setSkinAppliesAtOnceAndRemembersIt();
};

void tst_Commands::saveAsksUntilTheNameIsUsable_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QString>("answers");
    QTest::addColumn<QStringList>("boxes");
    QTest::addColumn<QStringList>("defaults"); // of each name prompt in turn
    QTest::addColumn<QString>("saved"); // the game's name, empty when nothing is written

    const auto row = [](const char *name, QStringList typed, const char *answers, QStringList boxes,
                         QStringList defaults, QString saved) {
        QTest::newRow(name) << typed << answers << boxes << defaults << saved;
    };
    const QString x32(32, 'x'), x33(33, 'x'), longAndForbidden = "a.b" + QString(30, 'c');
    row("cancel-then-give-up", {""}, "Y", {Proceed}, {""}, "");
    row("cancel-then-ask-again-empty", {"", "Mine"}, "N", {Proceed}, {"", ""}, "Mine");
    row("32-characters", {x32}, "", {}, {""}, x32);
    row("33-characters", {x33, x32}, "O", {TooLong}, {"", x33}, x32);
    row("too-long-and-forbidden-is-too-long", {longAndForbidden, "ab"}, "O", {TooLong},
        {"", longAndForbidden}, "ab");
    // A character beyond 16 bits is one character, though not in the code page.
    const QString faces = QString::fromUcs4(std::u32string(17, U'\U0001F600').c_str(), 17);
    row("17-characters-beyond-16-bits", {faces, "ab"}, "O", {Illegal}, {"", faces}, "ab");
    const char *names[] = {"double-quote", "backslash", "asterisk", "question-mark", "dot", "colon",
        "tab", "control-character", "y-diaeresis", "outside-the-code-page"};
    const QString forbidden = QString("\"\\*?.:\t\x01") + QChar(0xFF) + QChar(0x0394);
    for (int i = 0; i < forbidden.size(); ++i) {
        const QString name = QString("a%1b").arg(forbidden[i]);
        row(names[i], {name, "ab"}, "O", {Illegal}, {"", name}, "ab");
    }
    for (const char *name :
        {"My game - 2", " spaces kept ", "<a|b> & (c)", "Caf\u00E9 \u20AC\u00FE"})
        row(name, {name}, "", {}, {""}, name);
    row("existing-no-then-yes", {"Old", "Old"}, "NY", {Overwrite, Overwrite}, {"", "Old"}, "Old");
    row("read-only-counts-as-existing", {"Locked", ""}, "NY", {Overwrite, Proceed}, {"", "Locked"},
        "");
}

void tst_Commands::saveAsksUntilTheNameIsUsable()
{
    QFETCH(QStringList, typed);
    QFETCH(QString, answers);
    QFETCH(QStringList, boxes);
    QFETCH(QStringList, defaults);
    QFETCH(QString, saved);
    Game game;
    ChooseLevel(game.form, 0);
    game.Step();
    const QByteArray older(40, '\xEE'); // longer files from elsewhere
    game.folder.Write("saved/Old.sav", older);
    game.folder.Write("saved/Locked.sav", older);
    QFile::setPermissions(game.Saved("Locked"), QFile::ReadOwner | QFile::ReadGroup);
    for (const QString &text : typed)
        game.platform.Type(text);
    Answers(game.platform, answers);

    game.form.mnuSaveGame_Click();

    QCOMPARE(Boxes(game.platform), boxes);
    QStringList asked;
    for (const QString &text : defaults)
        asked << "Quorvel - Saving Game | What is the name of the game? | " + text;
    QCOMPARE(game.platform.Asked(), asked);
    QStringList files {"Locked.sav", "Old.sav"};
    QStringList found = QDir(game.folder.File("saved")).entryList(QDir::Files);
    if (!saved.isEmpty() && saved != "Old")
        files << saved + ".sav";
    files.sort();
    found.sort();
    QCOMPARE(found, files);
    if (files.size() == 3)
        QCOMPARE(QFileInfo(game.Saved(saved)).size(), qint64(36));
    QCOMPARE(game.folder.Read("saved/Locked.sav"), older);
    const QByteArray old = game.folder.Read("saved/Old.sav");
    QCOMPARE(old.left(4), saved == "Old" ? QByteArray("\1\0\0\0", 4) : older.left(4));
    QCOMPARE(old.mid(36), older.mid(36)); // written over from the start, never cut short
    QCOMPARE(game.form.gameChanged, saved.isEmpty());
    QVERIFY(game.platform.Done());
}

void tst_Commands::savedFileHoldsStepsLevelNameAndBlocks()
{
    Game game;
    ChooseLevel(game.form, 4);
    game.Step();
    DragBlock(game.form, 7, {2, 3}, {{1, 3}});
    QCOMPARE(BoardPicture(game.form.game), QByteArray("2003/2003/4115/47.5/86.9"));
    game.platform.Type("Two steps");

    game.form.mnuSaveGame_Click();

    QCOMPARE(game.folder.Read("saved/Two steps.sav"),
        QByteArray("\2\0\0\0\4\0Level 05  \x01\0\x15\0\0\0\x03\0\x14\0\x17\0\x29\0\x1F\0"
                   "\x28\0\x2B\0",
            36));
    game.form.close(); // a saved game is left without a question
    QVERIFY(!game.form.isVisible());
    QCOMPARE(Boxes(game.platform), QStringList());
    QVERIFY(game.platform.Done());
}

void tst_Commands::failedWriteKeepsTheGameUnsaved_data()
{
    QTest::addColumn<QString>("breakage");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("path"); // in the program folder
    QTest::newRow("saved-is-a-file") << "file"
                                     << "Mine"
                                     << "saved/Mine.sav";
    QTest::newRow("folder-of-that-name") << "folder"
                                         << "Mine"
                                         << "saved/Mine.sav";
    QTest::newRow("name-with-a-slash") << ""
                                       << "a/b"
                                       << "saved/a/b.sav";
}

void tst_Commands::failedWriteKeepsTheGameUnsaved()
{
    QFETCH(QString, breakage);
    QFETCH(QString, name);
    QFETCH(QString, path);
    Game game;
    ChooseLevel(game.form, 0);
    game.Step();
    if (breakage == "file") {
        QVERIFY(QDir(game.folder.path()).rmdir("saved"));
        game.folder.Write("saved", "not a folder");
    } else if (breakage == "folder") {
        QVERIFY(QDir(game.folder.File("saved")).mkdir("Mine.sav"));
    }
    const QString error
        = "Quorvel - Saving Error | An error occurred while attempting saving game data\r\n"
        + QDir::toNativeSeparators(game.folder.File(path)) + "\r\nGame not saved. | critical ok";
    game.platform.Type(name);
    Answers(game.platform, "O");

    game.form.mnuSaveGame_Click();

    QCOMPARE(Boxes(game.platform), QStringList {error});
    QVERIFY(game.form.gameChanged);
    QVERIFY(!QFileInfo(game.folder.File(path)).isFile());
    QCOMPARE(BoardPicture(game.form.game), QByteArray(AfterOneStep));

    // Leaving asks again, and a second failure does not keep the window open.
    game.platform.Type(name);
    Answers(game.platform, "YO");
    game.form.mnuExit_Click();
    const QString exit = "Quorvel - Exit | " + SavePrompt + " | question yes-no-cancel";
    QCOMPARE(Boxes(game.platform), (QStringList {error, exit, error}));
    QVERIFY(!game.form.isVisible());
    QVERIFY(game.platform.Done());
}

void tst_Commands::leavingAChangedGameOffersToSave_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("dialogs"); // captions of the choosers that opened
    QTest::addColumn<bool>("closed");
    QTest::addColumn<bool>("changedAfter");
    const struct
    {
        const char *command, *title, *chooser;
    } commands[] = {
        {"new-game", "Quorvel - New Game", "Choose Level"},
        {"load-game", "Quorvel - Load game", "Load Game"},
        {"exit", "Quorvel - Exit", nullptr},
        {"close-control", "Quorvel - Exit", nullptr},
    };
    for (const auto &c : commands) {
        const auto row = [&](const char *answer, bool goesOn, bool changedAfter) {
            QTest::addRow("%s-%s", c.command, answer)
                << c.command << answer << c.title
                << (goesOn && c.chooser ? QStringList {c.chooser} : QStringList {})
                << (goesOn && !c.chooser) << changedAfter;
        };
        // Loading counts the game as unchanged once the chooser is up, even
        // when it is then cancelled; the others keep an unsaved game unsaved.
        const bool keepsUnsaved = QLatin1String(c.command) != "load-game";
        row("unchanged", true, false);
        row("yes-saved", true, false);
        row("yes-gave-up", true, keepsUnsaved);
        row("no", true, keepsUnsaved);
        row("cancel", false, true);
    }
}

void tst_Commands::leavingAChangedGameOffersToSave()
{
    QFETCH(QString, command);
    QFETCH(QString, answer);
    QFETCH(QString, title);
    QFETCH(QStringList, dialogs);
    QFETCH(bool, closed);
    QFETCH(bool, changedAfter);
    Game game;
    ChooseLevel(game.form, 0);
    QStringList boxes;
    if (answer != "unchanged") {
        game.Step();
        boxes << title + " | " + SavePrompt + " | question yes-no-cancel";
    }
    const QByteArray board = BoardPicture(game.form.game);
    if (answer == "yes-saved") {
        Answers(game.platform, "Y");
        game.platform.Type("Kept");
    } else if (answer == "yes-gave-up") {
        Answers(game.platform, "YY");
        game.platform.Type("");
        boxes << Proceed;
    } else if (answer != "unchanged") {
        Answers(game.platform, answer.left(1).toUpper());
    }

    Dialogs opened; // every chooser is cancelled
    if (command == "new-game")
        game.form.mnuNewGame_Click();
    else if (command == "load-game")
        game.form.mnuLoadGame_Click();
    else if (command == "exit")
        game.form.mnuExit_Click();
    else
        game.form.close();

    QCOMPARE(Boxes(game.platform), boxes);
    QCOMPARE(opened.captions, dialogs);
    QCOMPARE(game.form.isVisible(), !closed);
    QCOMPARE(game.form.gameChanged, changedAfter);
    QCOMPARE(QFileInfo::exists(game.Saved("Kept")), answer == "yes-saved");
    QCOMPARE(BoardPicture(game.form.game), board);
    QCOMPARE(game.form.lblSteps->text(), answer == "unchanged" ? "Steps: 0" : "Steps: 1");
    QVERIFY(game.platform.Done());
}

void tst_Commands::loadingRestoresTheSavedGame()
{
    Game game;
    Answers(game.platform, "O");
    ChooseLevel(game.form, 1);
    DragBlock(game.form, 0, {1, 2}, {{1, 3}}); // the big block reaches the exit
    QVERIFY(game.form.imgCong->isVisible());
    game.folder.Write("saved/Resumed.sav", SavedAtLevelOne);
    game.folder.Write("saved/Another.sav", QByteArray(SavedAtLevelOne).replace(0, 1, "\5"));
    {
        Dialogs dialogs {PickFile("Resumed.sav")};
        game.form.mnuLoadGame_Click();
        QCOMPARE(dialogs.captions, QStringList {"Load Game"});
    }

    QCOMPARE(BoardPicture(game.form.game), QByteArray(AfterOneStep));
    QCOMPARE(game.form.lblStatus->text(), "Level: 1 - Saved One ");
    QCOMPARE(game.form.lblSteps->text(), "Steps: 25");
    QVERIFY(!game.form.imgCong->isVisible());
    QVERIFY(game.form.imgPieces[0]->isVisible());
    QVERIFY(game.form.mnuSaveGame->isEnabled());
    QVERIFY(!game.form.gameChanged);

    DragBlock(game.form, 7, {2, 3}, {{1, 3}});
    QCOMPARE(game.form.lblSteps->text(), "Steps: 26");
    // The name from the file stays with its level in the chooser.
    QStringList rows;
    Answers(game.platform, "N");
    Dialogs dialogs {[&rows](QDialog *dialog) {
        rows = Rows(static_cast<frmLevel *>(dialog)->lisLevel);
        dialog->reject();
    }};
    game.form.mnuNewGame_Click();
    QCOMPARE(rows.mid(0, 2), (QStringList {"Level 1 - Saved One ", "Level 2 - Level 02  "}));
    QVERIFY(game.platform.Done());
}

void tst_Commands::damagedSavedGameIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("vanishes"); // deleted after it was listed
    const QByteArray good = QByteArray(SavedAtLevelOne).replace(6, 10, "Damaged   ");
    const auto poke = [&good](int offset, const char *twoBytes) {
        return QByteArray(good).replace(offset, 2, QByteArray(twoBytes, 2));
    };
    QTest::newRow("35-bytes") << good.left(35) << false;
    QTest::newRow("level-index-70") << poke(4, "\x46\0") << false;
    QTest::newRow("level-index-minus-one") << poke(4, "\xFF\xFF") << false;
    QTest::newRow("big-block-off-the-edge") << poke(16, "\x03\0") << false;
    QTest::newRow("blocks-overlap") << poke(28, "\x01\0") << false;
    QTest::newRow("vanished") << good << true;
}

void tst_Commands::damagedSavedGameIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, vanishes);
    Game game;
    ChooseLevel(game.form, 2);
    game.folder.Write("saved/Bad.sav", bytes);
    const QString path = game.Saved("Bad");
    Answers(game.platform, "O");
    {
        Dialogs dialogs {PickFile("Bad.sav", [&] {
            if (vanishes)
                QFile::remove(path);
        })};
        game.form.mnuLoadGame_Click();
    }

    QCOMPARE(game.platform.Calls().size(), 1);
    const ScriptedPlatform::Call refusal = game.platform.Calls().first();
    QCOMPARE(refusal.title, "Quorvel - Load game");
    QVERIFY(refusal.icon == Icon::Critical && refusal.buttons == Buttons::Ok);
    QVERIFY2(refusal.text.contains(QDir::toNativeSeparators(path)), qPrintable(refusal.text));
    QCOMPARE(BoardPicture(game.form.game), QByteArray(Start));
    QCOMPARE(game.form.lblStatus->text(), "Level: 3 - Level 03  ");
    QCOMPARE(game.form.lblSteps->text(), "Steps: 0");
    QCOMPARE(game.form.levels[0].levelName, "Level 01  ");
    QVERIFY(game.form.mnuSaveGame->isEnabled());
    QVERIFY(!game.form.gameChanged);
    QVERIFY(game.platform.Done());
}

void tst_Commands::chooserAsTheCommandsOpenIt_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("files"); // a trailing "/" makes a folder
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("load-game") << "saved"
                               << QStringList {"b.SAV", "a.sav", "Z.sav", "c.sav.old", "sav",
                                      "dir.sav/"}
                               << "Load Game"
                               << "Load Game" << QStringList {"a.sav", "b.SAV", "Z.sav"};
    QTest::newRow("set-skin") << "skins"
                              << QStringList {"b.BMP", "A.gif", "c.jpeg", "d.JPG", "e.Dib", "f.wmf",
                                     "g.EMF", "h.png", "i.tif", "j.bmp.bak", "dir.gif/"}
                              << "Load Skin"
                              << "Set Skin"
                              << QStringList {"A.gif", "b.BMP", "c.jpeg", "d.JPG", "default.bmp",
                                     "e.Dib", "f.wmf", "g.EMF"};
}

void tst_Commands::chooserAsTheCommandsOpenIt()
{
    QFETCH(QString, folder);
    QFETCH(QStringList, files);
    QFETCH(QString, caption);
    QFETCH(QString, button);
    QFETCH(QStringList, rows);
    Game game;
    for (const QString &file : files) {
        if (file.endsWith('/'))
            QDir(game.folder.File(folder)).mkdir(file.chopped(1));
        else
            game.folder.Write(folder + "/" + file, "x");
    }
    const QByteArray settings = game.folder.Read("qvl.ini");
    QStringList seen;
    Dialogs dialogs {[&](QDialog *dialog) {
        auto *chooser = static_cast<frmFile *>(dialog);
        seen = Rows(chooser->filList);
        seen << chooser->cmdSet->text() << (chooser->cmdSet->isEnabled() ? "enabled" : "disabled")
             << QString::number(chooser->filList->selectedItems().size()) + " selected";
        QTest::mouseClick(chooser->cmdCancel, Qt::LeftButton);
    }};

    if (folder == "saved")
        game.form.mnuLoadGame_Click();
    else
        game.form.mnuSetSkin_Click();

    QCOMPARE(dialogs.captions, QStringList {caption});
    QCOMPARE(seen, rows + QStringList({button, "enabled", "0 selected"}));
    QCOMPARE(game.folder.Read("qvl.ini"), settings);
    QCOMPARE(Boxes(game.platform), QStringList());
}

void tst_Commands::chooserAnswers_data()
{
    QTest::addColumn<int>("bytFlag");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("how");
    QTest::addColumn<bool>("staysOpen"); // after the first thing the player does
    QTest::addColumn<QString>("answer"); // "<folder>" the program folder
    const auto row = [](const char *name, int flag, const char *folder, const char *how, bool open,
                         const char *answer) {
        QTest::newRow(name) << flag << folder << how << open << answer;
    };
    row("saved-game-mode-full-path", 1, "saved", "confirm", false, "<folder>/saved/Two.sav");
    row("skin-mode-bare-name", 2, "saved", "confirm", false, "Two.sav");
    row("any-other-mode-bare-name", 7, "saved", "confirm", false, "Two.sav");
    row("cancel-button", 1, "saved", "cancel", false, "");
    row("escape", 1, "saved", "escape", false, "");
    row("close-control", 2, "saved", "close", false, "");
    row("confirm-with-no-row-selected", 1, "saved", "confirm-unselected", true, "");
    row("double-click-only-selects", 1, "saved", "double-click", true, "");
    row("nothing-matches", 1, "skins", "confirm-unselected", true, "");
    row("missing-folder", 1, "nowhere", "confirm-unselected", true, "");
}

void tst_Commands::chooserAnswers()
{
    QFETCH(int, bytFlag);
    QFETCH(QString, folder);
    QFETCH(QString, how);
    QFETCH(bool, staysOpen);
    QFETCH(QString, answer);
    Game game;
    for (const char *file : {"One.sav", "Two.sav", "Other.txt"})
        game.folder.Write(QStringLiteral("saved/") + file, "x");
    game.form.absFilename = "earlier answer";
    frmFile chooser(game.form);
    chooser.bytFlag = uint8_t(bytFlag);
    chooser.SetFolder(game.folder.File(folder + "/"));
    chooser.SetPattern("*.sav");
    bool stayedOpen = false, confirmEnabled = false;
    int rows = 0;
    Dialogs dialogs {[&](QDialog *) {
        QListWidget *list = chooser.filList;
        rows = list->count();
        confirmEnabled = chooser.cmdSet->isEnabled();
        const auto two = list->findItems("Two.sav", Qt::MatchExactly);
        const QPoint at = two.isEmpty() ? QPoint() : list->visualItemRect(two.first()).center();
        if (how == "confirm" || how == "double-click")
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
        if (how == "confirm" || how == "confirm-unselected")
            chooser.cmdSet->click(); // a disabled button ignores even this
        else if (how == "cancel")
            QTest::mouseClick(chooser.cmdCancel, Qt::LeftButton);
        else if (how == "escape")
            QTest::keyClick(list, Qt::Key_Escape);
        else if (how == "close")
            chooser.close();
        else
            QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
        stayedOpen = chooser.isVisible();
        if (stayedOpen)
            QTest::mouseClick(chooser.cmdCancel, Qt::LeftButton);
    }};

    chooser.exec();

    QCOMPARE(stayedOpen, staysOpen);
    QCOMPARE(game.form.absFilename, answer.replace("<folder>", game.folder.path()));
    QCOMPARE(rows, folder == "saved" ? 2 : 0);
    QCOMPARE(confirmEnabled, rows > 0);
}

void tst_Commands::setSkinAppliesAtOnceAndRemembersIt_data()
{
    QTest::addColumn<QString>("pick"); // empty for Cancel
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("inverted"); // the blocks show the second skin
    QTest::addColumn<bool>("ends");
    const QByteArray before("default.bmp, as before\r\n");
    QTest::newRow("another-skin") << "second.bmp" << QByteArray("second.bmp\r\n") << true << false;
    QTest::newRow("the-current-skin-again")
        << "default.bmp" << QByteArray("default.bmp\r\n") << false << false;
    QTest::newRow("cancel") << "" << before << false << false;
    QTest::newRow("no-picture") << "broken.bmp" << before << false << true;
}

void tst_Commands::setSkinAppliesAtOnceAndRemembersIt()
{
    QFETCH(QString, pick);
    QFETCH(QByteArray, settings);
    QFETCH(bool, inverted);
    QFETCH(bool, ends);
    Game game;
    QImage second = KnownSkin();
    second.invertPixels();
    QVERIFY(second.save(game.folder.File("skins/second.bmp"), "BMP"));
    game.folder.Write("skins/broken.bmp", "this is no picture");
    // Any rewrite of the settings file would drop the tail of this line.
    game.folder.Write("qvl.ini", "default.bmp, as before\r\n");
    Answers(game.platform, ends ? "O" : "");
    Dialogs dialogs {
        pick.isEmpty() ? Act([](QDialog *dialog) { dialog->reject(); }) : PickFile(pick)};

    game.form.mnuSetSkin_Click();

    QCOMPARE(dialogs.captions, QStringList {"Load Skin"});
    QCOMPARE(game.folder.Read("qvl.ini"), settings);
    const QImage skin = inverted ? second : KnownSkin();
    QCOMPARE(PictureOf(game.form.imgPieces[0]), skin.copy(20, 20, 120, 120));
    QCOMPARE(PictureOf(game.form.imgPieces[3]), skin.copy(140, 200, 60, 120));
    QCOMPARE(PictureOf(game.form.imgPieces[9]), skin.copy(200, 140, 60, 60));
    QCOMPARE(PictureOf(game.form.imgTitle), skin.copy(280, 0, 90, 340));
    const QString error
        = "Quorvel - ERROR | An error has occurred while attempting to load picture \r\n"
        + QDir::toNativeSeparators(game.folder.File("skins/broken.bmp"))
        + "\r\nMake sure the picture exists and is of a correct format. | critical ok";
    QCOMPARE(Boxes(game.platform), ends ? QStringList {error} : QStringList {});
    QCOMPARE(game.form.Ended(), ends);
    QCOMPARE(game.form.isVisible(), !ends);
    QVERIFY(game.platform.Done());
}

QTEST_MAIN(tst_Commands)
#include "tst_Commands.moc"
