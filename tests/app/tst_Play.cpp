// Playing a level from the chooser to the congratulation, with real mouse
// events on the block images.
#include "app/ImageControl.h"
#include "dialogs/frmFile.h"
#include "dialogs/frmLevel.h"
#include "files/SavedGame.h"
#include "game/Solver.h"
#include "support/BoardText.h"
#include "support/MainWindow.h"
#include "support/ProgramFolder.h"
#include "support/ScriptedPlatform.h"
#include "support/WhenModal.h"

#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
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
        if (StartUp(form, platform, folder))
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

void Press(frmMain &form, int piece, Cell cell, Qt::MouseButton button = Qt::LeftButton)
{
    QWidget *image = form.imgPieces[piece];
    QTest::mousePress(image, button, Qt::NoModifier, CellCentreIn(*image, cell));
}

void MoveTo(frmMain &form, int piece, Cell cell)
{
    QWidget *image = form.imgPieces[piece];
    const QPoint at = CellCentreIn(*image, cell);
    QMouseEvent move(QEvent::MouseMove, at, image->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
        Qt::NoModifier);
    QApplication::sendEvent(image, &move);
}

void Release(frmMain &form, int piece, Cell cell, Qt::MouseButton button = Qt::LeftButton)
{
    QWidget *image = form.imgPieces[piece];
    QTest::mouseRelease(image, button, Qt::NoModifier, CellCentreIn(*image, cell));
}

} // namespace

class tst_Play : public QObject
{
    Q_OBJECT
private slots:
    void chooserListsEveryLevelAndAnswers_data();
    void chooserListsEveryLevelAndAnswers();
    void blockFollowsOnlyFreePathsAndOnlyTheLeftButton();
    void droppingCountsStepsAndRefreshesTheStatus();
    void bringingTheBigBlockToTheExitWinsUntilTheNextLevel();
    void onlyTheBigBlocksDropEndsTheGame();
    void winsAreMarkedBesideTheShippedLevelsUnchangedRows();
    void keysAndTheGameMenuMakeStepsLikeDrops();
    void hintsGlideOnAShortestWayAndTheStepLineCounts();
};

void tst_Play::chooserListsEveryLevelAndAnswers_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("answer");
    QTest::newRow("set-level") << "set" << 41;
    QTest::newRow("cancel-button") << "cancel" << -1;
    QTest::newRow("escape") << "escape" << -1;
    // Neither button is the default, so Return on a selected row chooses nothing.
    QTest::newRow("return-on-a-row-then-cancel") << "return" << -1;
    QTest::newRow("close-control") << "close" << -1;
    QTest::newRow("set-level-with-no-row-then-cancel") << "nothing" << -1;
}

void tst_Play::chooserListsEveryLevelAndAnswers()
{
    QFETCH(QString, how);
    QFETCH(int, answer);
    ProgramFolder folder;
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    form.newLevel = 7;
    QStringList rows;
    bool stayedOpen = false, fresh = false;
    QPoint offset;
    // Only looks and acts here: a failed check inside would leave the dialog open.
    WhenModal([&](QWidget *widget) {
        auto *chooser = qobject_cast<frmLevel *>(widget);
        if (!chooser) {
            widget->close();
            return;
        }
        offset = chooser->frameGeometry().topLeft() - form.frameGeometry().topLeft();
        fresh = chooser->lisLevel->selectedItems().isEmpty()
            && chooser->focusWidget() == chooser->lisLevel && !chooser->cmdSetLevel->isDefault()
            && !chooser->cmdCancel->isDefault();
        for (int i = 0; i < chooser->lisLevel->count(); ++i)
            rows << chooser->lisLevel->item(i)->text();
        if (how == "set" || how == "return")
            chooser->lisLevel->setCurrentRow(41);
        if (how == "return")
            QTest::keyClick(chooser->lisLevel, Qt::Key_Return);
        if (how == "set" || how == "nothing")
            QTest::mouseClick(chooser->cmdSetLevel, Qt::LeftButton);
        stayedOpen = chooser->isVisible() && form.newLevel == 7;
        if (how == "escape")
            QTest::keyClick(chooser, Qt::Key_Escape);
        else if (how == "close")
            chooser->close();
        else if (how != "set")
            QTest::mouseClick(chooser->cmdCancel, Qt::LeftButton);
    });
    form.mnuNewGame_Click();
    QCOMPARE(offset.x(), 65); // (408 - 277) = 131, halved: both carry the same frame
    QVERIFY(fresh);
    QCOMPARE(rows.size(), 70);
    QCOMPARE(rows.last(), QStringLiteral("Level 70 - Level 70  "));
    QCOMPARE(int(form.newLevel), answer);
    QCOMPARE(stayedOpen, how != "set");
    QCOMPARE(form.imgPieces[0]->isVisible(), answer >= 0);
    if (answer >= 0)
        QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 42 - Level 42  "));
}

void tst_Play::blockFollowsOnlyFreePathsAndOnlyTheLeftButton()
{
    Game game({"2003/2003/4115/46.5/8.79"});
    frmMain &form = game.form;
    const QByteArray board = BoardPicture(form.game);
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
    QCOMPARE(form.game.steps, 0);
    Release(form, 8, {1, 4});
    QCOMPARE(PointerShape(form), Qt::ArrowCursor);
    QCOMPARE(form.game.steps, 1);
    Release(form, 9, {3, 4}); // no drag held: nothing
    QCOMPARE(form.game.steps, 1);
}

void tst_Play::droppingCountsStepsAndRefreshesTheStatus()
{
    Game game({"2003/2003/4115/46.5/8.79"});
    frmMain &form = game.form;
    // Released on its start: nothing counted, nothing refreshed.
    form.lblSteps->setText("untouched");
    DragBlock(form, 8, {0, 4}, {{1, 4}, {0, 4}});
    QCOMPARE(form.lblSteps->text(), QStringLiteral("untouched"));
    QVERIFY(!form.gameChanged);
    // Released past a block: settles on the last accepted cell, one step.
    DragBlock(form, 8, {0, 4}, {{1, 4}, {3, 4}});
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/46.5/.879"));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    QVERIFY(form.gameChanged);
    // A diagonal release sends the block home, even after an accepted cell.
    DragBlock(form, 6, {1, 3}, {{2, 3}, {2, 2}});
    QCOMPARE(form.imgPieces[6]->pos(), QPoint(90, 210));
    // A blocked straight drop that falls back onto the start still marks
    // the game changed and refreshes the line, without a step.
    form.gameChanged = false;
    form.lblSteps->setText("untouched");
    DragBlock(form, 9, {3, 4}, {{3, 2}});
    QCOMPARE(form.game.steps, 1);
    QVERIFY(form.gameChanged);
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
}

void tst_Play::bringingTheBigBlockToTheExitWinsUntilTheNextLevel()
{
    Game game({NearlySolved, "2003/2003/4115/4675/8..9"});
    frmMain &form = game.form;
    bool boardHiddenDuringMessage = false;
    game.platform.OnMessage([&](const ScriptedPlatform::Call &) {
        boardHiddenDuringMessage = !form.imgPieces[0]->isVisible() && !form.imgExit->isVisible()
            && form.imgCong->isVisible();
    });
    game.platform.Reply(Answer::Ok);
    DragBlock(form, 0, {2, 2}, {{2, 3}}); // grabbed by its right half
    QCOMPARE(game.platform.Shown(), QStringList {Congratulations.arg(1)});
    QCOMPARE(game.platform.Calls().first().icon, Icon::Exclamation);
    QVERIFY(boardHiddenDuringMessage);
    QVERIFY(!form.mnuSaveGame->isEnabled() && !form.gameChanged);
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    // The next level hides the banner and shows the board again.
    ChooseLevel(form, 1);
    QVERIFY(
        !form.imgCong->isVisible() && form.imgPieces[0]->isVisible() && form.imgExit->isVisible());
    QVERIFY(form.mnuSaveGame->isEnabled() && !form.gameChanged);
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/4675/8..9"));
    QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 2 - Level 02  "));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
}

void tst_Play::onlyTheBigBlocksDropEndsTheGame()
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

// The shipped pack: a level played out from the chooser and a loaded game
// won are recorded, and the chooser marks them beside rows whose texts stay
// as they were, every name whole beside three-digit figures.
void tst_Play::winsAreMarkedBesideTheShippedLevelsUnchangedRows()
{
    ProgramFolder folder;
    QFile::remove(folder.File("QVL.ZHN"));
    QVERIFY(QFile::copy(QUORVEL_LEVEL_FILE, folder.File("QVL.ZHN")));
    QByteArray earlier = "[Best]\r\n";
    for (int level = 5; level <= 70; ++level)
        earlier += QByteArray::number(level) + "=999\r\n";
    folder.Write("qvl-player.ini", earlier + "[View]\r\nFewestStepsLeft=true\r\n");
    QDir(folder.path()).mkdir("saved");
    GameState nearlyWon; // level 3 after 40 steps, one from the exit
    nearlyWon.levelIndex = 2;
    nearlyWon.steps = 40;
    nearlyWon.SetUp(LayoutFromPicture(NearlySolved));
    folder.Write("saved/Near.sav", SerializeSavedGame(BuildSavedGame(nearlyWon, "Near      ")));
    ScriptedPlatform platform;
    frmMain form(platform, folder.path());
    QVERIFY(StartUp(form, platform, folder));
    ChooseLevel(form, 0);
    platform.Reply(Answer::Ok);
    const std::optional<Solution> way = Solve(form.game.EncodePositions());
    QVERIFY(way);
    for (const Move &move : way->moves)
        DragBlock(form, move.piece, move.from, {move.to});
    platform.Reply(Answer::Ok);
    WhenModal([](QWidget *widget) {
        auto *chooser = static_cast<frmFile *>(widget);
        chooser->filList->setCurrentRow(0);
        chooser->cmdSet->click();
    });
    form.mnuLoadGame_Click();
    DragBlock(form, 0, {1, 2}, {{1, 3}});
    QCOMPARE(platform.Shown(), QStringList({Congratulations.arg(10), Congratulations.arg(41)}));

    QStringList rows;
    QList<QVariant> fewest, best;
    QList<int> overflowing;
    WhenModal([&](QWidget *widget) {
        auto *chooser = static_cast<frmLevel *>(widget);
        for (int i = 0; i < chooser->lisLevel->count(); ++i) {
            const QListWidgetItem *item = chooser->lisLevel->item(i);
            rows << item->text();
            fewest << item->data(frmLevel::FewestStepsRole);
            best << item->data(frmLevel::BestRole);
            if (!chooser->RowFits(i))
                overflowing << i + 1;
        }
        chooser->cmdCancel->click();
    });
    form.mnuNewGame_Click();
    QCOMPARE(rows.size(), 70);
    // The names and step counts as data/levels.txt gives them.
    QCOMPARE(rows.first(), "Level 1 - First Step");
    QCOMPARE(rows.last(), "Level 70 - Sky Summit");
    QCOMPARE(fewest.first(), QVariant(10));
    QCOMPARE(fewest.last(), QVariant(101));
    QCOMPARE(best.mid(0, 5), QList<QVariant>({10, {}, 41, {}, 999}));
    QCOMPARE(overflowing, QList<int>());
    PlayerProgress kept;
    QVERIFY(!ReadPlayerFile(folder.File("qvl-player.ini"), kept));
    QVERIFY(kept.fewestStepsLeft);
}

void tst_Play::keysAndTheGameMenuMakeStepsLikeDrops()
{
    Game game({"2003/2003/4115/46.5/8.79", NearlySolved});
    frmMain &form = game.form;
    const auto menu = [&form] {
        return QString("%1%2%3%4")
            .arg(form.mnuUndo->isEnabled())
            .arg(form.mnuRedo->isEnabled())
            .arg(form.mnuRestart->isEnabled())
            .arg(form.mnuHint->isEnabled());
    };
    QCOMPARE(menu(), "0001");
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
    // A press selects too; an arrow is a one-cell drop.
    DragBlock(form, 8, {0, 4}, {});
    QCOMPARE(form.Selected(), int16_t(8));
    QVERIFY(!form.gameChanged);
    QTest::keyClick(&form, Qt::Key_Right);
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/46.5/.879"));
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    QVERIFY(form.gameChanged);
    QCOMPARE(menu(), "1011");
    DragBlock(form, 4, {0, 3}, {{0, 4}});
    form.mnuRestart->trigger();
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/46.5/8.79"));
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(30, 270));
    QCOMPARE(menu(), "0101");
    form.mnuRedo->trigger();
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/46.5/.879"));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    QCOMPARE(menu(), "1111");
    form.mnuUndo->trigger();
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
    // The big block brought to the exit by a key wins, and the menu rests.
    game.platform.Reply(Answer::No); // to saving the changed game
    ChooseLevel(form, 1);
    QSignalSpy won(&form, &frmMain::GameWon);
    game.platform.Reply(Answer::Ok);
    QTest::mouseClick(form.imgPieces[0], Qt::LeftButton);
    QTest::keyClick(&form, Qt::Key_Down);
    QCOMPARE(game.platform.Shown().last(), Congratulations.arg(1));
    QCOMPARE(won.size(), 1);
    QCOMPARE(won.first(), (QVariantList {QVariant::fromValue(int16_t(1)), QVariant(1)}));
    QCOMPARE(menu(), "0000");
}

void tst_Play::hintsGlideOnAShortestWayAndTheStepLineCounts()
{
    // The second level: only the tall block 4 can ever move, right and back.
    Game game({"2003/2003/4115/4675/8..9", "2311/234./654./7500/8900", NearlySolved});
    frmMain &form = game.form;
    QSignalSpy toggled(&form, &frmMain::FewestStepsLeftChanged);
    form.mnuFewestSteps->trigger();
    QCOMPARE(toggled.size(), 1);
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

QTEST_MAIN(tst_Play)
#include "tst_Play.moc"
