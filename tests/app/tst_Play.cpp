// Playing a level from the chooser to the congratulation, with real mouse
// events on the block images.
#include "app/ImageControl.h"
#include "dialogs/frmLevel.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"
#include "support/WhenModal.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace {

const char *NearlySolved = "2113/2673/4005/4005/8..9";
const QString Congratulations = QStringLiteral(
    "Quorvel - Congratulations | Congratulations!! You finished the game in %1 steps.");

// A started program with the first level of its folder on the board.
struct Game
{
    explicit Game(std::initializer_list<const char *> pictures)
        : folder(pictures)
        , form(platform, folder.path())
    {
        if (StartUp(form, platform))
            ChooseLevel(form, 0);
    }
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form;
};

Qt::CursorShape PointerShape(const frmMain &form)
{
    return form.testAttribute(Qt::WA_SetCursor) ? form.cursor().shape() : Qt::ArrowCursor;
}

} // namespace

class tst_Play : public QObject
{
    Q_OBJECT
private slots:
    void blockFollowsOnlyFreePathsAndOnlyTheLeftButton()
    {
        Game game({"2003/2003/4115/46.5/8.79"});
        frmMain &form = game.form;
        const QByteArray board = BoardPicture(form.game);
        DragBlock(form, 8, {0, 4}, {{1, 4}, {0, 4}}); // back on its start: no step
        QVERIFY(!form.gameChanged);
        Press(form, 8, {0, 4}, Qt::RightButton);
        QCOMPARE(PointerShape(form), Qt::ArrowCursor);
        MoveTo(form, 8, {1, 4});
        QCOMPARE(form.imgPieces[8]->pos(), QPoint(30, 270));
        Press(form, 8, {0, 4});
        QCOMPARE(PointerShape(form), Qt::SizeAllCursor);
        MoveTo(form, 8, {1, 4}); // free
        QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
        MoveTo(form, 8, {2, 4}); // taken by block 7
        QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
        QCOMPARE(PointerShape(form), Qt::ForbiddenCursor);
        QCOMPARE(BoardPicture(form.game), board);
        // A right release changes nothing; the left one drops.
        Release(form, 8, {1, 4}, Qt::RightButton);
        QCOMPARE(PointerShape(form), Qt::ForbiddenCursor);
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
        Release(form, 8, {1, 4});
        QCOMPARE(PointerShape(form), Qt::ArrowCursor);
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
        QVERIFY(form.gameChanged);
        Release(form, 9, {3, 4}); // no drag held: nothing
        // The second press of a double click takes hold like the first.
        QWidget *image = form.imgPieces[8];
        const QPoint at = CellCentreIn(*image, {1, 4});
        QMouseEvent twice(QEvent::MouseButtonDblClick, at, image->mapToGlobal(at), Qt::LeftButton,
            Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(image, &twice);
        MoveTo(form, 8, {0, 4});
        Release(form, 8, {0, 4});
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 2"));
    }

    void bringingTheBigBlockToTheExitWinsUntilTheNextGame_data()
    {
        QTest::addColumn<bool>("load"); // the next game loaded, or chosen from the levels
        QTest::newRow("next-level") << false;
        QTest::newRow("loaded-game") << true;
    }

    void bringingTheBigBlockToTheExitWinsUntilTheNextGame()
    {
        QFETCH(bool, load);
        Game game({NearlySolved, "2003/2003/4115/4675/8..9"});
        frmMain &form = game.form;
        // Level 2 after 7 steps, saved earlier.
        QVERIFY(game.folder.Write(
            "saved/Two.sav", SavedGameBytes(7, 1, "Level 02  ", "2003/2003/4115/4.75/86.9")));
        bool bannerBehindTheBox = false;
        game.platform.OnMessage([&](const ScriptedPlatform::Call &call) {
            bannerBehindTheBox = !form.imgPieces[0]->isVisible() && !form.imgExit->isVisible()
                && form.imgCong->isVisible() && call.icon == Icon::Exclamation;
        });
        game.platform.Reply(Answer::Ok);
        DragBlock(form, 0, {2, 2}, {{2, 3}}); // grabbed by its right half
        QCOMPARE(game.platform.Shown(), QStringList {Congratulations.arg(1)});
        QVERIFY(bannerBehindTheBox);
        QVERIFY(!form.mnuSaveGame->isEnabled() && !form.mnuHint->isEnabled() && !form.gameChanged);
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
        QVERIFY(game.folder.Read("qvl-player.ini").startsWith("[Best]\r\n1=1\r\n"));
        // The next game hides the banner and shows the board again.
        if (load) {
            WhenModal([](QWidget *chooser) {
                chooser->findChild<QListWidget *>()->setCurrentRow(0);
                QTest::mouseClick(chooser->findChild<QPushButton *>(), Qt::LeftButton);
            });
            form.mnuLoadGame_Click();
        } else {
            ChooseLevel(form, 1);
        }
        QVERIFY(!form.imgCong->isVisible() && form.imgPieces[0]->isVisible()
            && form.imgExit->isVisible());
        QVERIFY(form.mnuSaveGame->isEnabled() && !form.gameChanged);
        QCOMPARE(BoardPicture(form.game),
            load ? "2003/2003/4115/4.75/86.9" : QByteArray("2003/2003/4115/4675/8..9"));
        QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 2 - Level 02  "));
        QCOMPARE(form.lblSteps->text(), load ? "Steps: 7" : QStringLiteral("Steps: 0"));
    }

    void onlyTheBigBlocksDropEndsTheGame()
    {
        // A level that starts solved: other blocks may move freely; a press and
        // release on the big block ends it with the count as it stands.
        Game game({"2345/2345/6117/8009/.00."});
        DragBlock(game.form, 8, {0, 3}, {{0, 4}});
        QVERIFY(game.platform.Shown().isEmpty());
        game.platform.Reply(Answer::Ok);
        DragBlock(game.form, 0, {1, 3}, {});
        QCOMPARE(game.platform.Shown(), QStringList {Congratulations.arg(1)});
    }

    // The chooser marks the player's bests beside each level's fewest steps, and
    // every name of the shipped pack stays whole beside three-digit figures.
    void bestsAreMarkedBesideTheShippedLevelsRows()
    {
        ProgramFolder folder;
        QFile::remove(folder.File("QVL.ZHN"));
        QVERIFY(QFile::copy(QUORVEL_LEVEL_FILE, folder.File("QVL.ZHN")));
        QByteArray bests = "[Best]\r\n";
        for (int level = 2; level <= 70; ++level)
            bests += QByteArray::number(level) + "=999\r\n";
        QVERIFY(folder.Write("qvl-player.ini", bests));
        ScriptedPlatform platform;
        frmMain form(platform, folder.path());
        QVERIFY(StartUp(form, platform));

        QStringList rows; // text, fewest steps, best of the first two and the last
        QList<int> overflowing;
        WhenModal([&](QWidget *widget) {
            auto *chooser = static_cast<frmLevel *>(widget);
            for (int i = 0; i < chooser->lisLevel->count(); ++i) {
                const QListWidgetItem *item = chooser->lisLevel->item(i);
                if (i < 2 || i == 69)
                    rows << item->text() + " | " + item->data(frmLevel::FewestStepsRole).toString()
                            + " | " + item->data(frmLevel::BestRole).toString();
                if (!chooser->RowFits(i))
                    overflowing << i + 1;
            }
            chooser->cmdCancel->click();
        });
        form.mnuNewGame_Click();
        // The names and step counts as data/levels.txt gives them.
        QCOMPARE(rows,
            QStringList({"Level 1 - First Step | 10 | ", "Level 2 - Open Gates | 11 | 999",
                "Level 70 - Sky Summit | 101 | 999"}));
        QCOMPARE(overflowing, QList<int>());
    }

    void keysAndTheGameMenuMakeStepsLikeDrops()
    {
        Game game({"2003/2003/4115/46.5/8.79"});
        frmMain &form = game.form;
        // The board, the step line and Undo, Redo, Restart Level and Hint enabled.
        const auto state = [&form] {
            return BoardPicture(form.game) + " | " + form.lblSteps->text() + " | "
                + QString("%1%2%3%4")
                      .arg(form.mnuUndo->isEnabled())
                      .arg(form.mnuRedo->isEnabled())
                      .arg(form.mnuRestart->isEnabled())
                      .arg(form.mnuHint->isEnabled());
        };
        QCOMPARE(state(), "2003/2003/4115/46.5/8.79 | Steps: 0 | 0001");
        // Tab walks the blocks in reading order, the frame goes along.
        QTest::keyClick(&form, Qt::Key_Tab);
        QTest::keyClick(&form, Qt::Key_Tab);
        QCOMPARE(form.Selected(), int16_t(0));
        QTest::keyClick(&form, Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(form.Selected(), int16_t(2));
        QVERIFY(form.imgPieces[2]->Selected() && !form.imgPieces[0]->Selected());
        QTest::keyClick(&form, Qt::Key_Escape);
        QCOMPARE(form.Selected(), int16_t(-1));
        QVERIFY(!form.imgPieces[2]->Selected());
        // A press selects too; an arrow is a one-cell drop, once the block is let go.
        Press(form, 8, {0, 4});
        QTest::keyClick(&form, Qt::Key_Right);
        Release(form, 8, {0, 4});
        QCOMPARE(form.Selected(), int16_t(8));
        QVERIFY(!form.gameChanged);
        QTest::keyClick(&form, Qt::Key_Right);
        QCOMPARE(state(), "2003/2003/4115/46.5/.879 | Steps: 1 | 1011");
        QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
        QVERIFY(form.gameChanged);
        DragBlock(form, 4, {0, 3}, {{0, 4}});
        form.mnuRestart->trigger();
        QCOMPARE(state(), "2003/2003/4115/46.5/8.79 | Steps: 0 | 0101");
        QCOMPARE(form.imgPieces[8]->pos(), QPoint(30, 270));
        form.mnuRedo->trigger();
        QCOMPARE(state(), "2003/2003/4115/46.5/.879 | Steps: 1 | 1111");
        form.mnuUndo->trigger();
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
    }

    void hintsGlideOnAShortestWayAndTheStepLineCounts()
    {
        // The second level: only the tall block 4 can ever move, right and back.
        Game game({"2003/2003/4115/4675/8..9", "2311/234./654./7500/8900", NearlySolved});
        frmMain &form = game.form;
        form.mnuFewestSteps->trigger();
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0 - fewest left: 90"));
        form.mnuHint->trigger();
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1 - fewest left: 89"));
        form.mnuUndo->trigger(); // lands the gliding block first
        QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/4675/8..9"));
        game.platform.Reply(Answer::No); // to saving the changed game
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0 - fewest left: 90"));
        ChooseLevel(form, 1);
        QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0 - no way out"));
        form.mnuHint->trigger();
        QCOMPARE(game.platform.Shown().last(),
            QStringLiteral("Quorvel - Hint | There is no way out from this position."));
        QCOMPARE(form.game.steps, 0);
        // A hint that reaches the exit wins once its block has landed.
        ChooseLevel(form, 2);
        game.platform.Reply(Answer::Ok);
        form.mnuHint->trigger();
        QCOMPARE(form.imgPieces[0]->pos(), QPoint(90, 150));
        QTRY_COMPARE(form.imgPieces[0]->pos(), QPoint(90, 210));
        QTRY_COMPARE(game.platform.Shown().size(), 3);
        QCOMPARE(game.platform.Shown().last(), Congratulations.arg(1));
    }
};

QTEST_MAIN(tst_Play)
#include "tst_Play.moc"
