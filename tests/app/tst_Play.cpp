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

struct Game
{
    explicit Game(std::initializer_list<const char *> pictures = {"2003/2003/4115/4675/8..9"},
        float unitsPerPixel = 1)
        : folder(pictures)
    {
        platform.metrics.unitsPerPixelX = platform.metrics.unitsPerPixelY = unitsPerPixel;
    }
    ProgramFolder folder;
    ScriptedPlatform platform;
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

// The widgets Tab visits, in order, starting with the first one.
QList<QWidget *> TabChain(QWidget &window)
{
    QList<QWidget *> chain;
    for (QWidget *w = window.nextInFocusChain(); w != &window; w = w->nextInFocusChain())
        if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(&window))
            chain << w;
    return chain;
}

} // namespace

class tst_Play : public QObject
{
    Q_OBJECT
private slots:
    void chooserListsEveryLevelAndAnswers_data();
    void chooserListsEveryLevelAndAnswers();
    void choosingALevelSetsItUpAfterAWin();
    void blockFollowsOnlyAlongFreePaths();
    void droppingCountsStepsAndRefreshesTheStatus();
    void onlyTheLeftButtonDrags();
    void bringingTheBigBlockToTheExitWins();
    void onlyTheBigBlocksDropEndsTheGame();
};

void tst_Play::chooserListsEveryLevelAndAnswers_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("answer");
    QTest::newRow("set-level") << "set" << 41;
    QTest::newRow("cancel-button") << "cancel" << -1;
    QTest::newRow("escape") << "escape" << -1;
    QTest::newRow("close-control") << "close" << -1;
    QTest::newRow("set-level-with-no-row-then-cancel") << "nothing" << -1;
}

void tst_Play::chooserListsEveryLevelAndAnswers()
{
    QFETCH(QString, how);
    QFETCH(int, answer);
    Game game;
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    form.newLevel = 7;
    QStringList rows;
    bool stayedOpen = false;
    QString title;
    QSize size;
    bool noSelection = false, listHasFocus = false, tabOrder = false;
    QPoint offset;
    // Only looks and acts here: a failed check inside would leave the dialog open.
    WhenModal([&](QWidget *widget) {
        auto *chooser = qobject_cast<frmLevel *>(widget);
        if (!chooser) {
            widget->close();
            return;
        }
        title = chooser->windowTitle();
        offset = chooser->frameGeometry().topLeft() - form.frameGeometry().topLeft();
        size = chooser->size();
        noSelection = chooser->lisLevel->selectedItems().isEmpty();
        listHasFocus = chooser->focusWidget() == chooser->lisLevel;
        tabOrder = TabChain(*chooser)
            == QList<QWidget *> {chooser->lisLevel, chooser->cmdSetLevel, chooser->cmdCancel};
        for (int i = 0; i < chooser->lisLevel->count(); ++i)
            rows << chooser->lisLevel->item(i)->text();
        if (how == "set") {
            chooser->lisLevel->setCurrentRow(41);
            QTest::mouseClick(chooser->cmdSetLevel, Qt::LeftButton);
        } else if (how == "cancel") {
            QTest::mouseClick(chooser->cmdCancel, Qt::LeftButton);
        } else if (how == "escape") {
            QTest::keyClick(chooser, Qt::Key_Escape);
        } else if (how == "close") {
            chooser->close();
        } else {
            QTest::mouseClick(chooser->cmdSetLevel, Qt::LeftButton);
            stayedOpen = chooser->isVisible() && form.newLevel == 7;
            QTest::mouseClick(chooser->cmdCancel, Qt::LeftButton);
        }
    });
    form.mnuNewGame_Click();
    QCOMPARE(title, QStringLiteral("Choose Level"));
    QCOMPARE(size, QSize(277, 234));
    QCOMPARE(offset.x(), 65); // (408 - 277) = 131, halved: both carry the same frame
    QVERIFY(noSelection);
    QVERIFY(listHasFocus);
    QVERIFY(tabOrder);
    QCOMPARE(rows.size(), 70);
    QCOMPARE(rows.first(), QStringLiteral("Level 1 - Level 01  "));
    QCOMPARE(rows.last(), QStringLiteral("Level 70 - Level 70  "));
    QCOMPARE(int(form.newLevel), answer);
    if (how == "nothing")
        QVERIFY(stayedOpen);
    QCOMPARE(form.imgPieces[0]->isVisible(), answer >= 0);
    if (answer >= 0)
        QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 42 - Level 42  "));
    QVERIFY(game.platform.Done());
}

void tst_Play::choosingALevelSetsItUpAfterAWin()
{
    Game game({NearlySolved, "2003/2003/4115/4675/8..9"});
    game.platform.Reply(Answer::Ok);
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    DragBlock(form, 0, {1, 2}, {{1, 3}});
    QVERIFY(form.imgCong->isVisible());
    ChooseLevel(form, 1);
    QVERIFY(!form.imgCong->isVisible());
    QVERIFY(form.imgPieces[0]->isVisible() && form.imgExit->isVisible());
    QVERIFY(form.mnuSaveGame->isEnabled());
    QVERIFY(!form.gameChanged);
    QCOMPARE(form.game.steps, 0);
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/4675/8..9"));
    QCOMPARE(form.lblStatus->text(), QStringLiteral("Level: 2 - Level 02  "));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 0"));
}

void tst_Play::blockFollowsOnlyAlongFreePaths()
{
    Game game({"2003/2003/4115/46.5/8.79"});
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    const QByteArray board = BoardPicture(form.game);
    Press(form, 8, {0, 4});
    QCOMPARE(PointerShape(form), Qt::SizeAllCursor);
    MoveTo(form, 8, {1, 4}); // free
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
    QCOMPARE(PointerShape(form), Qt::SizeAllCursor);
    MoveTo(form, 8, {2, 4}); // taken by block 7
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
    QCOMPARE(PointerShape(form), Qt::ForbiddenCursor);
    MoveTo(form, 8, {1, 4}); // straight back into the last accepted cell: nothing at all
    QCOMPARE(PointerShape(form), Qt::ForbiddenCursor);
    MoveTo(form, 8, {1, 3}); // diagonal from the start
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
    QCOMPARE(PointerShape(form), Qt::ForbiddenCursor);
    MoveTo(form, 8, {-3, 4}); // past the edge: pinned at the start
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(30, 270));
    QCOMPARE(PointerShape(form), Qt::SizeAllCursor);
    QCOMPARE(BoardPicture(form.game), board);
    QCOMPARE(form.game.steps, 0);
    Release(form, 8, {0, 4});
    QCOMPARE(PointerShape(form), Qt::ArrowCursor);
}

void tst_Play::droppingCountsStepsAndRefreshesTheStatus()
{
    Game game({"2003/2003/4115/46.5/8.79"});
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    // Released on its start: nothing counted, nothing refreshed.
    form.lblSteps->setText("untouched");
    DragBlock(form, 8, {0, 4}, {{1, 4}, {0, 4}});
    QCOMPARE(form.lblSteps->text(), QStringLiteral("untouched"));
    QVERIFY(!form.gameChanged);
    // Released past a block: settles on the last accepted cell, one step.
    DragBlock(form, 8, {0, 4}, {{1, 4}, {3, 4}});
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/46.5/.879"));
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(90, 270));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    QVERIFY(form.gameChanged);
    // The fallback may lie on the other axis: accepted right, released below.
    DragBlock(form, 6, {1, 3}, {{2, 3}, {1, 4}});
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/4.65/.879"));
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 2"));
    // A diagonal release sends the block home, even after an accepted cell.
    DragBlock(form, 6, {2, 3}, {{1, 3}, {1, 2}});
    QCOMPARE(form.imgPieces[6]->pos(), QPoint(150, 210));
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/4115/4.65/.879"));
    // A vertical bar two cells down in one drag: one step.
    DragBlock(form, 4, {0, 3}, {{0, 4}});
    QCOMPARE(BoardPicture(form.game), QByteArray("2003/2003/.115/4.65/4879"));
    QCOMPARE(form.game.steps, 3);
    // A blocked straight drop that falls back onto the start still marks
    // the game changed and refreshes the line, without a step.
    form.gameChanged = false;
    form.lblSteps->setText("untouched");
    DragBlock(form, 9, {3, 4}, {{3, 2}});
    QCOMPARE(form.game.steps, 3);
    QVERIFY(form.gameChanged);
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 3"));
}

void tst_Play::onlyTheLeftButtonDrags()
{
    Game game({"2003/2003/4115/46.5/8.79"});
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    Press(form, 8, {0, 4}, Qt::RightButton);
    QCOMPARE(PointerShape(form), Qt::ArrowCursor);
    MoveTo(form, 8, {1, 4});
    QCOMPARE(form.imgPieces[8]->pos(), QPoint(30, 270));
    // During a left drag a right release changes nothing; the left one drops.
    Press(form, 8, {0, 4});
    MoveTo(form, 8, {1, 4});
    Release(form, 8, {1, 4}, Qt::RightButton);
    QCOMPARE(PointerShape(form), Qt::SizeAllCursor);
    QCOMPARE(form.game.steps, 0);
    Release(form, 8, {1, 4});
    QCOMPARE(form.game.steps, 1);
    // A release with no drag held does nothing.
    Release(form, 9, {3, 4});
    QCOMPARE(form.game.steps, 1);
}

void tst_Play::bringingTheBigBlockToTheExitWins()
{
    Game game({NearlySolved});
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    bool boardHiddenDuringMessage = false;
    game.platform.OnMessage([&](const ScriptedPlatform::Call &) {
        boardHiddenDuringMessage = !form.imgPieces[0]->isVisible() && form.imgCong->isVisible();
    });
    game.platform.Reply(Answer::Ok);
    DragBlock(form, 0, {2, 2}, {{2, 3}}); // grabbed by its right half
    QCOMPARE(game.platform.Shown(), QStringList {Congratulations.arg(1)});
    QCOMPARE(game.platform.Calls().first().icon, Icon::Exclamation);
    QVERIFY(boardHiddenDuringMessage);
    QVERIFY(!form.mnuSaveGame->isEnabled());
    QVERIFY(!form.gameChanged);
    QCOMPARE(form.lblSteps->text(), QStringLiteral("Steps: 1"));
    QCOMPARE(PointerShape(form), Qt::ArrowCursor);
    for (QWidget *image : {form.imgUpFrame, form.imgExit, form.imgTitle})
        QVERIFY(!image->isVisible());
    QVERIFY(game.platform.Done());
}

void tst_Play::onlyTheBigBlocksDropEndsTheGame()
{
    // A level that starts solved: other blocks may move freely; a press and
    // release on the big block ends it with the count as it stands.
    Game game({"2345/2345/6117/8009/.00."});
    frmMain form(game.platform, game.folder.path());
    QVERIFY(StartUp(form, game.platform, game.folder));
    ChooseLevel(form, 0);
    DragBlock(form, 8, {0, 3}, {{0, 4}});
    QCOMPARE(form.game.steps, 1);
    QVERIFY(game.platform.Shown().isEmpty());
    game.platform.Reply(Answer::Ok);
    DragBlock(form, 0, {1, 3}, {});
    QCOMPARE(game.platform.Shown(), QStringList {Congratulations.arg(1)});
}

QTEST_MAIN(tst_Play)
#include "tst_Play.moc"
