#include "MainWindow.h"

#include "ScriptedPlatform.h"
#include "WhenModal.h"
#include "app/ImageControl.h"
#include "app/modMain.h"
#include "dialogs/frmLevel.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>

bool StartUp(frmMain &form, ScriptedPlatform &platform)
{
    bool ok = false;
    InitAppFiles(form.Folders(), platform, ok);
    if (!ok)
        return false;
    form.Form_Load();
    return !form.Ended();
}

void ChooseLevel(frmMain &form, int levelIndex)
{
    WhenModal([levelIndex](QWidget *widget) {
        auto *chooser = qobject_cast<frmLevel *>(widget);
        if (!chooser)
            return;
        chooser->lisLevel->setCurrentRow(levelIndex);
        QTest::mouseClick(chooser->cmdSetLevel, Qt::LeftButton);
    });
    form.mnuNewGame_Click();
}

QPoint CellCentreIn(const QWidget &image, Cell cell)
{
    return QPoint(30 + 60 * cell.col + 30, 30 + 60 * cell.row + 30) - image.pos();
}

void Press(frmMain &form, int piece, Cell cell, Qt::MouseButton button)
{
    QWidget *image = form.imgPieces[piece];
    QTest::mousePress(image, button, Qt::NoModifier, CellCentreIn(*image, cell));
}

// Qt keeps sending a held button's events to the pressed image; the test
// does the same, with positions relative to where the image stands now.
void MoveTo(frmMain &form, int piece, Cell cell)
{
    QWidget *image = form.imgPieces[piece];
    const QPoint at = CellCentreIn(*image, cell);
    QMouseEvent move(QEvent::MouseMove, at, image->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
        Qt::NoModifier);
    QApplication::sendEvent(image, &move);
}

void Release(frmMain &form, int piece, Cell cell, Qt::MouseButton button)
{
    QWidget *image = form.imgPieces[piece];
    QTest::mouseRelease(image, button, Qt::NoModifier, CellCentreIn(*image, cell));
}

void DragBlock(frmMain &form, int piece, Cell from, std::initializer_list<Cell> path)
{
    Press(form, piece, from);
    for (const Cell cell : path)
        MoveTo(form, piece, cell);
    Release(form, piece, path.size() ? *(path.end() - 1) : from);
}
