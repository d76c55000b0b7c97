#include "frmLevel.h"

#include "DialogPlacement.h"
#include "app/FormGeometry.h"
#include "app/frmMain.h"

#include <QListWidget>
#include <QPushButton>

frmLevel::frmLevel(frmMain &main)
    : QDialog(&main,
        Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint
            | Qt::MSWindowsFixedSizeDialogHint)
    , main_(main)
{
    setWindowTitle(QStringLiteral("Choose Level"));
    setFixedSize(PxSize(4155, 3510));
    lisLevel = new QListWidget(this);
    lisLevel->setGeometry(PxRect(30, 0, 4095, 2700));
    lisLevel->setSelectionMode(QAbstractItemView::SingleSelection);
    lisLevel->setSortingEnabled(false);
    lisLevel->setUniformItemSizes(true);
    QFont font = lisLevel->font();
    font.setPointSizeF(9.75);
    lisLevel->setFont(font);
    cmdSetLevel = new QPushButton(QStringLiteral("&Set Level"), this);
    cmdSetLevel->setGeometry(PxRect(210, 2880, 1695, 495));
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setGeometry(PxRect(2280, 2880, 1695, 495));
    setTabOrder(lisLevel, cmdSetLevel);
    setTabOrder(cmdSetLevel, cmdCancel);
    lisLevel->setFocus();
    connect(cmdSetLevel, &QPushButton::clicked, this, &frmLevel::cmdSetLevel_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmLevel::cmdCancel_Click);
    Form_Load();
}

void frmLevel::Form_Load()
{
    const ScreenMetrics s = main_.Screen();
    CentreOver(*this, main_, s.unitsPerPixelX, s.unitsPerPixelY);
}

void frmLevel::cmdSetLevel_Click()
{
    const int selected = lisLevel->selectedItems().isEmpty() ? -1 : lisLevel->currentRow();
    if (selected == -1)
        return;
    newLevel = int16_t(selected);
    accept();
}

void frmLevel::cmdCancel_Click()
{
    newLevel = -1;
    QDialog::reject();
}

void frmLevel::reject()
{
    cmdCancel_Click();
}
