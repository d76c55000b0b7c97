// The commands as the player meets them: the three choosers, saving and its
// questions, the offer to save before a game is left, and the desktop's own
// boxes. The game is installed: its data and the player's files live in
// folders of their own.
#include "app/ImageControl.h"
#include "platform/QtPlatform.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"
#include "support/WhenModal.h"

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

const char *const Played = "2003/2003/4115/4.75/86.9";

// Queues answers by letter: O ok, Y yes, N no, C cancel.
void Answers(ScriptedPlatform &platform, const QString &letters)
{
    for (const QChar letter : letters)
        platform.Reply(Answer(QString("OYNC").indexOf(letter)));
}

// Started on a fresh install, every level "2003/2003/4115/4675/8..9".
struct Game
{
    QString Player(const QString &relative) const { return home.File("q/" + relative); }
    bool Put(const QString &relative, const QByteArray &bytes) const
    {
        return home.Write("q/" + relative, bytes);
    }
    QByteArray Read(const QString &relative) const { return home.Read("q/" + relative); }
    ScriptedPlatform platform;
    ProgramFolder shipped, home;
    frmMain form {platform, ProgramFolders(shipped.path(), home.File("q"))};
    bool started = StartUp(form, platform);
};

} // namespace

class tst_Commands : public QObject
{
    Q_OBJECT
private slots:
    void choosersTakeOnlyTheirConfirmButton_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("how"); // the target row is picked first, but for "nothing"
        QTest::addColumn<QString>("target");
        // Title | confirm button | offset from the main window | where Tab from
        // the list goes | the rows, the last one alone when there are many.
        QTest::addColumn<QString>("dialog");
        // The status line | the settings file | the skin shown | Save Game | the board.
        QTest::addColumn<QString>("after");
        const QString untouched
            = " |  | default.bmp, as before\r\n | known |  | 0000/0000/0000/0000/0000";
        const struct
        {
            const char *command, *target, *dialog, *after;
        } choosers[] = {
            {"level", "Level 42 - Level 42  ",
                "Choose Level | &Set Level | 65 | &Set Level | 70: Level 70 - Level 70  ",
                "Level: 42 - Level 42   | Steps: 0 | default.bmp, as before\r\n | known | save | "
                "2003/2003/4115/4675/8..9"},
            {"load", "Resumed.sav", "Load Game | Load Game | 31 | Cancel | 1: Resumed.sav",
                "Level: 2 - Saved Two  | Steps: 25 | default.bmp, as before\r\n | known | save | "
                "2003/2003/4115/4.75/86.9"},
            {"skin", "second.bmp",
                "Load Skin | Set Skin | 31 | Cancel | 10: A.gif, b.BMP, c.jpeg, d.JPG, "
                "default.bmp, "
                "e.Dib, f.wmf, g.EMF, second.bmp, \u591C.bmp",
                " |  | second.bmp\r\n | mirrored |  | 0000/0000/0000/0000/0000"},
        };
        // Neither button is the default: Return on a row chooses nothing.
        for (const auto &chooser : choosers)
            for (const char *how : {"set", "cancel", "escape", "close", "return", "nothing"})
                QTest::addRow("%s-%s", chooser.command, how)
                    << chooser.command << how << chooser.target << chooser.dialog
                    << (how == QString("set") ? chooser.after : untouched);
        // A name the settings file cannot hold is refused before anything changes.
        QTest::newRow("skin-outside-the-code-page")
            << "skin"
            << "set"
            << "\u591C.bmp" << choosers[2].dialog << untouched;
    }

    void choosersTakeOnlyTheirConfirmButton()
    {
        QFETCH(QString, command);
        QFETCH(QString, how);
        QFETCH(QString, target);
        QFETCH(QString, dialog);
        QFETCH(QString, after);
        Game game;
        QVERIFY(game.started);
        QVERIFY(game.Put("saved/Resumed.sav", SavedGameBytes(25, 1, "Saved Two ", Played)));
        // The player's own skin of a shipped name is the one listed and applied.
        for (const char *name : {"b.BMP", "A.gif", "c.jpeg", "d.JPG", "e.Dib", "f.wmf", "g.EMF",
                 "h.png", "i.tif", "j.bmp.bak", "second.bmp"})
            QVERIFY(game.shipped.Write(QStringLiteral("skins/") + name, "no picture"));
        for (const QString &name : {QString("second.bmp"), QString("\u591C.bmp")})
            QVERIFY(KnownSkin().mirrored().save(game.Player("skins/" + name), "BMP"));
        // Any rewrite of the settings file would drop the tail of this line.
        QVERIFY(game.Put("qvl.ini", "default.bmp, as before\r\n"));
        const bool refused = target.startsWith(QChar(0x591C));
        Answers(game.platform, refused ? "O" : "");
        QString seen;
        bool fresh = false, stayed = false;
        WhenModal([&](QWidget *widget) {
            auto *list = widget->findChild<QListWidget *>();
            const QList<QPushButton *> buttons = widget->findChildren<QPushButton *>();
            fresh = list->selectedItems().isEmpty() && widget->focusWidget() == list
                && !buttons[0]->isDefault() && !buttons[1]->isDefault();
            QTest::keyClick(list, Qt::Key_Tab);
            QStringList rows;
            for (int i = 0; i < list->count(); ++i)
                rows << list->item(i)->text();
            seen = QStringList {widget->windowTitle(), buttons[0]->text(),
                QString::number(
                    widget->frameGeometry().x() - widget->parentWidget()->frameGeometry().x()),
                qobject_cast<QPushButton *>(widget->focusWidget())->text(),
                QString::number(rows.size()) + ": "
                    + (rows.size() > 10 ? rows.last() : rows.join(", "))}
                       .join(" | ");
            list->setFocus();
            if (how != "nothing")
                list->setCurrentItem(list->findItems(target, Qt::MatchExactly).value(0));
            QTest::keyClick(list, how == "escape" ? Qt::Key_Escape : Qt::Key_Return);
            if (how == "close")
                widget->close();
            else if (how != "escape" && how != "return")
                QTest::mouseClick(how == "cancel" ? buttons[1] : buttons[0], Qt::LeftButton);
            stayed = widget->isVisible();
            if (stayed)
                QTest::mouseClick(buttons[1], Qt::LeftButton);
        });
        command == "level"      ? game.form.mnuNewGame_Click()
            : command == "load" ? game.form.mnuLoadGame_Click()
                                : game.form.mnuSetSkin_Click();

        QVERIFY(fresh);
        QCOMPARE(seen, dialog);
        QCOMPARE(stayed, how == "return" || how == "nothing");
        QCOMPARE(game.form.lblStatus->text() + " | " + game.form.lblSteps->text() + " | "
                + game.Read("qvl.ini") + " | "
                + (game.form.imgPieces[0]->pixmap().toImage().convertToFormat(QImage::Format_RGB32)
                            == KnownSkin().copy(20, 20, 120, 120)
                        ? "known"
                        : "mirrored")
                + " | " + (game.form.mnuSaveGame->isEnabled() ? "save" : "") + " | "
                + BoardPicture(game.form.game),
            after);
        QCOMPARE(game.platform.Shown().join("").section("\r\n", 0, 0),
            refused
                ? "Quorvel - Set Skin | The skin \u591C.bmp cannot be set: its name would be lost "
                  "when the game starts again."
                : "");
        // The installed data is only read, the help page there too.
        QCOMPARE(QDir(game.shipped.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            (QStringList {"QVL.ZHN", "skins"}));
        QVERIFY(game.platform.Done());
        game.form.mnuHTP_Click();
        QCOMPARE(game.platform.Opened(), QStringList {game.shipped.File("qvl.html")});
    }

    void saveAsksUntilTheNameIsUsable_data()
    {
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<QString>("answers");
        QTest::addColumn<QStringList>("boxes"); // <path> the file of the last name typed
        QTest::addColumn<QString>("saved"); // the file's name, empty when nothing is written
        const QString proceed
            = "Quorvel - Saving | Are you sure you want to proceed without saving?";
        const QString overwrite = "Quorvel - Saving | File already exists. Overwrite it?";
        // Spaces, punctuation the file system takes and the code page's letters up to þ are fine.
        const QString x32 = QString("Caf\u00E9 \u20AC\u00FE <a|b> & (c) - ").leftJustified(32, 'x');
        const auto row = [](const char *name, const QStringList &typed, const char *answers,
                             const QStringList &boxes, const QString &saved) {
            QTest::newRow(name) << typed << answers << boxes << saved;
        };
        row("cancel-then-give-up", {""}, "Y", {proceed}, "");
        row("cancel-then-ask-again", {"", "Mine"}, "N", {proceed}, "Mine");
        row("32-characters", {x32}, "", {}, x32);
        row("33-characters", {x32 + "x", "ab"}, "O",
            {"Quorvel - Saving | Name too long.\r\nPlease limit the name to 32 characters."}, "ab");
        row("forbidden-character", {"a.b", "ab"}, "O",
            {"Quorvel - Saving | Illegal characters found in the name."}, "ab");
        row("existing-no-then-yes", {"Old", "Old"}, "NY", {overwrite, overwrite}, "Old");
        row("write-refused", {"Dir"}, "O",
            {"Quorvel - Saving Error | An error occurred while attempting saving game "
             "data\r\n<path>"
             "\r\nGame not saved."},
            "");
    }

    void saveAsksUntilTheNameIsUsable()
    {
        QFETCH(QStringList, typed);
        QFETCH(QString, answers);
        QFETCH(QStringList, boxes);
        QFETCH(QString, saved);
        Game game;
        QVERIFY(game.started);
        QVERIFY(game.Put("saved/Old.sav", QByteArray(40, '\xEE'))); // from elsewhere
        QVERIFY(QDir(game.Player("saved")).mkdir("Dir.sav")); // no file can be written there
        game.form.game.levelIndex = 4;
        game.form.game.steps = 1;
        game.form.game.SetUp(LayoutFromPicture(Played));
        game.form.gameChanged = true;
        for (const QString &text : typed)
            game.platform.Type(text);
        Answers(game.platform, answers);

        game.form.mnuSaveGame_Click();

        const QString path = QDir::toNativeSeparators(game.Player("saved/" + typed.last()));
        QCOMPARE(game.platform.Shown(), boxes.replaceInStrings("<path>", path + ".sav"));
        // Each prompt offers the name refused before it.
        QCOMPARE(game.platform.Asked().last(),
            "Quorvel - Saving Game | What is the name of the game? | "
                + typed.value(typed.size() - 2));
        const QByteArray written = SavedGameBytes(1, 4, "Level 05  ", Played);
        // Written over from the start, never cut short.
        QCOMPARE(game.Read("saved/Old.sav"),
            saved == "Old" ? written + QByteArray(4, '\xEE') : QByteArray(40, '\xEE'));
        if (!saved.isEmpty() && saved != "Old")
            QCOMPARE(game.Read("saved/" + saved + ".sav"), written);
        QCOMPARE(game.form.gameChanged, saved.isEmpty());
        QVERIFY(game.platform.Done());
    }

    void leavingAChangedGameOffersToSave_data()
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

    void leavingAChangedGameOffersToSave()
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
        QString opened;
        // Should no dialog open, the check goes with the window.
        QTimer::singleShot(0, &game.form, [&opened] {
            if (QWidget *dialog = QApplication::activeModalWidget()) {
                opened = dialog->windowTitle();
                dialog->close();
            }
        });

        command == "New Game"        ? game.form.mnuNewGame_Click()
            : command == "Load game" ? game.form.mnuLoadGame_Click()
                                     : game.form.mnuExit_Click();

        // The offer to save comes only for a changed game, titled for its command.
        QCOMPARE(game.platform.Shown().join("").section(" | ", 0, 0),
            answer.isEmpty() ? "" : "Quorvel - " + command);
        QCOMPARE(game.form.isVisible() ? opened : "closed", after);
        QCOMPARE(game.form.gameChanged, changedAfter);
        QCOMPARE(QFile::exists(game.Player("saved/Kept.sav")), answer == "Y");
        QVERIFY(game.platform.Done());
    }

    void desktopBoxesTakeEscapeAsTheWayOut_data()
    {
        QTest::addColumn<int>("buttons"); // Ok, YesNo, YesNoCancel
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("answer"); // Ok, Yes, No, Cancel
        QTest::newRow("yes-no-cancel-escape") << 2 << "escape" << 3;
        QTest::newRow("yes-no-cancel-close-control") << 2 << "close" << 3;
        QTest::newRow("yes-no-cancel-yes") << 2 << "yes" << 1;
        QTest::newRow("yes-no-escape") << 1 << "escape" << 2;
        QTest::newRow("ok-escape") << 0 << "escape" << 0;
    }

    void desktopBoxesTakeEscapeAsTheWayOut()
    {
        QFETCH(int, buttons);
        QFETCH(QString, how);
        QFETCH(int, answer);
        QtPlatform desktop;
        QString text;
        WhenModal([&](QWidget *widget) {
            auto *box = qobject_cast<QMessageBox *>(widget);
            text = box->text() + (box->icon() == QMessageBox::Warning ? " (warning)" : "");
            how == "escape"      ? QTest::keyClick(box, Qt::Key_Escape)
                : how == "close" ? void(box->close())
                                 : box->button(QMessageBox::Yes)->click();
        });
        QCOMPARE(
            int(desktop.MsgBox(nullptr, "one\r\ntwo", Buttons(buttons), Icon::Exclamation, "T")),
            answer);
        QCOMPARE(text, "one\ntwo (warning)");
        // The input box offers its text; Escape gives nothing, Return the text.
        WhenModal([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(desktop.InputBox(nullptr, "Name?", "T", "offered"), QString());
        WhenModal([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); });
        QCOMPARE(desktop.InputBox(nullptr, "Name?", "T", "offered"), "offered");
    }
};

QTEST_MAIN(tst_Commands)
#include "tst_Commands.moc"
